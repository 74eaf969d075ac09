// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/LevelMesh.h"

#include "framework/memory/FilledStore.h"
#include "framework/memory/SystemMemory.h"
#include "framework/mesh/BaseLevel.h"
#include "framework/mesh/LevelHierarchy.h"
#include "framework/mesh/StrokeResources.h"

#include <algorithm>

namespace trovik {

LevelMesh::LevelMesh(LevelHierarchy* ofHierarchy, int number)
    : hierarchy(ofHierarchy), index(number) {}
LevelMesh::~LevelMesh() {
    hierarchy->LevelDestroyed(*this);
    LevelMesh::Unlock();
}

void LevelMesh::AllocateFaces(uint32_t faces, int32_t type) {
    meshType = type;
    faceCount = faces;
    ResizeStore(faceVertexIndices, faces * CornersPerFace());
    PreferLargePages(faceVertexIndices.array, uint64_t{faceVertexIndices.fill} * sizeof(uint32_t));
    FillStore(faceFlagStore, faces, faceIsLive);
    faceFlags = faceFlagStore.array;
    FillStore(faceWalkStamps, faces, 0u);
}

void LevelMesh::AllocateVertices(uint32_t count) {
    vertexCount = count;
    ResizeStore(vertices, count);
    PreferLargePages(vertices.array, uint64_t{count} * sizeof(Vertex));
    std::fill_n(vertices.array, count, Vertex{});
}

void LevelMesh::MakeBaseTables(JobControl* job) {
    const uint32_t corners = CornersPerFace();
    FindNeighbours(faceVertexIndices, faceCount, corners, vertexCount, baseNeighbours, job);
    FillStore(baseVertexFace, vertexCount, openBorder);
    for (uint32_t slot = faceCount * corners; slot-- > 0;)
        baseVertexFace.array[faceVertexIndices.array[slot]] = slot / corners;
    // Strokes walk over the vertices of level 0 and must not allocate memory in proportion to the
    // mesh size.
    FillStore(vertexWalkStamps, vertexCount, 0u);
    vertexWalk = 0;
}

void LevelMesh::DropBaseTables() {
    baseNeighbours.Clear();
    baseVertexFace.Clear();
}

MeshChange* LevelMesh::StartChange() { return hierarchy->StartChange(*this); }

int32_t LevelMesh::MirrorVertex(uint32_t face,
                                uint32_t corner,
                                uint32_t* outFace,
                                uint32_t* outCorner) {
    const TopologicalMirror* mirror = hierarchy->Mirror();
    if (mirror == nullptr) return -1;
    const auto across = mirror->Across(static_cast<uint32_t>(index), face, corner);
    if (!across) return -1;
    *outFace = across->face;
    *outCorner = across->corner;
    return static_cast<int32_t>(
        faceVertexIndices.array[across->face * CornersPerFace() + across->corner]);
}
trovik::Geometry* LevelMesh::Geometry() { return hierarchy; }
int LevelMesh::Index() const { return index; }
int LevelMesh::FreezeQuery() { return frozenVertexCount != 0 || hiddenVertexCount != 0 ? 1 : 0; }
trovik::Layer* LevelMesh::Layer() { return hierarchy->LayerOf(*this); }

bool LevelMesh::Lock(MeshUnlocker* unlocker) {
    if (!WouldLock(unlocker)) return false;
    StrokeResources* resources = StrokeResources::Of(unlocker);
    if (resources != lockResources) {
        if (resources != nullptr) resources->AddLock(*this);
        if (lockResources != nullptr) lockResources->RemoveLock(*this);
        lockResources = resources;
    }
    lockHolder = unlocker;
    return true;
}

bool LevelMesh::WouldLock(const MeshUnlocker* unlocker) const {
    return lockable &&
           (lockHolder == nullptr || lockHolder == unlocker || lockHolder->IsStrokeFree());
}

void LevelMesh::Unlock() {
    if (lockResources != nullptr) lockResources->RemoveLock(*this);
    lockResources = nullptr;
    lockHolder = nullptr;
}

void LevelMesh::SetOpenChange(LevelChange* change, uint32_t* outsideEdits) {
    openChange = change;
    outsideEditCount = outsideEdits;
}

// During a stroke the brush may already have moved the vertex. Its record then holds the earlier
// position.
void LevelMesh::NoteOlderPosition(uint32_t vertex) {
    const uint32_t link = openChange == nullptr ? 0 : vertices.array[vertex].changeLink;
    if (openChange != nullptr && link < changeRecordCount &&
        changeRecords[link].vertexIndex == vertex) {
        const float* p = changeRecords[link].originalPosition;
        older.NotePosition(vertex, {p[0], p[1], p[2]});
        return;
    }
    older.NotePosition(vertex, Position(vertex));
}

}  // namespace trovik
