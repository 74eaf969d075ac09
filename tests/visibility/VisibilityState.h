// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/visibility/VisibilityChange.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace trovik::test {

/// Returns, for each face of a level, whether it is hidden.
inline std::vector<bool> HiddenFlags(const LevelMesh& level) {
    std::vector<bool> hidden(level.faceCount);
    for (uint32_t face = 0; face < level.faceCount; ++face) hidden[face] = level.IsFaceHidden(face);
    return hidden;
}

/// The vertices whose faces are all hidden, found without the walks of the mesh.
inline std::vector<bool> ExpectedHiddenVertices(const LevelMesh& level) {
    std::vector<uint32_t> faces(level.VertexCount());
    std::vector<uint32_t> hidden(level.VertexCount());
    const uint32_t corners = level.CornersPerFace();
    for (uint32_t face = 0; face < level.faceCount; ++face) {
        for (uint32_t k = 0; k < corners; ++k) {
            const uint32_t v = level.faceVertexIndices.array[face * corners + k];
            ++faces[v];
            hidden[v] += level.IsFaceHidden(face) ? 1u : 0u;
        }
    }
    std::vector<bool> expected(level.VertexCount());
    for (uint32_t v = 0; v < level.VertexCount(); ++v)
        expected[v] = faces[v] > 0 && faces[v] == hidden[v];
    return expected;
}

/// Expects that the counts, vertices and brush amounts of every level match its face flags, and
/// that the levels are consistent.
inline void ExpectConsistent(const LevelGeometry& geometry) {
    for (uint32_t index = 0; index < geometry.LevelCount(); ++index) {
        const LevelMesh& level = *geometry.Level(index);
        const std::vector<bool> hidden = HiddenFlags(level);
        ASSERT_EQ(level.HiddenFaceCount(), std::count(hidden.begin(), hidden.end(), true)) << index;
        const std::vector<bool> vertices = ExpectedHiddenVertices(level);
        ASSERT_EQ(level.HiddenVertexCount(), std::count(vertices.begin(), vertices.end(), true));
        uint32_t frozen = 0;
        for (uint32_t v = 0; v < level.VertexCount(); ++v) {
            ASSERT_EQ(level.IsVertexHidden(v), vertices[v]) << "level " << index << " vertex " << v;
            ASSERT_EQ(level.FreezeOfTools(v), vertices[v] ? 127 : level.Freeze(v)) << v;
            frozen += level.Freeze(v) != 0 ? 1u : 0u;
        }
        ASSERT_EQ(level.FrozenVertexCount(), frozen) << index;
        ASSERT_EQ(geometry.Level(index)->FreezeQuery() != 0,
                  frozen != 0 || level.HiddenVertexCount() != 0);
        if (index + 1 == geometry.LevelCount()) continue;
        const LevelMesh& fine = *geometry.Level(index + 1);
        const uint32_t children = level.CornersPerFace();
        for (uint32_t face = 0; face < level.faceCount; ++face) {
            bool all = true;
            for (uint32_t child = face * children; child < (face + 1) * children; ++child)
                all = all && fine.IsFaceHidden(child);
            ASSERT_EQ(hidden[face], all) << "level " << index << " face " << face;
        }
    }
}

/// A random selection of about this fraction of the faces: some patches and some individual faces.
template <typename Random>
FaceChoice RandomChoice(const LevelMesh& level, Random& random, unsigned percent) {
    FaceChoice chosen(level.faceCount);
    for (uint32_t face = 0; face < level.faceCount; ++face) {
        if (face % 16 == 0 && random() % 100 < percent)
            std::fill_n(chosen.begin() + face, std::min(16u, level.faceCount - face), uint8_t{1});
        if (random() % 100 < percent / 4) chosen[face] = 1;
    }
    return chosen;
}

/// Changes the visibility and pushes the step. \return whether anything changed.
inline bool Change(LevelGeometry& geometry,
                   VisibilityChange change,
                   const FaceChoice& chosen = {}) {
    auto step = ChangeVisibilityAsStep(geometry, change, chosen);
    if (step == nullptr) return false;
    geometry.History().Push(std::move(step));
    return true;
}

}  // namespace trovik::test
