// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/math/SameBits.h"
#include "framework/multires/LevelGeometry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

namespace trovik::test {

/// A copy of the bound level that is updated only from the reports of the geometry. Each face has
/// its own copy of its corners, like the patches of a viewport, so that a patch that is not
/// reported keeps its old data.
class ReportedCopy final : public GeometryObserver {
public:
    /// \param present  returns the geometry, which may be another one after a reset.
    explicit ReportedCopy(std::function<LevelGeometry&()> present)
        : geometryNow(std::move(present)) {
        geometryNow().AddObserver(*this);
        CopyAll(*geometryNow().Bound(), everything);
    }
    ~ReportedCopy() { geometryNow().RemoveObserver(*this); }
    ReportedCopy(const ReportedCopy&) = delete;
    ReportedCopy& operator=(const ReportedCopy&) = delete;

    void SurfaceChanged(const SurfaceChange& change) override {
        const LevelGeometry& geometry = geometryNow();
        if (change.level != geometry.BoundIndex()) return;
        ++reports;
        const LevelMesh& level = *geometry.Bound();
        uint8_t what = change.what;
        if ((what & SurfaceChange::Topology) != 0) what = everything;
        if (change.all) {
            ++reportsOfAll;
            CopyAll(level, what);
            return;
        }
        ASSERT_LE(change.patchLevel, change.level);
        const uint32_t patchCount = geometry.Level(change.patchLevel)->faceCount;
        const uint32_t faces = level.faceCount / patchCount;
        std::vector<uint32_t> sorted(change.patches.begin(), change.patches.end());
        std::sort(sorted.begin(), sorted.end());
        ASSERT_EQ(std::adjacent_find(sorted.begin(), sorted.end()), sorted.end());
        for (const uint32_t patch : change.patches) {
            ASSERT_LT(patch, patchCount);
            for (uint32_t face = patch * faces; face < (patch + 1) * faces; ++face)
                CopyFace(level, face, what);
        }
    }

    /// The differences between the copy and the level; empty if they are equal.
    std::string Difference() const {
        const LevelMesh& level = *geometryNow().Bound();
        if (vertices.size() != std::size_t{level.faceCount} * level.CornersPerFace() ||
            faceFlags.size() != level.faceCount)
            return "a different number of vertices or faces";
        const uint32_t corners = level.CornersPerFace();
        for (uint32_t face = 0; face < level.faceCount; ++face) {
            if (faceFlags[face] != level.faceFlags[face])
                return "flags of face " + std::to_string(face);
            for (uint32_t k = 0; k < corners; ++k) {
                const uint32_t slot = face * corners + k;
                const uint32_t v = level.faceVertexIndices.array[slot];
                const State now = StateOf(level, v);
                const std::string at =
                    " of vertex " + std::to_string(v) + " of face " + std::to_string(face);
                if (!SameBits(now.position, vertices[slot].position)) return "position" + at;
                if (!SameBits(now.normal, vertices[slot].normal)) return "normal" + at;
                if (now.freeze != vertices[slot].freeze) return "freeze amount" + at;
            }
        }
        return {};
    }

    unsigned reports = 0;
    unsigned reportsOfAll = 0;

private:
    static constexpr uint8_t everything = SurfaceChange::Positions | SurfaceChange::Normals |
                                          SurfaceChange::Mask | SurfaceChange::Visibility;
    struct State {
        float position[3];
        int16_t normal[3];
        uint8_t freeze;
    };
    static State StateOf(const LevelMesh& level, uint32_t v) {
        const Vector p = level.Position(v);
        const PackedNormal& n = level.vertexNormals.array[v];
        return {{p.x, p.y, p.z}, {n.x, n.y, n.z}, level.vertices.array[v].freeze};
    }
    void CopyCorner(const LevelMesh& level, uint32_t slot, uint8_t what) {
        const State now = StateOf(level, level.faceVertexIndices.array[slot]);
        State& copy = vertices[slot];
        if ((what & SurfaceChange::Positions) != 0) std::copy_n(now.position, 3, copy.position);
        if ((what & SurfaceChange::Normals) != 0) std::copy_n(now.normal, 3, copy.normal);
        if ((what & SurfaceChange::Mask) != 0) copy.freeze = now.freeze;
    }
    void CopyFace(const LevelMesh& level, uint32_t face, uint8_t what) {
        const uint32_t corners = level.CornersPerFace();
        for (uint32_t k = 0; k < corners; ++k) CopyCorner(level, face * corners + k, what);
        if ((what & SurfaceChange::Visibility) != 0) faceFlags[face] = level.faceFlags[face];
    }
    void CopyAll(const LevelMesh& level, uint8_t what) {
        vertices.resize(std::size_t{level.faceCount} * level.CornersPerFace());
        faceFlags.resize(level.faceCount);
        for (uint32_t face = 0; face < level.faceCount; ++face) CopyFace(level, face, what);
    }

    std::function<LevelGeometry&()> geometryNow;
    std::vector<State> vertices;
    std::vector<uint8_t> faceFlags;
};

}  // namespace trovik::test
