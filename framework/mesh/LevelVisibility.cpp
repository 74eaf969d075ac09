// SPDX-License-Identifier: Apache-2.0

/// \file
/// Hidden faces of one level, and the vertices that are hidden with them.
#include "framework/mesh/LevelMesh.h"

#include <algorithm>
#include <cassert>

namespace trovik {

namespace {

/// Set in Vertex::reserved[0] of a hidden vertex, along with its own freeze amount. A value of 0
/// means visible.
constexpr uint8_t vertexIsHidden = 0x80;

/// Visiting the faces around one vertex costs about this many times as much as visiting one face in
/// a pass over all faces.
constexpr uint64_t aroundVertexCost = 16;

}  // namespace

void LevelMesh::SetVertexHidden(uint32_t vertex, bool on) {
    Vertex& v = vertices.array[vertex];
    if ((v.reserved[0] != 0) == on) return;
    if (on) {
        v.reserved[0] = static_cast<uint8_t>(vertexIsHidden | (v.freeze & freezeAmountMask));
        v.freeze |= freezeAmountMask;
        ++hiddenVertexCount;
    } else {
        v.freeze = static_cast<uint8_t>((v.freeze & ~freezeAmountMask) |
                                        (v.reserved[0] & freezeAmountMask));
        v.reserved[0] = 0;
        --hiddenVertexCount;
    }
}

void LevelMesh::SetFreeze(uint32_t vertex, uint8_t amount) {
    Vertex& v = vertices.array[vertex];
    const uint8_t before = Freeze(vertex);
    const uint8_t after = std::min(amount, freezeAmountMask);
    if (after == before) return;
    older.NoteFreeze(vertex, before);
    if (before == 0 && after != 0) ++frozenVertexCount;
    if (before != 0 && after == 0) --frozenVertexCount;
    uint8_t& byte = v.reserved[0] != 0 ? v.reserved[0] : v.freeze;
    byte = static_cast<uint8_t>((byte & ~freezeAmountMask) | after);
}

void LevelMesh::ToggleHidden(std::span<const FaceRun> faces) {
    assert(changes.empty() && "faces cannot be hidden or shown during a stroke");
    uint64_t newlyHidden = 0;
    for (const FaceRun& run : faces) {
        for (uint32_t face = run.first; face < run.first + run.count; ++face) {
            faceFlags[face] ^= faceIsHidden;
            if (IsFaceHidden(face)) {
                ++hiddenFaceCount;
                ++newlyHidden;
            } else {
                --hiddenFaceCount;
            }
        }
    }
    // Showing a face makes its corners visible, whether or not the other faces around them are
    // hidden.
    if (newlyHidden * aroundVertexCost > faceCount) {
        RefreshHiddenVertices();
        return;
    }
    const uint32_t corners = CornersPerFace();
    const auto forEachCorner = [&](bool hidden, const auto& visit) {
        for (const FaceRun& run : faces) {
            for (uint32_t face = run.first; face < run.first + run.count; ++face) {
                if (IsFaceHidden(face) != hidden) continue;
                for (uint32_t k = 0; k < corners; ++k)
                    visit(faceVertexIndices.array[std::size_t{face} * corners + k], face);
            }
        }
    };
    std::vector<uint32_t> around;
    forEachCorner(true, [&](uint32_t vertex, uint32_t face) {
        if (IsVertexHidden(vertex)) return;
        around.clear();
        FacesAround(vertex, face, around);
        SetVertexHidden(vertex, std::all_of(around.begin(), around.end(), [this](uint32_t one) {
                            return IsFaceHidden(one);
                        }));
    });
    // This includes previously hidden vertices, which the first pass skips.
    forEachCorner(false, [this](uint32_t vertex, uint32_t) { SetVertexHidden(vertex, false); });
}

void LevelMesh::RefreshHidden() {
    hiddenFaceCount = 0;
    for (uint32_t face = 0; face < faceCount; ++face)
        if (IsFaceHidden(face)) ++hiddenFaceCount;
    RefreshHiddenVertices();
}

void LevelMesh::RefreshHiddenVertices() {
    if (hiddenFaceCount == 0 && hiddenVertexCount == 0) return;
    constexpr uint8_t ofHiddenFace = 1;
    constexpr uint8_t ofVisibleFace = 2;
    std::vector<uint8_t> uses(vertexCount, 0);
    const uint32_t corners = CornersPerFace();
    const uint32_t* vertex = faceVertexIndices.array;
    for (uint32_t face = 0; face < faceCount; ++face, vertex += corners) {
        const uint8_t use = IsFaceHidden(face) ? ofHiddenFace : ofVisibleFace;
        for (uint32_t k = 0; k < corners; ++k) uses[vertex[k]] |= use;
    }
    for (uint32_t v = 0; v < vertexCount; ++v) SetVertexHidden(v, uses[v] == ofHiddenFace);
}

}  // namespace trovik
