// SPDX-License-Identifier: Apache-2.0
#include "framework/filters/SurfaceFilter.h"

#include "framework/baking/SurfaceFrames.h"
#include "framework/filters/NeighbourMeans.h"
#include "framework/jobs/JobPhase.h"
#include "framework/mesh/LevelPositions.h"
#include "framework/mesh/SurfaceNormal.h"

namespace trovik {

namespace {

std::vector<Vector> Inflated(LevelGeometry& geometry, float amount, JobControl* job) {
    const LevelMesh& level = *geometry.Bound();
    const MatrixTransform& transform = geometry.Transform();
    const std::vector<float> weights = MoveWeights(level);
    std::vector<Vector> positions = PositionsOf(level);
    const std::vector<Vector> normals = VertexNormals(level, positions, job);
    JobPhase phase(job, "Inflating", positions.size());
    for (std::size_t v = 0; v < positions.size(); ++v) {
        phase.Add();
        if (weights[v] == 0.0f) continue;
        const Vector move = WorldNormal(transform, normals[v]) * (amount * weights[v]);
        positions[v] += transform.ToLocal().AffineTransform(move, 0.0f);
    }
    phase.Finish();
    return positions;
}

/// \param move  computes the displacement of a vertex from its index and the vector from the vertex
/// to the mean.
template <typename Move>
void Iterate(LevelMesh& level,
             uint32_t iterations,
             std::vector<Vector>& positions,
             JobControl* job,
             Move move) {
    NeighbourMeans neighbours(level);
    std::vector<Vector> means;
    JobPhase phase(job, "Filtering", uint64_t{iterations} * positions.size());
    for (uint32_t i = 0; i < iterations; ++i) {
        neighbours.Compute(positions, means);
        for (std::size_t v = 0; v < positions.size(); ++v) {
            phase.Add();
            positions[v] += move(v, means[v] - positions[v]);
        }
    }
    phase.Finish();
}

std::vector<Vector> Smoothed(LevelMesh& level, const SurfaceFilter& filter, JobControl* job) {
    const std::vector<float> weights = MoveWeights(level);
    std::vector<Vector> positions = PositionsOf(level);
    Iterate(level, filter.iterations, positions, job, [&](std::size_t v, const Vector& way) {
        return way * (filter.strength * weights[v]);
    });
    return positions;
}

std::vector<Vector> Relaxed(LevelMesh& level, const SurfaceFilter& filter, JobControl* job) {
    const std::vector<float> weights = MoveWeights(level);
    std::vector<Vector> positions = PositionsOf(level);
    for (uint32_t i = 0; i < filter.iterations; ++i) {
        // The tangent planes rotate as vertices move along a curved surface.
        const std::vector<Vector> normals = VertexNormals(level, positions, job);
        Iterate(level, 1, positions, job, [&](std::size_t v, const Vector& way) {
            const Vector along = way - normals[v] * (way | normals[v]);
            return along * (filter.strength * weights[v]);
        });
    }
    return positions;
}

std::vector<Vector> Sharpened(LevelMesh& level, const SurfaceFilter& filter, JobControl* job) {
    const std::vector<float> weights = MoveWeights(level);
    const std::vector<Vector> before = PositionsOf(level);
    std::vector<Vector> positions = before;
    Iterate(level, filter.iterations, positions, job, [](std::size_t, const Vector& way) {
        return way * 0.5f;
    });
    for (std::size_t v = 0; v < positions.size(); ++v)
        positions[v] = before[v] + (before[v] - positions[v]) * (filter.strength * weights[v]);
    return positions;
}

const char* LabelOf(SurfaceFilter::Kind kind) {
    switch (kind) {
        case SurfaceFilter::Kind::Inflate:
            return "Inflate";
        case SurfaceFilter::Kind::Smooth:
            return "Smooth Surface";
        case SurfaceFilter::Kind::Relax:
            return "Relax";
        default:
            return "Sharpen";
    }
}

}  // namespace

PositionEdit FilterSurface(const SurfaceFilter& filter) {
    return {LabelOf(filter.kind), [filter](LevelGeometry& geometry, JobControl* job) {
                LevelMesh& level = *geometry.Bound();
                switch (filter.kind) {
                    case SurfaceFilter::Kind::Inflate:
                        return Inflated(geometry, filter.amount, job);
                    case SurfaceFilter::Kind::Smooth:
                        return Smoothed(level, filter, job);
                    case SurfaceFilter::Kind::Relax:
                        return Relaxed(level, filter, job);
                    default:
                        return Sharpened(level, filter, job);
                }
            }};
}

}  // namespace trovik
