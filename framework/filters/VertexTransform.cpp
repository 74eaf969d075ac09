// SPDX-License-Identifier: Apache-2.0
#include "framework/filters/VertexTransform.h"

#include "framework/errors/HostError.h"
#include "framework/freeze/FreezeFilters.h"
#include "framework/jobs/JobPhase.h"
#include "framework/mesh/FaceSides.h"
#include "framework/mesh/LevelPositions.h"
#include "framework/mesh/UnfrozenFraction.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>

namespace trovik {

namespace {

/// The mask amounts that the transform uses, one per vertex.
std::vector<uint8_t> AmountsOf(const LevelMesh& level, uint32_t blur) {
    std::vector<uint8_t> amounts = BlurredFreeze(level, blur);
    for (uint32_t v = 0; v < level.VertexCount(); ++v)
        if (level.IsVertexHidden(v)) amounts[v] = freezeAmountMask;
    return amounts;
}

Vector CentreOf(const LevelMesh& level, const std::vector<uint8_t>& amounts) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    Vector low(infinity, infinity, infinity);
    Vector high(-infinity, -infinity, -infinity);
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        if (amounts[v] == freezeAmountMask) continue;
        const Vector p = level.Position(v);
        low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
    }
    return low.x > high.x ? Vector() : low * 0.5f + high * 0.5f;
}

Vector MaskBorderOf(const LevelMesh& level, const std::vector<uint8_t>& amounts) {
    double sum[3] = {};
    double total = 0.0;
    ForEachSide(level, [&](uint32_t a, uint32_t b) {
        const double weight = std::abs(int{amounts[a]} - int{amounts[b]});
        if (weight == 0.0 || level.IsVertexHidden(a) || level.IsVertexHidden(b)) return;
        const Vector p = level.Position(a);
        const Vector q = level.Position(b);
        sum[0] += (static_cast<double>(p.x) + static_cast<double>(q.x)) * weight;
        sum[1] += (static_cast<double>(p.y) + static_cast<double>(q.y)) * weight;
        sum[2] += (static_cast<double>(p.z) + static_cast<double>(q.z)) * weight;
        total += weight;
    });
    if (total == 0.0)
        throw HostError("the mask has no border: all vertices are masked by the same amount");
    const double scale = 0.5 / total;
    return {static_cast<float>(sum[0] * scale),
            static_cast<float>(sum[1] * scale),
            static_cast<float>(sum[2] * scale)};
}

/// Returns the pivot in mesh-local space.
Vector LocalPivotOf(LevelGeometry& geometry,
                    const VertexTransform& transform,
                    const std::vector<uint8_t>& amounts) {
    if (const auto* given = std::get_if<Vector>(&transform.pivot)) {
        Vector local;
        geometry.Transform().WorldToLocal(&local, given, 1.0f);
        return local;
    }
    const LevelMesh& level = *geometry.Bound();
    return std::get<PivotKind>(transform.pivot) == PivotKind::Centre ? CentreOf(level, amounts)
                                                                     : MaskBorderOf(level, amounts);
}

/// Returns the rotation by the formula of Rodrigues: "Des lois géométriques qui régissent les
/// déplacements d'un système solide dans l'espace" (1840), for row vectors.
/// \param axis  of unit length.
Matrix RotationAbout(const Vector& axis, double degrees) {
    const double radians = degrees * (std::numbers::pi / 180.0);
    const auto cosine = static_cast<float>(std::cos(radians));
    const auto sine = static_cast<float>(std::sin(radians));
    const Vector unit[3] = {{1.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f}, {0.0f, 0.0f, 1.0f}};
    Matrix matrix;
    for (int row = 0; row < 3; ++row) {
        const Vector image = unit[row] * cosine + (axis & unit[row]) * sine +
                             axis * ((axis | unit[row]) * (1.0f - cosine));
        matrix.m[row][0] = image.x;
        matrix.m[row][1] = image.y;
        matrix.m[row][2] = image.z;
    }
    return matrix;
}

/// The transform of a vertex with a given mask amount: mesh-local offsets from the pivot are
/// multiplied by the linear part of `matrix`, and `move` is added.
struct PartialTransform {
    Matrix matrix;
    Vector move;
};

PartialTransform PartOf(const MatrixTransform& mesh,
                        const VertexTransform& transform,
                        uint32_t amount) {
    const float weight = UnfrozenFraction(amount);
    Matrix world;
    const Vector one(1.0f, 1.0f, 1.0f);
    const Vector scale = one + (transform.scale - one) * weight;
    world.m[0][0] = scale.x;
    world.m[1][1] = scale.y;
    world.m[2][2] = scale.z;
    if (transform.angle != 0.0f) {
        world = world *
                RotationAbout(transform.axis.Normalized(),
                              static_cast<double>(transform.angle) * static_cast<double>(weight));
    }
    PartialTransform part;
    part.matrix = mesh.ToWorld() * world * mesh.ToLocal();
    part.move = mesh.ToLocal().AffineTransform(transform.translation * weight, 0.0f);
    return part;
}

std::vector<Vector> Transformed(LevelGeometry& geometry,
                                const VertexTransform& transform,
                                JobControl* job) {
    const LevelMesh& level = *geometry.Bound();
    const std::vector<uint8_t> amounts = AmountsOf(level, transform.maskBlur);
    const Vector pivot = LocalPivotOf(geometry, transform, amounts);
    std::array<PartialTransform, freezeAmountMask> parts;
    for (uint32_t amount = 0; amount < parts.size(); ++amount)
        parts[amount] = PartOf(geometry.Transform(), transform, amount);
    std::vector<Vector> positions = PositionsOf(level);
    JobPhase phase(job, "Transforming vertices", positions.size());
    for (std::size_t v = 0; v < positions.size(); ++v) {
        phase.Add();
        if (amounts[v] == freezeAmountMask) continue;
        const PartialTransform& part = parts[amounts[v]];
        // Written as a displacement, so that a pure translation does not depend on the pivot.
        const Vector offset = positions[v] - pivot;
        positions[v] += (part.matrix.AffineTransform(offset, 0.0f) - offset) + part.move;
    }
    phase.Finish();
    return positions;
}

}  // namespace

PositionEdit TransformVertices(const VertexTransform& transform) {
    return {"Transform Vertices", [transform](LevelGeometry& geometry, JobControl* job) {
                return Transformed(geometry, transform, job);
            }};
}

Vector PivotOf(LevelGeometry& geometry, const VertexTransform& transform) {
    const Vector local =
        LocalPivotOf(geometry, transform, AmountsOf(*geometry.Bound(), transform.maskBlur));
    Vector world;
    geometry.Transform().LocalToWorld(&world, &local, 1.0f);
    return world;
}

}  // namespace trovik
