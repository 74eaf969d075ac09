// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/grab/GrabBrush.h"
#include "framework/nodes/HostKernel.h"
#include "framework/strokes/StrokeLoop.h"
#include "framework/strokes/StrokePath.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <memory>
#include <vector>

namespace trovik::test {

/// Positions and normals of a level.
struct Surface {
    explicit Surface(const LevelMesh& level) {
        for (uint32_t v = 0; v < level.VertexCount(); ++v) {
            positions.push_back(level.Position(v));
            const PackedNormal& normal = level.vertexNormals.array[v];
            normals.push_back({normal.x, normal.y, normal.z});
        }
    }
    bool operator==(const Surface& other) const {
        return normals == other.normals && positions.size() == other.positions.size() &&
               std::memcmp(positions.data(),
                           other.positions.data(),
                           positions.size() * sizeof(Vector)) == 0;
    }

    std::vector<Vector> positions;
    std::vector<std::array<int16_t, 3>> normals;
};

/// A unit sphere under the grab brush.
class GrabBrushTest : public testing::Test {
protected:
    GrabBrushTest() { Open(SphereQuads(4)); }
    ~GrabBrushTest() override { Close(); }

    void Open(const PolygonMesh& mesh) {
        Close();
        HostKernel::Instance();
        geometry = std::make_unique<LevelGeometry>(mesh);
        HostKernel::Instance().Scene()->AddGeometry(geometry.get());
        Level().ComputeNormals();
        tree = std::make_unique<PatchTree>(&Level());
        loop = std::make_unique<StrokeLoop>(brush, *geometry, *tree);
    }
    void Close() {
        loop.reset();
        tree.reset();
        if (geometry != nullptr) HostKernel::Instance().Scene()->RemoveGeometry(geometry.get());
        geometry.reset();
    }
    LevelMesh& Level() { return *geometry->Bound(); }
    void Select(const char* tool) { ASSERT_TRUE(brush.SetActiveConfiguration(QString(tool))); }

    StrokeDab At(const Vector& point, const Vector& displacement, float radius = 0.4f) {
        const auto hit = HitNear(*geometry, *tree, point);
        StrokeDab dab;
        dab.hit = SurfacePoint(&Level(), 0, hit->face);
        dab.hit.position = hit->position;
        dab.hit.normal = hit->normal;
        geometry->Transform().LocalToWorld(&dab.position, &hit->position, 1.0f);
        dab.position += displacement;
        dab.size = radius;
        dab.strength = 100.0f;
        dab.keepPosition = true;
        return dab;
    }
    /// A dab with the same hit and another displacement.
    StrokeDab Moved(StrokeDab dab, const Vector& displacement) {
        geometry->Transform().LocalToWorld(&dab.position, &dab.hit.position, 1.0f);
        dab.position += displacement;
        return dab;
    }
    void Stroke(const std::vector<StrokeDab>& dabs) {
        loop->Begin(BrushOperation::ModifierNone);
        for (const StrokeDab& dab : dabs) loop->Dab(dab);
        loop->End();
    }
    void Undo() { geometry->History().Undo(*geometry); }
    uint32_t NearestVertex(const Vector& point) {
        uint32_t nearest = 0;
        for (uint32_t v = 0; v < Level().VertexCount(); ++v)
            if ((Level().Position(v) - point).Length() <
                (Level().Position(nearest) - point).Length())
                nearest = v;
        return nearest;
    }
    /// Expects normals that are bit-identical to recomputed ones.
    void ExpectCurrentNormals() {
        const Surface before(Level());
        Level().ComputeNormals();
        EXPECT_EQ(Surface(Level()).normals, before.normals);
    }

    std::unique_ptr<LevelGeometry> geometry;
    std::unique_ptr<PatchTree> tree;
    GrabBrush brush;
    std::unique_ptr<StrokeLoop> loop;
};

}  // namespace trovik::test
