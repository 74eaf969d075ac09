// SPDX-License-Identifier: Apache-2.0
#include "framework/baking/SurfaceFrames.h"

#include "framework/jobs/JobPhase.h"
#include "framework/mesh/LevelPositions.h"
#include "framework/mesh/LevelRefiner.h"

#include <cassert>
#include <cmath>

namespace trovik {

namespace {

/// Returns an arbitrary unit vector perpendicular to a unit vector.
Vector AnyPerpendicular(const Vector& normal) {
    const float x = std::fabs(normal.x);
    const float y = std::fabs(normal.y);
    const float z = std::fabs(normal.z);
    const Vector axis = x <= y && x <= z ? Vector(1.0f, 0.0f, 0.0f)
                        : y <= z         ? Vector(0.0f, 1.0f, 0.0f)
                                         : Vector(0.0f, 0.0f, 1.0f);
    return (axis - normal * (axis | normal)).Normalized();
}

}  // namespace

std::vector<Vector> SmoothPositions(const LevelGeometry& geometry,
                                    std::uint32_t coarse,
                                    std::uint32_t fine,
                                    JobControl* job) {
    assert(coarse <= fine);
    const LevelMesh& lowest = *geometry.Level(coarse);
    std::vector<Vector> positions = PositionsOf(lowest);
    for (std::uint32_t level = coarse; level < fine; ++level) {
        const LevelMesh& above = *geometry.Level(level + 1);
        std::vector<Vector> refined(above.VertexCount());
        LevelRefiner(*geometry.Level(level), job)
            .RefinePositions(
                above,
                [&refined](std::uint32_t v, const Vector& p) { refined[v] = p; },
                positions.data());
        positions = std::move(refined);
    }
    return positions;
}

std::vector<Vector> VertexNormals(const LevelMesh& level,
                                  const std::vector<Vector>& positions,
                                  JobControl* job) {
    JobPhase phase(job, "Computing normals", level.faceCount);
    std::vector<Vector> normals(level.VertexCount());
    const std::uint32_t corners = level.CornersPerFace();
    for (std::uint32_t face = 0; face < level.faceCount; ++face) {
        const std::uint32_t* v = level.faceVertexIndices.array + std::size_t{face} * corners;
        const Vector& p0 = positions[v[0]];
        const Vector normal = corners == 4
                                  ? (positions[v[2]] - p0) & (positions[v[3]] - positions[v[1]])
                                  : (positions[v[1]] - p0) & (positions[v[2]] - p0);
        for (std::uint32_t k = 0; k < corners; ++k) normals[v[k]] += normal;
        phase.Add();
    }
    phase.Finish();
    for (Vector& normal : normals) normal.Normalize();
    return normals;
}

SurfaceFrames::SurfaceFrames(const LevelMesh& level,
                             const LevelUvs& uvs,
                             const std::vector<Vector>& positions,
                             JobControl* job)
    : corners(level.CornersPerFace()),
      normals(VertexNormals(level, positions, job)),
      firstFrames(level.VertexCount(), none),
      cornerFrames(std::size_t{level.faceCount} * corners, none) {
    frames.reserve(level.VertexCount());
    JobPhase phase(job, "Computing frames", level.faceCount);
    for (std::uint32_t face = 0; face < level.faceCount; ++face) {
        phase.Add();
        CornerValues<2> uv = {};
        if (!uvs.Of(face, uv)) continue;
        const std::uint32_t* v = level.faceVertexIndices.array + std::size_t{face} * corners;
        for (std::uint32_t k = 0; k < corners; ++k) {
            const std::uint32_t after = (k + 1) % corners;
            const std::uint32_t before = (k + corners - 1) % corners;
            const float du1 = uv[after][0] - uv[k][0];
            const float dv1 = uv[after][1] - uv[k][1];
            const float du2 = uv[before][0] - uv[k][0];
            const float dv2 = uv[before][1] - uv[k][1];
            const float area = du1 * dv2 - dv1 * du2;
            const float sense = area > 0.0f ? 1.0f : area < 0.0f ? -1.0f : 0.0f;
            const std::uint32_t number = EntryFor(v[k], uv[k], sense);
            cornerFrames[std::size_t{face} * corners + k] = number;
            const Vector& p = positions[v[k]];
            const Vector along =
                ((positions[v[after]] - p) * dv2 - (positions[v[before]] - p) * dv1) * sense;
            const Vector& normal = normals[v[k]];
            frames[number].tangent += (along - normal * (along | normal)).Normalized();
        }
    }
    phase.Finish();
    for (Entry& entry : frames) {
        const Vector& normal = normals[entry.vertex];
        // Removes the remaining component along the normal, which is due to rounding.
        entry.tangent -= normal * (entry.tangent | normal);
        entry.tangent.Normalize();
        if (entry.tangent == Vector()) entry.tangent = AnyPerpendicular(normal);
        if (entry.sense == 0.0f) entry.sense = 1.0f;
    }
}

std::uint32_t SurfaceFrames::EntryFor(std::uint32_t vertex,
                                      const std::array<float, 2>& uv,
                                      float sense) {
    std::uint32_t* link = &firstFrames[vertex];
    while (*link != none) {
        Entry& entry = frames[*link];
        const bool sameSense = entry.sense == sense || entry.sense == 0.0f || sense == 0.0f;
        if (sameSense && entry.uv == uv) {
            if (entry.sense == 0.0f) entry.sense = sense;
            return *link;
        }
        link = &entry.next;
    }
    *link = FrameCount();
    frames.push_back({vertex, none, uv, Vector(), sense});
    return FrameCount() - 1;
}

SurfaceFrame SurfaceFrames::Frame(std::uint32_t number) const {
    const Entry& entry = frames[number];
    const Vector& normal = normals[entry.vertex];
    return {entry.tangent, (normal & entry.tangent) * entry.sense, normal};
}

}  // namespace trovik
