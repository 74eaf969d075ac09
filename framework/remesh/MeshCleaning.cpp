// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/MeshCleaning.h"

#include "framework/io/WordsHash.h"
#include "framework/jobs/JobPhase.h"
#include "framework/remesh/FaceTable.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <map>
#include <numeric>
#include <unordered_map>

namespace trovik {

namespace {

constexpr uint32_t none = NewSurface::none;

Vector At(const PolygonMesh& mesh, uint32_t vertex) {
    const auto& p = mesh.positions[vertex];
    return {p[0], p[1], p[2]};
}

/// The cell of a grid with the given cell size, or, for size 0, the bits of the position.
std::array<uint32_t, 3> CellOf(const std::array<float, 3>& p, double size) {
    std::array<uint32_t, 3> cell{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        // Adding zero changes -0 to +0 and nothing else.
        if (size == 0.0) {
            cell[axis] = std::bit_cast<uint32_t>(p[axis] + 0.0f);
            continue;
        }
        constexpr double largest = 9e18;
        const double number = std::floor(static_cast<double>(p[axis]) / size);
        cell[axis] =
            static_cast<uint32_t>(static_cast<int64_t>(std::clamp(number, -largest, largest)));
    }
    return cell;
}

/// Adds one face to `to`. \param corners  indices into the corners of `from`.
void AddFace(const NewSurface& from,
             std::size_t face,
             const std::vector<std::size_t>& corners,
             const std::vector<uint32_t>& vertexNumbers,
             NewSurface& to) {
    to.mesh.faceSizes.push_back(static_cast<uint32_t>(corners.size()));
    to.faceSources.push_back(face < from.faceSources.size() ? from.faceSources[face] : none);
    for (const std::size_t corner : corners) {
        to.mesh.faceVertices.push_back(vertexNumbers[from.mesh.faceVertices[corner]]);
        if (!from.mesh.attributes.cornerUvs.empty())
            to.mesh.attributes.cornerUvs.push_back(from.mesh.attributes.cornerUvs[corner]);
    }
}

}  // namespace

std::vector<uint32_t> WeldedNumbers(const PolygonMesh& mesh, float distance, JobControl* job) {
    const auto count = static_cast<uint32_t>(mesh.positions.size());
    std::vector<uint32_t> welded(count);
    std::iota(welded.begin(), welded.end(), 0u);
    const double size = static_cast<double>(distance);
    std::unordered_map<std::array<uint32_t, 3>, std::vector<uint32_t>, WordsHash> cells;
    cells.reserve(count);
    JobPhase phase(job, "Comparing positions", count);
    for (uint32_t v = 0; v < count; ++v) {
        phase.Add();
        const std::array<uint32_t, 3> cell = CellOf(mesh.positions[v], size);
        const int reach = distance > 0.0f ? 1 : 0;
        for (int x = -reach; x <= reach; ++x)
            for (int y = -reach; y <= reach; ++y)
                for (int z = -reach; z <= reach; ++z) {
                    const auto found = cells.find({cell[0] + static_cast<uint32_t>(x),
                                                   cell[1] + static_cast<uint32_t>(y),
                                                   cell[2] + static_cast<uint32_t>(z)});
                    if (found == cells.end()) continue;
                    for (const uint32_t other : found->second)
                        if (other < welded[v] &&
                            (At(mesh, other) - At(mesh, v)).Length() <= distance)
                            welded[v] = other;
                }
        // Only vertices that remain are compared with later ones, so chains of close vertices do
        // not collapse into one.
        if (welded[v] == v) cells[cell].push_back(v);
    }
    phase.Finish();
    return welded;
}

std::size_t WeldVertices(NewSurface& surface, float distance, JobControl* job) {
    const std::vector<uint32_t> welded = WeldedNumbers(surface.mesh, distance, job);
    std::size_t merged = 0;
    for (uint32_t v = 0; v < welded.size(); ++v)
        if (welded[v] != v) ++merged;
    if (merged == 0) return 0;
    NewSurface result;
    result.mesh.attributes.uvs = surface.mesh.attributes.uvs;
    const FaceTable faces(surface.mesh);
    std::vector<std::size_t> corners;
    std::vector<uint32_t> sorted;
    for (std::size_t face = 0; face < faces.FaceCount(); ++face) {
        const auto v = faces.Vertices(face);
        corners.clear();
        for (std::size_t k = 0; k < v.size(); ++k)
            if (welded[v[k]] != welded[v[(k + 1) % v.size()]])
                corners.push_back(faces.FirstCorner(face) + k);
        sorted.clear();
        for (const std::size_t corner : corners)
            sorted.push_back(welded[surface.mesh.faceVertices[corner]]);
        std::sort(sorted.begin(), sorted.end());
        if (corners.size() >= 3 && std::adjacent_find(sorted.begin(), sorted.end()) == sorted.end())
            AddFace(surface, face, corners, welded, result);
    }
    result.mesh.positions = std::move(surface.mesh.positions);
    result.vertexSources = std::move(surface.vertexSources);
    result.report = std::move(surface.report);
    surface = std::move(result);
    RemoveUnusedVertices(surface);
    return merged;
}

std::vector<bool> DegenerateFaces(const PolygonMesh& mesh) {
    const FaceTable faces(mesh);
    std::vector<bool> isDegenerate(faces.FaceCount());
    std::vector<uint32_t> sorted;
    for (std::size_t face = 0; face < faces.FaceCount(); ++face) {
        const auto v = faces.Vertices(face);
        sorted.assign(v.begin(), v.end());
        std::sort(sorted.begin(), sorted.end());
        if (std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end()) {
            isDegenerate[face] = true;
            continue;
        }
        double area = 0.0;
        double longest = 0.0;
        const Vector origin = At(mesh, v[0]);
        for (std::size_t k = 1; k < v.size(); ++k) {
            const Vector a = At(mesh, v[k]) - origin;
            longest = std::max(longest, static_cast<double>(a.Length()));
            if (k + 1 == v.size()) continue;
            const Vector b = At(mesh, v[k + 1]) - origin;
            area += static_cast<double>((a & b).Length());
        }
        // Single precision does not distinguish smaller areas from zero.
        isDegenerate[face] = area <= 1e-7 * longest * longest;
    }
    return isDegenerate;
}

std::vector<bool> DuplicateFaces(const PolygonMesh& mesh) {
    const FaceTable faces(mesh);
    std::vector<uint32_t> order(faces.FaceCount());
    std::iota(order.begin(), order.end(), 0u);
    std::vector<uint32_t> vertices = mesh.faceVertices;
    for (std::size_t face = 0; face < faces.FaceCount(); ++face) {
        const auto first = vertices.begin() + static_cast<std::ptrdiff_t>(faces.FirstCorner(face));
        std::sort(first, first + mesh.faceSizes[face]);
    }
    const auto keyOf = [&](uint32_t face) {
        return std::span<const uint32_t>(vertices.data() + faces.FirstCorner(face),
                                         mesh.faceSizes[face]);
    };
    std::sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) {
        const auto first = keyOf(a);
        const auto second = keyOf(b);
        const auto differs =
            std::mismatch(first.begin(), first.end(), second.begin(), second.end());
        if (differs.second == second.end()) return differs.first == first.end() && a < b;
        return differs.first == first.end() || *differs.first < *differs.second;
    });
    std::vector<bool> isDuplicate(faces.FaceCount());
    for (std::size_t i = 1; i < order.size(); ++i)
        isDuplicate[order[i]] = std::ranges::equal(keyOf(order[i - 1]), keyOf(order[i]));
    return isDuplicate;
}

