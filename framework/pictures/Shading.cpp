// SPDX-License-Identifier: Apache-2.0
#include "framework/pictures/Shading.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

constexpr float pi = 3.14159265f;

/// Any two unit vectors across `n` and each other.
void Frame(const Vector& n, Vector& a, Vector& b) {
    a = (std::fabs(n.x) > 0.7f ? Vector(0, 1, 0) : Vector(1, 0, 0)) & n;
    a.Normalize();
    b = n & a;
}

Vector Scaled(const Vector& v, const Vector& by) { return {v.x * by.x, v.y * by.y, v.z * by.z}; }

}  // namespace

// The PCG output permutation (O'Neill, "PCG: A family of simple fast space-efficient statistically
// good algorithms for random number generation", 2014).
float HashSampler::Next() {
    state = state * 747796405u + 2891336453u;
    uint32_t word = ((state >> ((state >> 28) + 4u)) ^ state) * 277803737u;
    word = (word >> 22) ^ word;
    return static_cast<float>(word >> 8) * (1.0f / 16777216.0f);
}

Shading::Shading(const EmbreeScene& litScene,
                 const Vector& right,
                 const Vector& up,
                 const Vector& back)
    : scene(litScene), extent(litScene.Extent()) {
    const auto from = [&](float r, float u, float b) {
        return (right * r + up * u + back * b).Normalized();
    };
    lights[0] = {from(-0.75f, 0.75f, 0.5f), {2.3f, 2.05f, 1.8f}, 0.06f};   // key
    lights[1] = {from(0.9f, 0.1f, 0.6f), {0.28f, 0.36f, 0.48f}, 0.0f};     // fill
    lights[2] = {from(0.45f, 0.55f, -0.75f), {1.1f, 1.15f, 1.25f}, 0.0f};  // rim
}

Vector Shading::Backdrop(float height) {
    const Vector low(0.035f, 0.038f, 0.044f);
    const Vector high(0.15f, 0.165f, 0.19f);
    return low + (high - low) * height;
}

float Shading::Visible(const SurfaceSample& sample, const Light& light, HashSampler& random) const {
    if (light.softness == 0.0f) return 1.0f;
    Vector a, b;
    Frame(light.direction, a, b);
    const float angle = 2.0f * pi * random.Next();
    const float reach = light.softness * std::sqrt(random.Next());
    const Vector towards =
        (light.direction + a * (reach * std::cos(angle)) + b * (reach * std::sin(angle)))
            .Normalized();
    // A start well off the face keeps coarse faces from shadowing themselves.
    const Vector start = sample.position + sample.faceNormal * (extent * 4e-4f);
    return scene.IsBlocked(start, towards, extent * 4.0f) ? 0.0f : 1.0f;
}

float Shading::Openness(const SurfaceSample& sample, HashSampler& random) const {
    Vector a, b;
    Frame(sample.shadingNormal, a, b);
    const float angle = 2.0f * pi * random.Next();
    const float square = random.Next();
    const float reach = std::sqrt(square);
    Vector towards = a * (reach * std::cos(angle)) + b * (reach * std::sin(angle)) +
                     sample.shadingNormal * std::sqrt(1.0f - square);
    // Smooth normals can point below the face; such a direction slides along it instead.
    const float below = towards | sample.faceNormal;
    if (below < 0.02f) towards += sample.faceNormal * (0.02f - below);
    const Vector start = sample.position + sample.faceNormal * (extent * 4e-4f);
    return scene.IsBlocked(start, towards, extent * 0.25f) ? 0.0f : 1.0f;
}

Vector Shading::Shade(const SurfaceSample& sample, const Vector& toEye, HashSampler& random) const {
    const Vector& n = sample.shadingNormal;
    const Vector clay(sample.color[0], sample.color[1], sample.color[2]);
    const float sky = 0.5f + 0.5f * n.y;
    const Vector ambient =
        (Vector(0.22f, 0.19f, 0.17f) * (1.0f - sky) + Vector(0.42f, 0.46f, 0.52f) * sky) *
        Openness(sample, random);
    Vector light = Scaled(clay, ambient);
    for (const Light& lamp : lights) {
        const float facing = n | lamp.direction;
        if (facing <= 0.0f) continue;
        const float visible = Visible(sample, lamp, random);
        if (visible == 0.0f) continue;
        // Blinn and Phong's highlight, kept low: clay is matt.
        const Vector half = (lamp.direction + toEye).Normalized();
        const float gloss = std::pow(std::max(0.0f, n | half), 28.0f) * 0.10f;
        light += Scaled(Scaled(clay, lamp.color) * (1.0f / pi * 1.6f) + lamp.color * gloss,
                        Vector(1, 1, 1) * (facing * visible));
    }
    return light;
}

}  // namespace trovik
