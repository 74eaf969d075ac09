// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/MeshProjection.h"

#include "framework/edits/ColorStep.h"
#include "framework/edits/SurfaceMoves.h"
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/filters/PositionEdit.h"
#include "framework/math/IsFinite.h"
#include "framework/mesh/LevelPositions.h"
#include "framework/mesh/SurfaceNormal.h"
#include "framework/remesh/FaceTable.h"
#include "framework/remesh/LevelProjection.h"
#include "framework/remesh/SourceSurface.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace trovik {

namespace {

constexpr const char* label = "Project";
/// Fraction of the distance within which vertices move completely.
constexpr float fullFraction = 0.5f;
/// Cosine of the angle between the normals from which on the point has its full effect.
constexpr float fullFacing = 0.25f;

using Color = std::array<float, 4>;

/// The mesh of a file as triangles, in the mesh-local space of a geometry.
PolygonMesh TrianglesOfFile(const LevelGeometry& geometry,
                            const MeshProjection& settings,
                            JobControl* job) {
    PolygonMesh read = ReadMeshFile(settings.path, job);
    PolygonMesh mesh;
    const uint32_t* v = read.faceVertices.data();
    for (const uint32_t size : read.faceSizes) {
        for (uint32_t second = 1; second + 1 < size; ++second)
            mesh.faceVertices.insert(mesh.faceVertices.end(), {v[0], v[second], v[second + 1]});
        v += size;
    }
    mesh.faceSizes.assign(mesh.faceVertices.size() / 3, 3);
    const SpaceConversion conversion(read.attributes.space, geometry.Attributes().space);
    mesh.positions = std::move(read.positions);
    for (auto& position : mesh.positions) {
        position = conversion.Point(position);
        Vector p(position[0], position[1], position[2]);
        if (settings.isWorld) {
            const Vector world = p;
            geometry.Transform().WorldToLocal(&p, &world, 1.0f);
        }
        if (!IsFinite(p))
            throw HostError(settings.path +
                            ": a vertex has no finite position in the space of the mesh");
        position = {p.x, p.y, p.z};
    }
    mesh.attributes.colors = std::move(read.attributes.colors);
    mesh.attributes.hasAlpha = read.attributes.hasAlpha;
    if (settings.takesColors && mesh.attributes.colors.empty())
        throw HostError(settings.path + ": the mesh has no vertex colours");
    mesh.name = settings.path;
    MakeOrientedManifold(mesh, job);
    return mesh;
}

std::vector<bool> BorderVerticesOf(const PolygonMesh& mesh) {
    std::vector<bool> isBorder(mesh.positions.size());
    ForEachEdge(SortedSides(mesh), [&](const FaceSide* side, const FaceSide* end) {
        if (end - side == 1) isBorder[side->low] = isBorder[side->high] = true;
    });
    return isBorder;
}

/// A fraction of 1 for arguments up to 0, and of 0 from 1 on.
float SmoothFall(float t) {
    t = std::clamp(t, 0.0f, 1.0f);
    return 1.0f - t * t * (3.0f - 2.0f * t);
}

/// The surface of a file, onto which the vertices of a level are projected.
class FileSurface {
public:
    FileSurface(LevelGeometry& geometry, const MeshProjection& ofSettings, JobControl* job)
        : settings(ofSettings),
          mesh(TrianglesOfFile(geometry, settings, job)),
          isBorder(BorderVerticesOf(mesh)),
          ownGeometry(mesh, job),
          surface(ownGeometry),
          reach(SourceSurface(geometry).LocalLength(settings.distance)) {}

    /// Where a vertex moves to, without the mask.
    struct Target {
        NearestPoint point;
        Vector position;
        /// Fraction of the displacement and of the change of the colour.
        float weight = 0.0f;
    };

    std::vector<Target> TargetsOf(const LevelMesh& level, JobControl* job) {
        const std::vector<Vector> positions = PositionsOf(level);
        std::vector<Vector> normals(positions.size());
        for (uint32_t v = 0; v < level.VertexCount(); ++v)
            normals[v] = Unpacked(level.vertexNormals.array[v]).Normalized();
        std::vector<Target> targets(positions.size());
        const std::vector<NearestPoint> nearest = surface.Nearest(positions, job);
        for (std::size_t v = 0; v < targets.size(); ++v)
            targets[v] = TargetOf(positions[v], normals[v], nearest[v]);
        if (settings.direction == MeshProjection::Direction::Nearest) return targets;
        const std::vector<NearestPoint> along =
            NearestAlong(surface, positions, normals, reach, job);
        for (std::size_t v = 0; v < targets.size(); ++v)
            if (std::isfinite(along[v].distance) && along[v].distance <= reach)
                targets[v] = TargetOf(positions[v], normals[v], along[v]);
        return targets;
    }

