// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/layers/LayerStack.h"
#include "tests/levels/GeometryState.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

namespace trovik::test {
namespace {

struct Shuffled {
    PolygonMesh mesh;
    /// The original vertex of each vertex of the shuffled mesh.
    std::vector<uint32_t> was;
};

/// The same surface with vertices and faces renumbered, and with other first corners.
Shuffled Shuffle(const PolygonMesh& mesh, unsigned seed) {
    std::mt19937 random(seed);
    Shuffled result;
    result.mesh = mesh;
    result.mesh.normals.clear();
    result.was.resize(mesh.positions.size());
    std::iota(result.was.begin(), result.was.end(), 0u);
    std::shuffle(result.was.begin(), result.was.end(), random);
    std::vector<uint32_t> now(result.was.size());
    for (uint32_t v = 0; v < now.size(); ++v) {
        now[result.was[v]] = v;
        result.mesh.positions[v] = mesh.positions[result.was[v]];
    }
    std::vector<uint32_t> faces(mesh.faceSizes.size());
    std::iota(faces.begin(), faces.end(), 0u);
    std::shuffle(faces.begin(), faces.end(), random);
    for (std::size_t f = 0; f < faces.size(); ++f) {
        const std::size_t first = random() % 4;
        for (std::size_t k = 0; k < 4; ++k) {
            result.mesh.faceVertices[f * 4 + k] =
                now[mesh.faceVertices[faces[f] * 4 + (k + first) % 4]];
        }
    }
    return result;
}

/// The corner positions of each face, starting with the smallest, sorted.
std::vector<std::vector<std::array<float, 3>>> FacesInSpace(const PolygonMesh& mesh) {
    std::vector<std::vector<std::array<float, 3>>> faces;
    for (std::size_t f = 0; f < mesh.faceSizes.size(); ++f) {
        std::vector<std::array<float, 3>> face;
        for (std::size_t k = 0; k < 4; ++k)
            face.push_back(mesh.positions[mesh.faceVertices[f * 4 + k]]);
        std::rotate(face.begin(), std::min_element(face.begin(), face.end()), face.end());
        faces.push_back(face);
    }
    std::sort(faces.begin(), faces.end());
    return faces;
}

bool IsTorusLike(const ZooMesh& zoo) { return zoo.name == "torus"; }

TEST(Unsubdivide, FindsTheCoarseMeshOfAShuffledRefinement) {
    for (const ZooMesh& zoo : AllMeshes()) {
        SCOPED_TRACE(zoo.name);
        LevelGeometry original(zoo.mesh);
        original.Subdivide();
        const Shuffled shuffled = Shuffle(original.ToPolygons(false), 1);
        LevelGeometry geometry(shuffled.mesh);
        geometry.History().Push(UnsubdivideAsStep(geometry));
        ASSERT_EQ(geometry.LevelCount(), 2u);
        EXPECT_EQ(geometry.BoundIndex(), 1u);
        const LevelMesh& base = *geometry.Level(0);
        const LevelMesh& oldBase = *original.Level(0);
        ASSERT_EQ(base.faceCount, oldBase.faceCount);
        ASSERT_EQ(base.VertexCount(), oldBase.VertexCount());
        EXPECT_EQ(base.CornersPerFace(), oldBase.CornersPerFace());
        // The fine faces have bit-identical positions and the same connectivity.
        EXPECT_EQ(FacesInSpace(geometry.ToPolygons(false)), FacesInSpace(shuffled.mesh));
        // On a torus, the connectivity of the refinement does not distinguish original vertices
        // from face points.
        if (IsTorusLike(zoo)) continue;
        for (uint32_t v = 0; v < base.VertexCount(); ++v) {
            const Vector fine = geometry.Level(1)->Position(v);
            float nearest = 1e9f;
            for (uint32_t w = 0; w < oldBase.VertexCount(); ++w) {
                if (!SameBits(original.Level(1)->Position(w), fine)) continue;
                nearest = std::min(nearest, (oldBase.Position(w) - base.Position(v)).Length());
            }
            EXPECT_LT(nearest, 2e-5f) << v;
        }
    }
}

TEST(Unsubdivide, KeepsTheNumberingOfARefinement) {
    for (const ZooMesh& zoo : QuadMeshes()) {
        SCOPED_TRACE(zoo.name);
        LevelGeometry original(zoo.mesh);
        original.Subdivide();
        original.Subdivide();
        const PolygonMesh fine = original.ToPolygons(false);
        LevelGeometry geometry(fine);
        for (uint32_t level = 0; level < 2; ++level) {
            geometry.History().Push(UnsubdivideAsStep(geometry));
            EXPECT_EQ(geometry.ToPolygons(false).faceVertices, fine.faceVertices);
            EXPECT_EQ(geometry.ToPolygons(false).positions, fine.positions);
        }
        const LevelMesh& base = *geometry.Level(0);
        ASSERT_EQ(base.faceCount, original.Level(0)->faceCount);
        for (uint32_t v = 0; v < base.VertexCount(); ++v)
            EXPECT_LT((base.Position(v) - original.Level(0)->Position(v)).Length(), 1e-4f) << v;
    }
}

TEST(Unsubdivide, CoarseEditsMoveTheFineLevelAfterwards) {
    LevelGeometry original(SteppedBox());
    original.Subdivide();
    LevelGeometry geometry(Shuffle(original.ToPolygons(false), 2).mesh);
    Roughen(*geometry.Bound(), 0.02f, 3);
    geometry.History().Push(UnsubdivideAsStep(geometry));
    const std::vector<Vector> before = PositionsOf(*geometry.Bound());
    geometry.BindLevel(0);
    geometry.BindLevel(1);
    for (uint32_t v = 0; v < before.size(); ++v)
        EXPECT_TRUE(SameBits(geometry.Bound()->Position(v), before[v])) << v;
    geometry.BindLevel(0);
    Deform(*geometry.Bound(), [](const Vector& p) { return Vector(-p.y, p.x, p.z); });
    geometry.BindLevel(1);
    for (uint32_t v = 0; v < before.size(); ++v) {
        const Vector expected(-before[v].y, before[v].x, before[v].z);
        EXPECT_LT((geometry.Bound()->Position(v) - expected).Length(), 1e-5f) << v;
    }
}

TEST(Unsubdivide, ReportsWhyAMeshIsNotARefinement) {
    for (const PolygonMesh& mesh : {Cube(), GridMesh(3, 4), SingleQuad(), SteppedBox()}) {
        LevelGeometry geometry(mesh);
        const std::string before = StateOfAll(geometry);
        try {
            UnsubdivideAsStep(geometry);
            ADD_FAILURE() << mesh.name;
        } catch (const HostError& error) {
            EXPECT_STREQ(error.what(),
                         "the faces of level 0 are not connected like the refinement of a coarser "
                         "mesh of quads or of triangles");
        }
        EXPECT_TRUE(StateOfAll(geometry) == before);
    }
    LevelGeometry triangles(Icosahedron());
    EXPECT_THROW(UnsubdivideAsStep(triangles), HostError);
}

TEST(Unsubdivide, KeepsMaskFlagsAndLayersAndUndoRestoresTheNumbering) {
    for (const ZooMesh& zoo : AllMeshes()) {
        SCOPED_TRACE(zoo.name);
        LevelGeometry original(zoo.mesh);
        original.Subdivide();
        LevelGeometry geometry(Shuffle(original.ToPolygons(false), 4).mesh);
        geometry.Subdivide();
        geometry.BindLevel(0);
        LevelMesh& oldBase = *geometry.Level(0);
        LevelMesh& top = *geometry.Level(1);
        geometry.Layers().Insert(std::make_shared<SculptLayer>(&oldBase, "layer"));
        SculptLayer& layer = *geometry.Layers().All().front();
        layer.SlotOf(oldBase.VertexCount() - 1);
        const uint32_t slot = layer.SlotOf(0);
        const Vector offset(0, 0, 0.25f);
        layer.set(nullptr, slot, 0, &offset, true);
        oldBase.SetFreeze(0, 99);
        top.SetFreeze(1, 55);
        oldBase.faceFlags[0] = 0;
        const Vector place = oldBase.Position(0);
        const Vector topPlace = top.Position(1);
        const std::string before = StateOfAll(geometry);
        geometry.History().Push(UnsubdivideAsStep(geometry));
        const std::string after = StateOfAll(geometry);

        EXPECT_EQ(geometry.LevelCount(), 3u);
        EXPECT_EQ(geometry.Level(1), &oldBase);
        const uint32_t moved = layer.VertexOfSlot(slot);
        EXPECT_EQ(oldBase.Freeze(moved), 99);
        EXPECT_TRUE(SameBits(oldBase.Position(moved), place));
        EXPECT_EQ(layer.FindSlot(moved), slot);
        EXPECT_EQ(layer.Offset(moved), offset);
        EXPECT_EQ(std::count(oldBase.faceFlags, oldBase.faceFlags + oldBase.faceCount, 0), 1);
        for (uint32_t v = 0; v < top.VertexCount(); ++v)
            EXPECT_EQ(top.Freeze(v) == 55, SameBits(top.Position(v), topPlace)) << v;

        for (int i = 0; i < 2; ++i) {
            ASSERT_TRUE(geometry.History().Undo(geometry));
            EXPECT_TRUE(StateOfAll(geometry) == before);
            EXPECT_EQ(layer.VertexOfSlot(slot), 0u);
            ASSERT_TRUE(geometry.History().Redo(geometry));
            EXPECT_TRUE(StateOfAll(geometry) == after);
            EXPECT_EQ(layer.VertexOfSlot(slot), moved);
        }
    }
}

}  // namespace
}  // namespace trovik::test
