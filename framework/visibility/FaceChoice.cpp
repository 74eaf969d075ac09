// SPDX-License-Identifier: Apache-2.0
#include "framework/visibility/FaceChoice.h"

#include "framework/mesh/AttributeRefinement.h"

#include <algorithm>

namespace trovik {

namespace {

/// Returns the visible faces for which `isChosen(vertex)` is true at all corners.
template <typename IsChosen>
FaceChoice VisibleFacesWith(const LevelMesh& level, IsChosen isChosen) {
    FaceChoice chosen(level.faceCount);
    const uint32_t corners = level.CornersPerFace();
    const uint32_t* vertices = level.faceVertexIndices.array;
    for (uint32_t face = 0; face < level.faceCount; ++face, vertices += corners)
        chosen[face] =
            !level.IsFaceHidden(face) && std::all_of(vertices, vertices + corners, isChosen) ? 1
                                                                                             : 0;
    return chosen;
}

/// \param ofBaseFaces  a number for each face of level 0; empty if every face has the number
/// `none`.
FaceChoice FacesNumbered(const LevelGeometry& geometry,
                         const std::vector<uint32_t>& ofBaseFaces,
                         uint32_t number) {
    const LevelMesh& level = *geometry.Bound();
    const uint32_t corners = geometry.Level(0)->CornersPerFace();
    FaceChoice chosen(level.faceCount);
    for (uint32_t face = 0; face < level.faceCount; ++face) {
        const uint32_t base = BaseFace(corners, geometry.BoundIndex(), face);
        const uint32_t own =
            base < ofBaseFaces.size() ? ofBaseFaces[base] : SurfaceAttributes::none;
        chosen[face] = own == number ? 1 : 0;
    }
    return chosen;
}

/// Extends the set of faces whose byte is `value` by `rings` rings of faces. A ring consists of the
/// faces that share a vertex with the set.
void Spread(const LevelMesh& level, FaceChoice& chosen, uint8_t value, uint32_t rings) {
    const uint32_t corners = level.CornersPerFace();
    const auto cornersOf = [&](uint32_t face) {
        return level.faceVertexIndices.array + std::size_t{face} * corners;
    };
    for (uint32_t ring = 0; ring < rings; ++ring) {
        std::vector<bool> touched(level.VertexCount());
        for (uint32_t face = 0; face < level.faceCount; ++face)
            for (uint32_t k = 0; chosen[face] == value && k < corners; ++k)
                touched[cornersOf(face)[k]] = true;
        bool changed = false;
        for (uint32_t face = 0; face < level.faceCount; ++face) {
            const uint32_t* vertices = cornersOf(face);
            if (chosen[face] == value ||
                !std::any_of(vertices, vertices + corners, [&](uint32_t v) { return touched[v]; }))
                continue;
            chosen[face] = value;
            changed = true;
        }
        if (!changed) return;
    }
}

}  // namespace

FaceChoice FacesByMask(const LevelMesh& level, uint8_t threshold) {
    return VisibleFacesWith(level, [&](uint32_t v) { return level.Freeze(v) >= threshold; });
}

FaceChoice FacesOfGroup(const LevelGeometry& geometry, uint32_t group) {
    return FacesNumbered(geometry, geometry.Attributes().faceGroups, group);
}

FaceChoice FacesOfMaterial(const LevelGeometry& geometry, uint32_t material) {
    return FacesNumbered(geometry, geometry.Attributes().faceMaterials, material);
}

// Faces of a level are connected if and only if their level-0 ancestors are.
FaceChoice FacesOfComponent(const LevelGeometry& geometry, uint32_t face) {
    LevelMesh& base = *geometry.Level(0);
    const uint32_t level = geometry.BoundIndex();
    std::vector<bool> met(base.faceCount);
    std::vector<uint32_t> found = {BaseFace(base.CornersPerFace(), level, face)};
    met[found[0]] = true;
    for (std::size_t head = 0; head < found.size(); ++head) {
        for (uint32_t side = 0; side < base.CornersPerFace(); ++side) {
            const uint32_t neighbour = base.QuadEdgeNeighbour(found[head], side);
            if (neighbour == openBorder || met[neighbour >> 2]) continue;
            met[neighbour >> 2] = true;
            found.push_back(neighbour >> 2);
        }
    }
    FaceChoice chosen(geometry.Bound()->faceCount);
    for (uint32_t one = 0; one < chosen.size(); ++one)
        chosen[one] = met[BaseFace(base.CornersPerFace(), level, one)] ? 1 : 0;
    return chosen;
}

FaceChoice FacesInView(const LevelGeometry& geometry,
                       const PatchTree& tree,
                       const StrokeView& view,
                       ViewReach reach,
                       const std::function<bool(const ViewPoint&)>& isInside) {
    const std::vector<float> inside =
        WeightsInView(geometry, tree, view, reach, [&isInside](const ViewPoint& point) {
            return isInside(point) ? 1.0f : 0.0f;
        });
    return VisibleFacesWith(*geometry.Bound(), [&](uint32_t v) { return inside[v] > 0.0f; });
}

FaceChoice HiddenFaces(const LevelMesh& level) {
    FaceChoice chosen(level.faceCount);
    for (uint32_t face = 0; face < level.faceCount; ++face)
        chosen[face] = level.IsFaceHidden(face) ? 1 : 0;
    return chosen;
}

FaceChoice GrownChoice(const LevelMesh& level, FaceChoice chosen, uint32_t rings) {
    Spread(level, chosen, 1, rings);
    return chosen;
}

FaceChoice ShrunkChoice(const LevelMesh& level, FaceChoice chosen, uint32_t rings) {
    Spread(level, chosen, 0, rings);
    return chosen;
}

}  // namespace trovik