    Color ColorAt(const NearestPoint& point) const {
        Color color{};
        for (std::size_t i = 0; i < 3; ++i)
            for (std::size_t channel = 0; channel < 4; ++channel)
                color[channel] +=
                    point.weights[i] * mesh.attributes.colors[point.vertices[i]][channel];
        return color;
    }
    bool HasAlpha() const { return mesh.attributes.hasAlpha; }

private:
    Target TargetOf(const Vector& position, const Vector& normal, const NearestPoint& point) const {
        Target target{point, point.position};
        if (!(point.distance < reach)) return target;
        const float facing = normal | point.normal;
        target.weight =
            SmoothFall((point.distance / reach - fullFraction) / (1.0f - fullFraction)) *
            std::clamp(facing / fullFacing, 0.0f, 1.0f);
        if (IsOnBorder(point))
            target.position = position + normal * (normal | (point.position - position));
        return target;
    }

    bool IsOnBorder(const NearestPoint& point) const {
        std::size_t corners = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            if (point.weights[i] == 0.0f) continue;
            if (!isBorder[point.vertices[i]]) return false;
            ++corners;
        }
        return corners < 3;
    }

    const MeshProjection& settings;
    PolygonMesh mesh;
    std::vector<bool> isBorder;
    LevelGeometry ownGeometry;
    SourceSurface surface;
    /// Mesh-local.
    float reach;
};

/// Returns the new colours of level 0, and the number of those that differ.
std::pair<std::vector<Color>, uint32_t> NewColors(const LevelGeometry& geometry,
                                                  const FileSurface& surface,
                                                  const std::vector<FileSurface::Target>& targets,
                                                  const std::vector<float>& weights) {
    std::vector<Color> colors = geometry.Attributes().colors;
    uint32_t changed = 0;
    colors.resize(geometry.Level(0)->VertexCount(), {1.0f, 1.0f, 1.0f, 1.0f});
    // The vertices of level 0 have the same numbers on all levels.
    for (std::size_t v = 0; v < colors.size(); ++v) {
        const float weight = targets[v].weight * weights[v];
        if (weight == 0.0f) continue;
        const Color before = colors[v];
        const Color to = surface.ColorAt(targets[v].point);
        for (std::size_t channel = 0; channel < 4; ++channel)
            colors[v][channel] = weight == 1.0f
                                     ? to[channel]
                                     : before[channel] + (to[channel] - before[channel]) * weight;
        if (colors[v] != before) ++changed;
    }
    return {std::move(colors), changed};
}

}  // namespace

ProjectionResult ProjectOntoFile(LevelGeometry& geometry,
                                 const MeshProjection& settings,
                                 JobControl* job) {
    const LevelMesh& level = *geometry.Bound();
    RequireWritableLayer(*geometry.Bound());
    FileSurface surface(geometry, settings, job);
    const std::vector<FileSurface::Target> targets = surface.TargetsOf(level, job);
    const std::vector<float> weights = MoveWeights(level);
    const bool isReached = std::any_of(
        targets.begin(), targets.end(), [](const auto& target) { return target.weight > 0.0f; });
    ProjectionResult result;
    if (!isReached) return result;
    std::vector<Vector> positions = PositionsOf(level);
    for (std::size_t v = 0; v < positions.size(); ++v) {
        const float weight = targets[v].weight * weights[v];
        const Vector& to = targets[v].position;
        if (weight > 0.0f)
            positions[v] = weight == 1.0f ? to : positions[v] + (to - positions[v]) * weight;
    }
    // Made before any vertex moves, so that either everything changes or nothing.
    std::unique_ptr<UndoStep> colorStep;
    if (settings.takesColors) {
        auto [colors, changed] = NewColors(geometry, surface, targets, weights);
        result.colored = changed;
        colorStep = MakeColorStep(
            std::move(colors), geometry.Attributes().hasAlpha || surface.HasAlpha(), label);
    }
    const PositionEdit edit{label,
                            [&](LevelGeometry&, JobControl*) { return std::move(positions); }};
    result.moved = EditPositions(geometry, edit, job);
    if (result.colored > 0) {
        colorStep->Apply(geometry);
        colorStep->joinPrevious = result.moved > 0;
        geometry.History().Push(std::move(colorStep));
    }
    return result;
}

}  // namespace trovik
