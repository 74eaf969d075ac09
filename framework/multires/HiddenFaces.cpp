// SPDX-License-Identifier: Apache-2.0
#include "framework/multires/HiddenFaces.h"

#include <algorithm>
#include <cassert>

namespace trovik {

namespace {

/// Returns how many faces of level `fine` a face of level `coarse` contains.
uint32_t FacesInFace(const LevelGeometry& geometry, uint32_t coarse, uint32_t fine) {
    uint32_t faces = 1;
    for (uint32_t level = coarse; level < fine; ++level)
        faces *= geometry.Level(level)->CornersPerFace();
    return faces;
}

bool AreAllHidden(const LevelMesh& level, uint32_t first, uint32_t count) {
    return std::all_of(level.faceFlags + first, level.faceFlags + first + count, [](uint8_t flags) {
        return (flags & faceIsHidden) != 0;
    });
}

/// Returns the coarse faces in `runs` whose visibility does not match their children's.
std::vector<FaceRun> DifferingFromChildren(const LevelMesh& coarse,
                                           const LevelMesh& fine,
                                           const std::vector<FaceRun>& runs) {
    const uint32_t children = coarse.CornersPerFace();
    std::vector<FaceRun> found;
    for (const FaceRun& run : runs)
        for (uint32_t face = run.first; face < run.first + run.count; ++face)
            if (coarse.IsFaceHidden(face) != AreAllHidden(fine, face * children, children))
                AppendFaces(found, face, 1);
    return found;
}

// Patches that share a border vertex with a toggled face are reported too, because hiding the last
// visible face of a vertex changes the vertex.
void ReportToggled(LevelGeometry& geometry, uint32_t index, const std::vector<FaceRun>& runs) {
    if (geometry.Observers().empty()) return;
    constexpr uint8_t what = SurfaceChange::Visibility | SurfaceChange::Mask;
    const LevelMesh& level = *geometry.Level(index);
    uint64_t faces = 0;
    for (const FaceRun& run : runs) faces += run.count;
    if (faces > level.faceCount / 4) {
        geometry.ReportAll(index, what);
        return;
    }
    std::vector<uint32_t> vertices;
    const std::size_t corners = level.CornersPerFace();
    for (const FaceRun& run : runs) {
        const uint32_t* first = level.faceVertexIndices.array + run.first * corners;
        vertices.insert(vertices.end(), first, first + run.count * corners);
    }
    std::sort(vertices.begin(), vertices.end());
    vertices.erase(std::unique(vertices.begin(), vertices.end()), vertices.end());
    geometry.ReportVertices(index, what, vertices);
}

}  // namespace

std::vector<FaceRun> FacesToToggle(const LevelGeometry& geometry,
                                   const std::vector<FaceVisibility>& wanted) {
    const uint32_t top = geometry.LevelCount() - 1;
    const LevelMesh& highest = *geometry.Level(top);
    const uint32_t faces = FacesInFace(geometry, geometry.BoundIndex(), top);
    assert(uint64_t{faces} * wanted.size() == highest.faceCount);
    std::vector<FaceRun> runs;
    for (uint32_t i = 0; i < wanted.size(); ++i) {
        if (wanted[i] == FaceVisibility::Keep) continue;
        const bool hide = wanted[i] == FaceVisibility::Hide;
        for (uint32_t face = i * faces; face < (i + 1) * faces; ++face)
            if (highest.IsFaceHidden(face) != hide) AppendFaces(runs, face, 1);
    }
    runs.shrink_to_fit();
    return runs;
}

std::vector<FaceRun> FacesOnLevel(const LevelGeometry& geometry,
                                  const std::vector<FaceRun>& runs,
                                  uint32_t from,
                                  uint32_t to) {
    const uint32_t shrink = FacesInFace(geometry, to, from);
    const uint32_t grow = FacesInFace(geometry, from, to);
    std::vector<FaceRun> found;
    uint32_t end = 0;
    for (const FaceRun& run : runs) {
        // A run may end in the same coarse face in which the next run begins.
        const uint32_t first = std::max(run.first / shrink * grow, end);
        const uint32_t last = (run.first + run.count - 1) / shrink * grow + grow;
        if (last <= first) continue;
        AppendFaces(found, first, last - first);
        end = last;
    }
    return found;
}

void ToggleHidden(LevelGeometry& geometry, const std::vector<FaceRun>& runs) {
    std::vector<FaceRun> toggled = runs;
    for (uint32_t index = geometry.LevelCount(); index-- > 0 && !toggled.empty();) {
        LevelMesh& level = *geometry.Level(index);
        level.ToggleHidden(toggled);
        ReportToggled(geometry, index, toggled);
        if (index == 0) break;
        toggled = DifferingFromChildren(
            *geometry.Level(index - 1), level, FacesOnLevel(geometry, toggled, index, index - 1));
    }
}

void HideChildren(const LevelMesh& coarse, LevelMesh& fine) {
    if (coarse.HiddenFaceCount() == 0) return;
    const uint32_t children = coarse.CornersPerFace();
    for (uint32_t face = 0; face < fine.faceCount; ++face)
        if (coarse.IsFaceHidden(face / children)) fine.faceFlags[face] |= faceIsHidden;
    fine.RefreshHidden();
}

void HideParents(LevelMesh& coarse, const LevelMesh& fine) {
    const uint32_t children = coarse.CornersPerFace();
    for (uint32_t face = 0; face < coarse.faceCount; ++face) {
        uint8_t& flags = coarse.faceFlags[face];
        flags = static_cast<uint8_t>(flags & ~faceIsHidden);
        if (AreAllHidden(fine, face * children, children)) flags |= faceIsHidden;
    }
    coarse.RefreshHidden();
}

void UpdateHiddenFromHighest(LevelGeometry& geometry) {
    uint32_t index = geometry.LevelCount() - 1;
    geometry.Level(index)->RefreshHidden();
    while (index-- > 0) HideParents(*geometry.Level(index), *geometry.Level(index + 1));
}

}  // namespace trovik
