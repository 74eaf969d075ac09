// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/MaskExtraction.h"

#include "framework/errors/HostError.h"
#include "framework/freeze/FreezeBlend.h"
#include "framework/jobs/JobPhase.h"
#include "framework/mesh/SurfaceNormal.h"
#include "framework/remesh/FaceTable.h"
#include "framework/remesh/SurfaceCopy.h"
#include "framework/visibility/FaceChoice.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace trovik {

namespace {

constexpr uint32_t none = NewSurface::none;

Vector Of(const std::array<float, 3>& p) { return {p[0], p[1], p[2]}; }

/// The two neighbours of a vertex along the border of the part.
using BorderNeighbours = std::array<uint32_t, 2>;

/// The part of a surface that is extracted: an oriented manifold with the normals of the old
/// surface, and without groups.
class MaskedPart {
public:
    MaskedPart(SourceSurface& ofSource, const FaceChoice& chosen, JobControl* job)
        : source(ofSource) {
        const PolygonMesh all = source.Polygons(job);
        const SurfaceAttributes& from = all.attributes;
        SurfaceAttributes& to = mesh.attributes;
        to = from;
        for (auto* list : {&to.cornerUvs, &to.faceGroups, &to.faceMaterials, &to.faceSmoothing})
            list->clear();
        to.groupNames.clear();
        to.colors.clear();
        to.uvs.clear();
        std::vector<uint32_t> uvNumbers(from.uvs.size(), none);
        std::vector<uint32_t> numbers(all.positions.size(), none);
        JobPhase phase(job, "Copying the masked part", all.faceSizes.size());
        const FaceTable faces(all);
        for (std::size_t face = 0; face < all.faceSizes.size(); ++face) {
            phase.Add();
            if (chosen[face] == 0) continue;
            mesh.faceSizes.push_back(all.faceSizes[face]);
            for (const uint32_t vertex : faces.Vertices(face)) {
                uint32_t& number = numbers[vertex];
                if (number == none) number = AddVertex(all, vertex);
                mesh.faceVertices.push_back(number);
            }
            const std::size_t first = faces.FirstCorner(face);
            for (std::size_t k = 0; k < all.faceSizes[face] && !from.cornerUvs.empty(); ++k)
                to.cornerUvs.push_back(NumberUv(from, from.cornerUvs[first + k], uvNumbers));
            if (!from.faceMaterials.empty()) to.faceMaterials.push_back(from.faceMaterials[face]);
            if (!from.faceSmoothing.empty()) to.faceSmoothing.push_back(from.faceSmoothing[face]);
        }
        phase.Finish();
        MakeOrientedManifold(mesh, job);
        FindBorder(all);
    }

    const PolygonMesh& Mesh() const { return mesh; }
    /// The sides of faces on the border.
    const std::vector<FaceSide>& Border() const { return border; }

    /// Moves the vertices of the border towards the means of their neighbours along it, and then
    /// onto the old surface. Vertices on a border of the old surface do not move.
    void SmoothBorder(uint32_t iterations, JobControl* job) {
        if (iterations == 0) return;
        std::vector<uint32_t> moved;
        for (uint32_t v = 0; v < neighbours.size(); ++v)
            if (neighbours[v][1] != none && !isFixed[v]) moved.push_back(v);
        std::vector<Vector> points(mesh.positions.size());
        for (std::size_t v = 0; v < points.size(); ++v) points[v] = Of(mesh.positions[v]);
        JobPhase phase(job, "Smoothing the border", iterations);
        std::vector<Vector> next(moved.size());
        for (uint32_t i = 0; i < iterations; ++i, phase.Add()) {
            for (std::size_t k = 0; k < moved.size(); ++k) {
                const BorderNeighbours& sides = neighbours[moved[k]];
                next[k] = points[moved[k]] * 0.5f + (points[sides[0]] + points[sides[1]]) * 0.25f;
            }
            for (std::size_t k = 0; k < moved.size(); ++k) points[moved[k]] = next[k];
        }
        phase.Finish();
        const std::vector<NearestPoint> nearest = source.Nearest(next, job);
        for (std::size_t k = 0; k < moved.size(); ++k) {
            const Vector& p = nearest[k].position;
            mesh.positions[moved[k]] = {p.x, p.y, p.z};
        }
    }

private:
    uint32_t AddVertex(const PolygonMesh& all, uint32_t vertex) {
        const Vector normal = Unpacked(source.Level().vertexNormals.array[vertex]).Normalized();
        mesh.positions.push_back(all.positions[vertex]);
        mesh.normals.push_back({normal.x, normal.y, normal.z});
        if (!all.attributes.colors.empty())
            mesh.attributes.colors.push_back(all.attributes.colors[vertex]);
        oldVertices.push_back(vertex);
        return static_cast<uint32_t>(mesh.positions.size() - 1);
    }

