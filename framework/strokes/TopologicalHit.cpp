// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/TopologicalHit.h"

#include <algorithm>
#include <array>

namespace trovik {

namespace {

using Triangle = std::array<Vector, 3>;

Vector Reflected(const Vector& p) { return {-p.x, p.y, p.z}; }

Vector Position(const Mesh& mesh, uint32_t vertex) {
    const Vertex& v = mesh.vertices[vertex];
    return {v.x, v.y, v.z};
}

/// Barycentric coordinates (each 0 to 1) of the projection of `p` onto the triangle's plane. If the
/// projection is outside the triangle, negative weights are set to 0 and the others rescaled, which
/// yields a point on the border.
std::array<float, 3> CornerWeightsAt(const Triangle& t, const Vector& p) {
    const Vector a = t[1] - t[0];
    const Vector b = t[2] - t[0];
    const Vector q = p - t[0];
    const float aa = a | a;
    const float ab = a | b;
    const float bb = b | b;
    const float determinant = aa * bb - ab * ab;
    if (!(determinant > 0.0f)) return {1.0f, 0.0f, 0.0f};
    const float u = (bb * (q | a) - ab * (q | b)) / determinant;
    const float v = (aa * (q | b) - ab * (q | a)) / determinant;
    std::array<float, 3> weights{
        std::max((1.0f - u) - v, 0.0f), std::max(u, 0.0f), std::max(v, 0.0f)};
    const float sum = (weights[0] + weights[1]) + weights[2];
    for (float& fraction : weights) fraction /= sum;
    return weights;
}

Vector Blend(const Triangle& t, const std::array<float, 3>& weights) {
    return (t[0] * weights[0] + t[1] * weights[1]) + t[2] * weights[2];
}

/// Three orthogonal directions: along the first side, across it, and outwards from the surface.
struct Frame {
    Vector along;
    Vector across;
    Vector out;
};

/// \param sign  -1 for a mirrored triangle.
Frame FrameOf(const Triangle& t, float sign) {
    Frame frame;
    frame.along = (t[1] - t[0]).Normalized();
    frame.out = ((t[1] - t[0]) & (t[2] - t[0])).Normalized() * sign;
    frame.across = (frame.out & frame.along) * sign;
    return frame;
}

/// The map from one triangle's frame to that of its image, without translation.
Matrix RotationBetween(const Triangle& main, const Triangle& image) {
    Matrix turn;
    const bool isReflection =
        std::equal(main.begin(), main.end(), image.begin(), [](const Vector& a, const Vector& b) {
            return Reflected(a) == b;
        });
    const Frame from = FrameOf(main, 1.0f);
    const Frame to = FrameOf(image, -1.0f);
    // A degenerate triangle has no frame.
    if (isReflection || from.out == Vector() || to.out == Vector()) {
        turn.m[0][0] = -1.0f;
        return turn;
    }
    const auto entry = [](float a, float b, float c, float x, float y, float z) {
        return (a * x + b * y) + c * z;
    };
    const Vector rows[3][2] = {
        {from.along, to.along}, {from.across, to.across}, {from.out, to.out}};
    const auto part = [&rows](int pair, int side, int axis) {
        const Vector& v = rows[pair][side];
        return axis == 0 ? v.x : axis == 1 ? v.y : v.z;
    };
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            turn.m[r][c] = entry(part(0, 0, r),
                                 part(1, 0, r),
                                 part(2, 0, r),
                                 part(0, 1, c),
                                 part(1, 1, c),
                                 part(2, 1, c));
    return turn;
}

}  // namespace

std::optional<TopologicalHit> AcrossTopologicalMirror(const SurfacePoint& hit) {
    Mesh& mesh = *hit.mesh;
    const uint32_t corners = mesh.CornersPerFace();
    std::array<Vector, 4> main;
    std::array<Vector, 4> image;
    uint32_t faceAcross = 0;
    for (uint32_t k = 0; k < corners; ++k) {
        uint32_t corner = 0;
        const int32_t vertex = mesh.MirrorVertex(hit.face, k, &faceAcross, &corner);
        if (vertex < 0) return std::nullopt;
        main[k] = Position(mesh, mesh.faceVertexIndices[hit.face * corners + k]);
        image[k] = Position(mesh, static_cast<uint32_t>(vertex));
    }
    // A quad is split into two triangles; the one nearer to the hit is used.
    Triangle triangle{main[0], main[1], main[2]};
    Triangle triangleAcross{image[0], image[1], image[2]};
    std::array<float, 3> weights = CornerWeightsAt(triangle, hit.position);
    if (corners == 4) {
        const Triangle second{main[0], main[2], main[3]};
        const std::array<float, 3> secondWeights = CornerWeightsAt(second, hit.position);
        if ((Blend(second, secondWeights) - hit.position).Length() <
            (Blend(triangle, weights) - hit.position).Length()) {
            triangle = second;
            triangleAcross = {image[0], image[2], image[3]};
            weights = secondWeights;
        }
    }

    TopologicalHit across;
    across.pointMap = RotationBetween(triangle, triangleAcross);
    const Vector foot = Blend(triangle, weights);
    const Vector footAcross = Blend(triangleAcross, weights);
    const Vector turned = across.pointMap.AffineTransform(foot, 0.0f);
    across.pointMap.m[3][0] = footAcross.x - turned.x;
    across.pointMap.m[3][1] = footAcross.y - turned.y;
    across.pointMap.m[3][2] = footAcross.z - turned.z;
    across.hit = hit;
    across.hit.mirror = true;
    across.hit.face = faceAcross;
    across.hit.position = across.pointMap.AffineTransform(hit.position, 1.0f);
    across.hit.normal = across.pointMap.AffineTransform(hit.normal, 0.0f);
    return across;
}

}  // namespace trovik
