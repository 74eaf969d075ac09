// SPDX-License-Identifier: Apache-2.0
#include "framework/render/Shading.h"

#include "framework/render/SoftLight.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

constexpr float pi = 3.14159265f;

/// Streams of random numbers for the sample points of a pixel. Stream 0 determines the position
/// within the pixel.
constexpr uint32_t ambientStream = 1;
constexpr uint32_t keyStream = 2;
constexpr uint32_t reachStream = 3;

/// Sine of the angular radius of the key light. The light is wide, so that neither its shadows nor
/// its terminator on a round shape form a visible line.
constexpr float keySoftness = 0.32f;
const Vector keyColor(1.42f, 1.30f, 1.16f);
/// Maximum length of ambient rays, as a fraction of the extent of the scene.
constexpr float ambientReach = 0.30f;

/// Computes two arbitrary unit vectors that are perpendicular to `n` and to each other.
void Frame(const Vector& n, Vector& a, Vector& b) {
    a = (std::fabs(n.x) > 0.7f ? Vector(0, 1, 0) : Vector(1, 0, 0)) & n;
    a.Normalize();
    b = n & a;
}

Vector Scaled(const Vector& v, const Vector& by) { return {v.x * by.x, v.y * by.y, v.z * by.z}; }

/// Returns the openness including light that bounces between nearby surfaces of the same colour.
/// The fit is from Jimenez, Wu, Pesce, Jarabo: "Practical Realtime Strategies for Accurate Indirect
/// Occlusion" (2016).
float WithBounces(float openness, float albedo) {
    const float a = 2.0404f * albedo - 0.3324f;
    const float b = -4.7951f * albedo + 0.6417f;
    const float c = 2.7552f * albedo + 0.6903f;
    return std::max(openness, ((openness * a + b) * openness + c) * openness);
}

}  // namespace

Shading::Shading(const EmbreeScene& litScene, const RenderViewport& view)
    : scene(litScene),
      extent(litScene.Extent()),
      right(view.Right()),
      up(view.Up()),
      back(view.Back()),
      keyDirection((right * -0.55f + up * 0.72f + back * 0.62f).Normalized()) {
    Frame(keyDirection, keyAcross[0], keyAcross[1]);
}

Vector Shading::Backdrop(float height) {
    const Vector low(0.027f, 0.029f, 0.034f);
    const Vector high(0.116f, 0.127f, 0.146f);
    return low + (high - low) * height;
}

float Shading::Headlight(const SurfaceSample& sample, const Vector& toEye) {
    return 0.35f + 0.65f * std::max(0.0f, sample.shadingNormal | toEye);
}

// A sum of wide light sources with soft edges, so the result is a smooth function of the normal.
Vector Shading::Surroundings(const Vector& normal) const {
    const float height = 0.5f + 0.5f * (normal | up);
    const Vector ground(0.135f, 0.113f, 0.100f);
    const Vector sky(0.31f, 0.335f, 0.38f);
    const float front = SoftFacing(normal | back, 1.0f);
    const float side = SoftFacing(normal | (right * 0.85f + back * 0.40f + up * 0.10f), 0.95f);
    return ground + (sky - ground) * height + Vector(0.12f, 0.115f, 0.11f) * front +
           Vector(0.11f, 0.13f, 0.16f) * side;
}

/// Offsets the origin from the face, so that rounding errors do not make the ray hit that face.
Vector Shading::Start(const SurfaceSample& sample, bool flat) const {
    const Vector& p = flat ? sample.position : sample.rayStart;
    const float size = std::max({std::fabs(p.x), std::fabs(p.y), std::fabs(p.z), sample.distance});
    return p + sample.faceNormal * (extent * 2e-5f + size * 2e-6f);
}

float Shading::Openness(const Vector& start,
                        const Vector& normal,
                        const Vector& faceNormal,
                        const SamplePoint& direction,
                        float reach) const {
    Vector a, b;
    Frame(normal, a, b);
    const float angle = 2.0f * pi * direction.x;
    const float radius = std::sqrt(direction.y);
    Vector towards = a * (radius * std::cos(angle)) + b * (radius * std::sin(angle)) +
                     normal * std::sqrt(1.0f - direction.y);
    // A direction relative to a smooth normal can point below the face; it is then projected onto
    // the plane of the face.
    const float below = towards | faceNormal;
    if (below < 0.02f) towards += faceNormal * (0.02f - below);
    return scene.IsBlocked(start, towards, reach) ? 0.0f : 1.0f;
}

LitSample Shading::Light(const SurfaceSample& sample,
                         bool flat,
                         const Vector& toEye,
                         const PixelSamples& points,
                         int index) const {
    const RenderMesh& mesh = scene.Mesh(sample.mesh);
    const Vector& n = flat ? sample.faceNormal : sample.shadingNormal;
    const Vector start = Start(sample, flat);
    LitSample lit;
    lit.albedo = FrozenTint(mesh, sample, {mesh.color[0], mesh.color[1], mesh.color[2]});

    // A soft rim along the silhouette stands in for a back light.
    const float away = 1.0f - std::max(0.0f, n | toEye);
    const float rim = away * away * away * (0.5f + 0.5f * (n | up));
    lit.ambient = Scaled(lit.albedo, Surroundings(n)) + Vector(0.08f, 0.09f, 0.10f) * rim;
    // Ray lengths are distributed between 0 and the maximum, so that near surfaces count more than
    // distant ones, as in Zhukov, Iones, Kronin: "An Ambient Light Illumination Model" (1998).
    const float reach = extent * ambientReach * points.At(reachStream, index).x;
    lit.openness = Openness(start, n, sample.faceNormal, points.At(ambientStream, index), reach);

    const float facing = SoftFacing(n | keyDirection, keySoftness);
    // The highlight follows Blinn: "Models of Light Reflection for Computer Synthesized Pictures"
    // (1977); it is weak and broad because clay is matte.
    const Vector half = (keyDirection + toEye).Normalized();
    const float square = std::max(0.0f, n | half) * std::max(0.0f, n | half);
    const float eighth = (square * square) * (square * square);
    const float gloss = eighth * eighth * square * 0.07f;
    lit.key = Scaled(lit.albedo + Vector(1, 1, 1) * gloss, keyColor) * facing;
    const SamplePoint disc = points.At(keyStream, index);
    const float angle = 2.0f * pi * disc.x;
    const float radius = keySoftness * std::sqrt(disc.y);
    const Vector towards = (keyDirection + keyAcross[0] * (radius * std::cos(angle)) +
                            keyAcross[1] * (radius * std::sin(angle)))
                               .Normalized();
    lit.keyWeight = std::max(0.0f, n | towards);
    if (lit.keyWeight > 0.0f)
        lit.keyVisible = scene.IsBlocked(start, towards, extent * 4.0f) ? 0.0f : 1.0f;
    return lit;
}

Vector Shading::Combine(const Vector& albedo,
                        const Vector& ambient,
                        const Vector& key,
                        float openness,
                        float keyVisible) {
    const Vector bounced(WithBounces(openness, albedo.x),
                         WithBounces(openness, albedo.y),
                         WithBounces(openness, albedo.z));
    return Scaled(ambient, bounced) + key * keyVisible;
}

}  // namespace trovik
