// SPDX-License-Identifier: Apache-2.0
#include "framework/render/WireLines.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace trovik {

namespace {

/// Line width on either side of an edge, in pixels.
constexpr float halfWidth = 0.75f;
constexpr float darkness = 0.78f;
/// If the longest edge of a face is shorter than this, in pixels, lines would cover the face. They
/// then fade to `minStrength`, so that the shape of a dense mesh remains visible.
constexpr float sparseEdge = 5.0f;
constexpr float minStrength = 0.4f;

float DistanceToSegment(const Vector& p, const Vector& a, const Vector& b) {
    const Vector way = b - a;
    const float square = way | way;
    const float along = square > 0.0f ? std::clamp(((p - a) | way) / square, 0.0f, 1.0f) : 0.0f;
    return (p - (a + way * along)).Length();
}

}  // namespace

WireLines::WireLines(const EmbreeScene& seenScene, const RenderViewport& fromView)
    : scene(seenScene), view(fromView) {}

void WireLines::Project(const SurfaceSample& sample) {
    const RenderMesh& shown = scene.Mesh(sample.mesh);
    const uint32_t corners = shown.cornersPerFace;
    const uint32_t* vertices = shown.faceVertexIndices + std::size_t{sample.face} * corners;
    // In perspective projection, edges that pass behind the eye are clipped just in front of it.
    const float nearest =
        view.IsOrthographic() ? -std::numeric_limits<float>::infinity() : sample.distance * 1e-3f;
    Vector inCamera[4];
    for (uint32_t k = 0; k < corners; ++k)
        inCamera[k] = view.ToCamera(scene.WorldPosition(sample.mesh, vertices[k]));
    float longest = 0.0f;
    edgeCount = 0;
    for (uint32_t k = 0; k < corners; ++k) {
        Vector a = inCamera[k];
        Vector b = inCamera[(k + 1) % corners];
        if (a.z > b.z) std::swap(a, b);
        if (!(b.z > nearest)) continue;
        if (a.z < nearest) a = b + (a - b) * ((b.z - nearest) / (b.z - a.z));
        const Segment edge{view.ToPixel(a), view.ToPixel(b)};
        longest = std::max(longest, (edge.to - edge.from).Length());
        edges[edgeCount++] = edge;
    }
    strength = darkness * std::clamp(longest / sparseEdge, minStrength, 1.0f);
    mesh = sample.mesh;
    face = sample.face;
    hasFace = true;
}

float WireLines::Remaining(const SurfaceSample& sample, float pixelX, float pixelY) {
    if (!hasFace || sample.mesh != mesh || sample.face != face) Project(sample);
    float distance = std::numeric_limits<float>::infinity();
    for (uint32_t k = 0; k < edgeCount; ++k)
        distance = std::min(distance,
                            DistanceToSegment({pixelX, pixelY, 0.0f}, edges[k].from, edges[k].to));
    return 1.0f - strength * std::clamp(halfWidth + 0.5f - distance, 0.0f, 1.0f);
}

}  // namespace trovik