    /// Returns the new number of a UV, which is added when it is first used.
    uint32_t NumberUv(const SurfaceAttributes& from, uint32_t uv, std::vector<uint32_t>& numbers) {
        if (uv == SurfaceAttributes::none) return uv;
        auto& uvs = mesh.attributes.uvs;
        if (numbers[uv] == none) {
            numbers[uv] = static_cast<uint32_t>(uvs.size());
            uvs.push_back(from.uvs[uv]);
        }
        return numbers[uv];
    }

    void FindBorder(const PolygonMesh& all) {
        std::vector<bool> isOldBorder(all.positions.size());
        ForEachEdge(SortedSides(all), [&](const FaceSide* side, const FaceSide* end) {
            if (end - side == 1) isOldBorder[side->low] = isOldBorder[side->high] = true;
        });
        isFixed.resize(mesh.positions.size());
        for (std::size_t v = 0; v < oldVertices.size(); ++v)
            isFixed[v] = isOldBorder[oldVertices[v]];
        neighbours.resize(mesh.positions.size(), {none, none});
        const auto link = [this](uint32_t from, uint32_t to) {
            BorderNeighbours& sides = neighbours[from];
            sides[sides[0] == none ? 0 : 1] = to;
        };
        ForEachEdge(SortedSides(mesh), [&](const FaceSide* side, const FaceSide* end) {
            if (end - side != 1) return;
            border.push_back(*side);
            link(side->low, side->high);
            link(side->high, side->low);
        });
        // The strip of faces follows the order of the faces next to it.
        std::ranges::sort(border, [](const FaceSide& a, const FaceSide& b) {
            return std::pair(a.face, a.corner) < std::pair(b.face, b.corner);
        });
    }

    SourceSurface& source;
    PolygonMesh mesh;
    /// For the vertices that existed before the split into a manifold.
    std::vector<uint32_t> oldVertices;
    std::vector<FaceSide> border;
    std::vector<bool> isFixed;
    std::vector<BorderNeighbours> neighbours;
};

/// Builds the two copies of a part and the strip between their borders.
class PartBuilder {
public:
    PartBuilder(const MaskedPart& ofPart, float outerOffset, float innerOffset)
        : part(ofPart), mesh(ofPart.Mesh()), faces(mesh) {
        result.attributes = mesh.attributes;
        for (auto* list : {&result.attributes.faceMaterials, &result.attributes.faceSmoothing})
            list->clear();
        result.attributes.colors.clear();
        for (const float offset : {outerOffset, innerOffset}) AddVertices(offset);
        for (std::size_t face = 0; face < mesh.faceSizes.size(); ++face) {
            const auto vertices = faces.Vertices(face);
            AddFace({vertices.begin(), vertices.end()}, face);
        }
        for (std::size_t face = 0; face < mesh.faceSizes.size(); ++face) {
            const auto vertices = faces.Vertices(face);
            std::vector<uint32_t> inner(vertices.begin(), vertices.end());
            for (uint32_t& vertex : inner) vertex = Inner(vertex);
            // The first corner stays, as when faces are flipped.
            std::reverse(inner.begin() + 1, inner.end());
            AddFace(inner, face);
        }
        for (const FaceSide& side : part.Border()) AddStrip(side);
        auto& uvs = result.attributes.cornerUvs;
        if (!uvs.empty()) uvs.resize(result.faceVertices.size(), SurfaceAttributes::none);
    }

