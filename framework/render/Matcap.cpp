// SPDX-License-Identifier: Apache-2.0
#include "framework/render/Matcap.h"

#include "framework/errors/HostError.h"
#include "framework/render/SoftLight.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

/// A highlight: brightness `color` where the normal is parallel to `direction`, falling off with
/// `sharpness`.
struct Lobe {
    Vector direction;
    Vector color;
    float sharpness;
};

struct Recipe {
    const char* name;
    /// Surface colours: where the surface faces away from all lights, and where it faces them.
    Vector shade;
    Vector body;
    /// Direction from the surface to the main light, and how far the light wraps around the shape
    /// (0 .. 1).
    Vector light;
    float softness;
    /// Colour added towards the rim of the sphere.
    Vector rim;
    float rimSharpness;
    Lobe lobes[2];
};

// clang-format off
const Recipe recipes[] = {
    {"wax",
     {0.085f, 0.022f, 0.016f}, {0.62f, 0.27f, 0.19f},
     {-0.45f, 0.65f, 0.61f}, 0.85f, {0.16f, 0.07f, 0.05f}, 3.0f,
     {{{-0.36f, 0.48f, 0.80f}, {0.30f, 0.26f, 0.23f}, 42.0f},
      {{0.55f, -0.35f, 0.76f}, {0.05f, 0.03f, 0.03f}, 6.0f}}},
    {"grey",
     {0.045f, 0.047f, 0.052f}, {0.50f, 0.49f, 0.47f},
     {-0.40f, 0.60f, 0.69f}, 0.70f, {0.10f, 0.11f, 0.13f}, 3.5f,
     {{{-0.30f, 0.45f, 0.84f}, {0.16f, 0.16f, 0.16f}, 24.0f},
      {{0.70f, 0.05f, 0.71f}, {0.04f, 0.05f, 0.06f}, 8.0f}}},
    {"terracotta",
     {0.070f, 0.026f, 0.018f}, {0.56f, 0.235f, 0.130f},
     {-0.50f, 0.60f, 0.62f}, 0.55f, {0.12f, 0.075f, 0.06f}, 4.0f,
     {{{-0.40f, 0.50f, 0.77f}, {0.06f, 0.05f, 0.045f}, 9.0f},
      {{0.75f, 0.15f, 0.64f}, {0.03f, 0.035f, 0.045f}, 6.0f}}},
    {"porcelain",
     {0.19f, 0.20f, 0.23f}, {0.82f, 0.81f, 0.79f},
     {-0.35f, 0.70f, 0.62f}, 0.90f, {0.10f, 0.12f, 0.15f}, 3.0f,
     {{{-0.34f, 0.52f, 0.78f}, {0.70f, 0.70f, 0.70f}, 180.0f},
      {{0.52f, 0.30f, 0.80f}, {0.16f, 0.17f, 0.18f}, 90.0f}}},
    {"bronze",
     {0.020f, 0.011f, 0.006f}, {0.27f, 0.145f, 0.060f},
     {-0.45f, 0.62f, 0.64f}, 0.35f, {0.26f, 0.19f, 0.12f}, 5.0f,
     {{{-0.36f, 0.50f, 0.79f}, {1.05f, 0.78f, 0.46f}, 34.0f},
      {{0.62f, -0.28f, 0.73f}, {0.22f, 0.14f, 0.08f}, 14.0f}}},
    {"clay",
     {0.040f, 0.033f, 0.031f}, {0.490f, 0.400f, 0.330f},
     {-0.48f, 0.70f, 0.53f}, 0.45f, {0.060f, 0.062f, 0.068f}, 4.0f,
     {{{-0.38f, 0.56f, 0.74f}, {0.150f, 0.138f, 0.125f}, 16.0f},
      {{0.70f, -0.18f, 0.69f}, {0.055f, 0.056f, 0.063f}, 6.0f}}},
};
// clang-format on

Vector Paint(const Recipe& recipe, const Vector& normal) {
    const float lit = SoftFacing(normal | recipe.light.Normalized(), recipe.softness);
    Vector color = recipe.shade + (recipe.body - recipe.shade) * lit;
    color += recipe.rim * std::pow(1.0f - normal.z, recipe.rimSharpness);
    for (const Lobe& lobe : recipe.lobes)
        color += lobe.color *
                 std::pow(std::max(0.0f, normal | lobe.direction.Normalized()), lobe.sharpness);
    return color;
}

const Recipe& RecipeOf(const std::string& name) {
    for (const Recipe& recipe : recipes)
        if (name == recipe.name) return recipe;
    throw HostError("unknown matcap \"" + name + "\"");
}

}  // namespace

const std::vector<std::string>& Matcap::Names() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> all;
        for (const Recipe& recipe : recipes) all.emplace_back(recipe.name);
        return all;
    }();
    return names;
}

Matcap::Matcap(const std::string& name) {
    const Recipe& recipe = RecipeOf(name);
    image.reserve(std::size_t{size} * size);
    for (int row = 0; row < size; ++row) {
        for (int column = 0; column < size; ++column) {
            float x = static_cast<float>(column) * (2.0f / (size - 1)) - 1.0f;
            float y = static_cast<float>(row) * (2.0f / (size - 1)) - 1.0f;
            const float radius = std::sqrt(x * x + y * y);
            // The colour at the rim extends beyond the disc, for bilinear lookups.
            if (radius > 1.0f) x /= radius, y /= radius;
            const float depth = std::sqrt(std::max(0.0f, 1.0f - x * x - y * y));
            image.push_back(Paint(recipe, {x, y, depth}));
        }
    }
}

Vector Matcap::At(float x, float y) const {
    const auto cell = [](float value) {
        return std::clamp((value + 1.0f) * 0.5f * (size - 1), 0.0f, size - 1.001f);
    };
    const float column = cell(x);
    const float row = cell(y);
    const auto left = static_cast<std::size_t>(column);
    const auto below = static_cast<std::size_t>(row);
    const float right = column - static_cast<float>(left);
    const float above = row - static_cast<float>(below);
    const Vector* at = image.data() + below * size + left;
    return (at[0] * (1.0f - right) + at[1] * right) * (1.0f - above) +
           (at[size] * (1.0f - right) + at[size + 1] * right) * above;
}

}  // namespace trovik