std::vector<bool> FacesOfSmallPieces(const PolygonMesh& mesh, std::size_t minFaces) {
    const auto [pieces, count] = ComponentsOf(mesh);
    std::vector<std::size_t> sizes(count);
    for (const uint32_t piece : pieces) ++sizes[piece];
    std::vector<bool> isSmall(pieces.size());
    for (std::size_t face = 0; face < pieces.size(); ++face)
        isSmall[face] = sizes[pieces[face]] < minFaces;
    return isSmall;
}

std::size_t RemoveUnusedVertices(NewSurface& surface) {
    PolygonMesh& mesh = surface.mesh;
    std::vector<uint32_t> numbers(mesh.positions.size(), none);
    for (const uint32_t v : mesh.faceVertices) numbers[v] = 0;
    uint32_t count = 0;
    surface.vertexSources.resize(mesh.positions.size(), none);
    for (std::size_t v = 0; v < numbers.size(); ++v) {
        if (numbers[v] == none) continue;
        numbers[v] = count;
        mesh.positions[count] = mesh.positions[v];
        surface.vertexSources[count++] = surface.vertexSources[v];
    }
    const std::size_t removed = mesh.positions.size() - count;
    mesh.positions.resize(count);
    surface.vertexSources.resize(count);
    for (uint32_t& v : mesh.faceVertices) v = numbers[v];
    return removed;
}

std::size_t RemoveFaces(NewSurface& surface, const std::vector<bool>& isRemoved) {
    const auto removed =
        static_cast<std::size_t>(std::count(isRemoved.begin(), isRemoved.end(), true));
    if (removed == 0) return 0;
    NewSurface result;
    result.mesh.attributes.uvs = surface.mesh.attributes.uvs;
    const FaceTable faces(surface.mesh);
    std::vector<uint32_t> same(surface.mesh.positions.size());
    std::iota(same.begin(), same.end(), 0u);
    std::vector<std::size_t> corners;
    for (std::size_t face = 0; face < faces.FaceCount(); ++face) {
        if (isRemoved[face]) continue;
        corners.resize(surface.mesh.faceSizes[face]);
        std::iota(corners.begin(), corners.end(), faces.FirstCorner(face));
        AddFace(surface, face, corners, same, result);
    }
    result.mesh.positions = std::move(surface.mesh.positions);
    result.vertexSources = std::move(surface.vertexSources);
    result.report = std::move(surface.report);
    surface = std::move(result);
    RemoveUnusedVertices(surface);
    return removed;
}

}  // namespace trovik