    PolygonMesh result;

private:
    uint32_t Inner(uint32_t vertex) const {
        return vertex + static_cast<uint32_t>(mesh.positions.size());
    }

    void AddVertices(float offset) {
        for (std::size_t v = 0; v < mesh.positions.size(); ++v) {
            const Vector p = Of(mesh.positions[v]) + Of(mesh.normals[v]) * offset;
            result.positions.push_back({p.x, p.y, p.z});
        }
        auto& colors = result.attributes.colors;
        colors.insert(colors.end(), mesh.attributes.colors.begin(), mesh.attributes.colors.end());
    }

    /// \param origin  the face of the part whose material and smoothing group the face gets.
    void AddFace(const std::vector<uint32_t>& vertices, std::size_t origin) {
        result.faceSizes.push_back(static_cast<uint32_t>(vertices.size()));
        result.faceVertices.insert(result.faceVertices.end(), vertices.begin(), vertices.end());
        const SurfaceAttributes& from = mesh.attributes;
        SurfaceAttributes& to = result.attributes;
        if (!from.faceMaterials.empty()) to.faceMaterials.push_back(from.faceMaterials[origin]);
        if (!from.faceSmoothing.empty()) to.faceSmoothing.push_back(from.faceSmoothing[origin]);
    }

    void AddStrip(const FaceSide& side) {
        const uint32_t a = side.rises ? side.low : side.high;
        const uint32_t b = side.rises ? side.high : side.low;
        if (mesh.faceSizes[side.face] == 4) {
            AddFace({b, a, Inner(a), Inner(b)}, side.face);
            return;
        }
        AddFace({b, a, Inner(a)}, side.face);
        AddFace({b, Inner(a), Inner(b)}, side.face);
    }

    const MaskedPart& part;
    const PolygonMesh& mesh;
    FaceTable faces;
};

std::string NewGroupName(const std::vector<std::string>& names) {
    const std::string stem = "Extracted";
    std::string name = stem;
    for (int number = 2; std::ranges::find(names, name) != names.end(); ++number)
        name = stem + " " + std::to_string(number);
    return name;
}

NewSurface MakeExtracted(SourceSurface& source, const MaskExtraction& settings, JobControl* job) {
    const uint8_t amount = std::max<uint8_t>(FreezeAmountOf(settings.threshold), 1);
    const FaceChoice chosen = FacesByMask(source.Level(), amount);
    if (std::ranges::find(chosen, uint8_t{1}) == chosen.end())
        throw HostError("no face has a mask weight of at least " +
                        std::to_string(std::lround(settings.threshold * 100.0f)) +
                        " % at all corners; mask the part that is to be extracted");
    MaskedPart part(source, chosen, job);
    part.SmoothBorder(settings.smoothIterations, job);
    const float thickness = source.LocalLength(settings.thickness);
    using Side = MaskExtraction::Side;
    const float outer = settings.side == Side::Outside ? thickness
                        : settings.side == Side::Both  ? thickness * 0.5f
                                                       : 0.0f;
    PartBuilder builder(part, outer, outer - thickness);
    PolygonMesh& result = builder.result;
    result.attributes.groupNames = {
        settings.group.empty() ? NewGroupName(source.Attributes(job).groupNames) : settings.group};
    result.attributes.faceGroups.assign(result.faceSizes.size(), 0);
    NewSurface made;
    if (!settings.replaces) made = CopyOf(source, job);
    AddComponent(made, result);
    made.report.notes.push_back("the group \"" + result.attributes.groupNames[0] + "\" has " +
                                std::to_string(result.faceSizes.size()) + " new faces");
    return made;
}

}  // namespace

SurfaceOperation ExtractMasked(const MaskExtraction& settings) {
    return {"Extract masked part", [settings](SourceSurface& source, JobControl* job) {
                return MakeExtracted(source, settings, job);
            }};
}

}  // namespace trovik
