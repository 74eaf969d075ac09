// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/Decimation.h"

#include "framework/errors/HostError.h"
#include "framework/io/WordsHash.h"
#include "framework/jobs/JobPhase.h"
#include "framework/mesh/LevelPositions.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <meshoptimizer.h>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace trovik {

namespace {

constexpr uint32_t none = NewSurface::none;
/// How often a decimation is repeated to stay within an error.
constexpr int maxTries = 10;

using Triangle = std::array<uint32_t, 3>;

/// A vertex of the source with one of its UVs. The corners of a vertex on a texture seam belong to
/// several wedges.
struct Wedge {
    uint32_t vertex;
    uint32_t uv;
};

/// The triangles of a surface, in terms of wedges.
struct WedgeMesh {
    std::vector<Wedge> wedges;
    /// Three numbers per wedge; see SeparatedPositions.
    std::vector<float> positions;
    /// Three wedges per triangle: those that may be removed, and those that are kept.
    std::vector<uint32_t> removable;
    std::vector<uint32_t> kept;
};

std::vector<bool> BorderVerticesOf(LevelMesh& level) {
    const uint32_t corners = level.CornersPerFace();
    std::vector<bool> isBorder(level.VertexCount());
    for (uint32_t face = 0; face < level.faceCount; ++face) {
        const uint32_t* v = level.faceVertexIndices.array + std::size_t{face} * corners;
        for (uint32_t side = 0; side < corners; ++side)
            if (level.QuadEdgeNeighbour(face, side) == openBorder)
                isBorder[v[side]] = isBorder[v[(side + 1) % corners]] = true;
    }
    return isBorder;
}

/// Returns the positions of the vertices. Interior vertices at the same position, as where a part
/// lies on another one, are moved apart by the smallest possible distance: the library keeps
/// vertices at the same position, except those of seams. Vertices of open borders are not moved,
/// because they can belong to a border that was cut open.
std::vector<Vector> SeparatedPositions(LevelMesh& level) {
    std::vector<Vector> positions = PositionsOf(level);
    const std::vector<bool> isBorder = BorderVerticesOf(level);
    // Adding zero changes -0 to +0 and nothing else.
    const auto keyOf = [](const Vector& p) {
        return std::array<uint32_t, 3>{std::bit_cast<uint32_t>(p.x + 0.0f),
                                       std::bit_cast<uint32_t>(p.y + 0.0f),
                                       std::bit_cast<uint32_t>(p.z + 0.0f)};
    };
    std::unordered_set<std::array<uint32_t, 3>, WordsHash> used;
    used.reserve(positions.size());
    for (std::size_t v = 0; v < positions.size(); ++v)
        if (isBorder[v]) used.insert(keyOf(positions[v]));
    // The last coordinate that was used for a position, so that many vertices at one position do
    // not try the same coordinates again.
    std::unordered_map<std::array<uint32_t, 3>, float, WordsHash> last;
    constexpr float largest = std::numeric_limits<float>::max();
    for (std::size_t v = 0; v < positions.size(); ++v) {
        if (isBorder[v]) continue;
        Vector& p = positions[v];
        if (used.insert(keyOf(p)).second) continue;
        float& x = last.try_emplace(keyOf(p), p.x).first->second;
        p.x = x;
        while (p.x < largest) {
            p.x = std::nextafter(p.x, largest);
            if (used.insert(keyOf(p)).second) break;
        }
        x = p.x;
    }
    return positions;
}

WedgeMesh WedgesOf(SourceSurface& source, JobControl* job) {
    const LevelMesh& level = source.Level();
    const std::vector<Vector> positions = SeparatedPositions(source.Level());
    const std::vector<uint32_t>& cornerUvs = source.Attributes(job).cornerUvs;
    const uint32_t corners = level.CornersPerFace();
    WedgeMesh mesh;
    std::unordered_map<std::array<uint32_t, 2>, uint32_t, WordsHash> numbers;
    numbers.reserve(level.VertexCount());
    const auto wedgeOf = [&](uint32_t vertex, uint32_t uv) {
        const auto [entry, isNew] =
            numbers.try_emplace({vertex, uv}, static_cast<uint32_t>(mesh.wedges.size()));
        if (isNew) {
            mesh.wedges.push_back({vertex, uv});
            const Vector& p = positions[vertex];
            mesh.positions.insert(mesh.positions.end(), {p.x, p.y, p.z});
        }
        return entry->second;
    };
    JobPhase phase(job, "Collecting triangles", level.faceCount);
    for (uint32_t face = 0; face < level.faceCount; ++face) {
        phase.Add();
        const std::size_t first = std::size_t{face} * corners;
        const uint32_t* v = level.faceVertexIndices.array + first;
        const bool isKept = std::all_of(v, v + corners, [&](uint32_t vertex) {
            return level.Freeze(vertex) >= keptMaskAmount;
        });
        std::vector<uint32_t>& triangles = isKept ? mesh.kept : mesh.removable;
        const auto wedge = [&](uint32_t corner) {
            return wedgeOf(v[corner], cornerUvs.empty() ? none : cornerUvs[first + corner]);
        };
        for (uint32_t second = 1; second + 1 < corners; ++second)
            for (const uint32_t corner : {0u, second, second + 1})
                triangles.push_back(wedge(corner));
    }
    phase.Finish();
    return mesh;
}

/// Sorts the vertices. \return whether the orientation changes.
bool SortVertices(Triangle& triangle) {
    bool isOdd = false;
    for (const auto& [a, b] : {std::pair(0, 1), std::pair(1, 2), std::pair(0, 1)}) {
        uint32_t& first = triangle[static_cast<std::size_t>(a)];
        uint32_t& second = triangle[static_cast<std::size_t>(b)];
        if (first <= second) continue;
        std::swap(first, second);
        isOdd = !isOdd;
    }
    return isOdd;
}

/// Removes degenerate triangles, duplicates, and folds: pairs of triangles with the same vertices
/// and opposite orientations.
std::vector<uint32_t> WithoutFolds(const WedgeMesh& mesh, const std::vector<uint32_t>& triangles) {
    /// The triangle with these vertices, and whether sorting changes its orientation.
    std::unordered_map<Triangle, std::pair<uint32_t, bool>, WordsHash> first;
    std::vector<bool> isDropped(triangles.size() / 3);
    for (std::size_t i = 0; i < isDropped.size(); ++i) {
        Triangle key;
        for (std::size_t k = 0; k < 3; ++k) key[k] = mesh.wedges[triangles[i * 3 + k]].vertex;
        const bool isOdd = SortVertices(key);
        if (key[0] == key[1] || key[1] == key[2]) {
            isDropped[i] = true;
            continue;
        }
        const auto [entry, isNew] = first.try_emplace(key, static_cast<uint32_t>(i), isOdd);
        if (isNew) continue;
        isDropped[i] = true;
        if (entry->second.second == isOdd) continue;
        isDropped[entry->second.first] = true;
        first.erase(entry);
    }
    std::vector<uint32_t> result;
    for (std::size_t i = 0; i < isDropped.size(); ++i)
        if (!isDropped[i]) result.insert(result.end(), &triangles[i * 3], &triangles[i * 3] + 3);
    return result;
}

/// Converts triangles to a mesh with only the vertices and UVs that they use.
NewSurface SurfaceOf(SourceSurface& source,
                     const WedgeMesh& mesh,
                     const std::vector<uint32_t>& triangles) {
    NewSurface made;
    const SurfaceAttributes& old = source.Attributes();
    std::vector<uint32_t> newVertex(source.Level().VertexCount(), none);
    std::vector<uint32_t> newUv(old.uvs.size(), none);
    PolygonMesh& result = made.mesh;
    result.faceSizes.assign(triangles.size() / 3, 3);
    result.faceVertices.reserve(triangles.size());
    for (const uint32_t number : triangles) {
        const Wedge& wedge = mesh.wedges[number];
        uint32_t& vertex = newVertex[wedge.vertex];
        if (vertex == none) {
            vertex = static_cast<uint32_t>(result.positions.size());
            const Vector p = source.Level().Position(wedge.vertex);
            result.positions.push_back({p.x, p.y, p.z});
            made.vertexSources.push_back(wedge.vertex);
        }
        result.faceVertices.push_back(vertex);
        if (old.cornerUvs.empty()) continue;
        SurfaceAttributes& attributes = result.attributes;
        if (wedge.uv == SurfaceAttributes::none) {
            attributes.cornerUvs.push_back(SurfaceAttributes::none);
            continue;
        }
        uint32_t& uv = newUv[wedge.uv];
        if (uv == none) {
            uv = static_cast<uint32_t>(attributes.uvs.size());
            attributes.uvs.push_back(old.uvs[wedge.uv]);
        }
        attributes.cornerUvs.push_back(uv);
    }
    return made;
}

/// \param error  mesh-local estimate; 0 if there is no limit.
NewSurface Decimated(SourceSurface& source,
                     const WedgeMesh& mesh,
                     const Decimation& settings,
                     float error,
                     JobControl* job) {
    // The library cannot be interrupted.
    JobPhase phase(job, "Collapsing edges", 1);
    const std::size_t all = (mesh.kept.size() + mesh.removable.size()) / 3;
    const std::size_t wanted = std::min<std::size_t>(settings.faces.value_or(0), all);
    const std::size_t kept = mesh.kept.size() / 3;
    const std::size_t target = wanted > kept ? wanted - kept : 0;
    std::vector<uint32_t> triangles(mesh.removable.size());
    const std::size_t wedges = mesh.wedges.size();
    constexpr std::size_t stride = 3 * sizeof(float);
    const float scale = meshopt_simplifyScale(mesh.positions.data(), wedges, stride);
    const bool locks = settings.keepsBorders || kept > 0;
    triangles.resize(meshopt_simplify(triangles.data(),
                                      mesh.removable.data(),
                                      mesh.removable.size(),
                                      mesh.positions.data(),
                                      wedges,
                                      stride,
                                      target * 3,
                                      settings.error && scale > 0.0f ? error / scale : 1e9f,
                                      locks ? unsigned{meshopt_SimplifyLockBorder} : 0u,
                                      nullptr));
    triangles.insert(triangles.end(), mesh.kept.begin(), mesh.kept.end());
    phase.Add();
    phase.Finish();
    return SurfaceOf(source, mesh, WithoutFolds(mesh, triangles));
}

/// Returns the distance between the old and the new surface, mesh-local; see Decimate.
float DistanceBetween(SourceSurface& source, const PolygonMesh& mesh, JobControl* job) {
    PolygonMesh manifold = mesh;
    manifold.attributes = {};
    MakeOrientedManifold(manifold, job);
    LevelGeometry geometry(manifold, job);
    SourceSurface made(geometry);
    const float ofOld = MaxDistance(made, PositionsOf(source.Level()), job);
    std::vector<Vector> samples;
    const auto at = [&](std::size_t corner) {
        const auto& p = mesh.positions[mesh.faceVertices[corner]];
        return Vector(p[0], p[1], p[2]);
    };
    for (std::size_t corner = 0; corner < mesh.faceVertices.size(); corner += 3) {
        const Vector a = at(corner);
        const Vector b = at(corner + 1);
        const Vector c = at(corner + 2);
        for (const Vector& p :
             {(a + b) * 0.5f, (b + c) * 0.5f, (c + a) * 0.5f, (a + b + c) * (1.0f / 3.0f)})
            samples.push_back(p);
    }
    return std::max(ofOld, MaxDistance(source, samples, job));
}

NewSurface MakeDecimated(SourceSurface& source, Decimation settings, JobControl* job) {
    if (settings.ratio) {
        const LevelMesh& level = source.Level();
        const double triangles =
            static_cast<double>(level.faceCount) * (level.CornersPerFace() - 2);
        settings.faces = static_cast<uint32_t>(
            std::max(std::lround(triangles * static_cast<double>(*settings.ratio)), 1L));
    }
    const WedgeMesh mesh = WedgesOf(source, job);
    const float limit = settings.error ? source.LocalLength(*settings.error) : 0.0f;
    float estimate = limit;
    NewSurface made;
    for (int i = 0; i < maxTries; ++i) {
        // The last try changes only what is flat.
        if (i + 1 == maxTries) estimate = 0.0f;
        made = Decimated(source, mesh, settings, estimate, job);
        if (made.mesh.faceSizes.empty()) throw NothingRemains();
        if (!settings.error) break;
        const float distance = DistanceBetween(source, made.mesh, job);
        if (distance <= limit) break;
        estimate *= std::min(0.8f, 0.9f * limit / distance);
    }
    const std::size_t faces = made.mesh.faceSizes.size();
    if (settings.faces && !settings.error && faces > *settings.faces + *settings.faces / 20) {
        made.report.warnings.push_back(
            "the mesh has " + std::to_string(faces) +
            " triangles; fewer are not possible with the masked area, borders and "
            "texture seams that are kept");
    }
    return made;
}

}  // namespace

NothingRemains::~NothingRemains() = default;

SurfaceOperation Decimate(const Decimation& settings) {
    return {"Decimate", [settings](SourceSurface& source, JobControl* job) {
                return MakeDecimated(source, settings, job);
            }};
}

}  // namespace trovik
