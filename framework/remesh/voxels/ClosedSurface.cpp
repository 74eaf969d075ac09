// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/voxels/ClosedSurface.h"

#include "framework/errors/HostError.h"
#include "framework/jobs/JobPhase.h"
#include "framework/math/IsFinite.h"
#include "framework/picking/TriangleQueries.h"
#include "framework/remesh/FaceTable.h"
#include "framework/remesh/HoleFilling.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace trovik {

ClosedSurface::ClosedSurface(SourceSurface& source, JobControl* job) {
    NewSurface surface;
    surface.mesh = source.Geometry().ToPolygons(false);
    surface.mesh.normals.clear();
    for (std::size_t v = 0; v < surface.mesh.positions.size(); ++v) {
        const auto& p = surface.mesh.positions[v];
        if (!IsFinite(Vector(p[0], p[1], p[2])))
            throw HostError("the position of vertex " + std::to_string(v) + " is not finite");
    }
    filledHoles = FillHoles(surface, HoleFill::Flat, std::numeric_limits<std::size_t>::max(), job);
    const auto [components, componentCount] = ComponentsOf(surface.mesh);
    positions = std::move(surface.mesh.positions);
    const auto at = [&](uint32_t vertex) {
        const auto& p = positions[vertex];
        return ToDouble({p[0], p[1], p[2]});
    };
    std::vector<double> volumes(componentCount);
    const std::vector<uint32_t>& sizes = surface.mesh.faceSizes;
    const uint32_t* v = surface.mesh.faceVertices.data();
    JobPhase phase(job, "Measuring the surface", sizes.size());
    for (std::size_t face = 0; face < sizes.size(); ++face) {
        phase.Add();
        const uint32_t size = sizes[face];
        for (uint32_t second = 1; second + 1 < size; ++second) {
            triangles.insert(triangles.end(), {v[0], v[second], v[second + 1]});
            const Vector3d a = at(v[0]);
            const Vector3d cross = Cross(at(v[second]) - a, at(v[second + 1]) - a);
            area += std::sqrt(Dot(cross, cross)) * 0.5;
            volumes[components[face]] += Dot(a, cross) / 6.0;
            for (const double c : cross) projectedArea += std::fabs(c) * 0.5;
        }
        v += size;
    }
    phase.Finish();
    for (const double one : volumes) volume += std::fabs(one);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        double low = std::numeric_limits<double>::max();
        double high = -low;
        for (const uint32_t vertex : triangles) {
            low = std::min(low, static_cast<double>(positions[vertex][axis]));
            high = std::max(high, static_cast<double>(positions[vertex][axis]));
        }
        largestCoordinate = std::max({largestCoordinate, std::fabs(low), std::fabs(high)});
        diagonal = std::hypot(diagonal, high - low);
    }
}

std::unique_ptr<LevelGeometry> ClosedSurface::MakeGeometry(JobControl* job) const {
    PolygonMesh mesh;
    mesh.positions = positions;
    mesh.faceVertices = triangles;
    mesh.faceSizes.assign(triangles.size() / 3, 3);
    MakeOrientedManifold(mesh, job);
    return std::make_unique<LevelGeometry>(mesh, job);
}

}  // namespace trovik
