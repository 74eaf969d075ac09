// SPDX-License-Identifier: Apache-2.0

/// \file Tests that culling patches out of reach has the same effects as visiting them. Two
/// identical fixtures make the same random strokes, but one of them visits every patch in full.
/// After each dab, all data that a dab may write is bit-identical in both.
#include "brush/Registration.h"
#include "framework/multires/LevelChange.h"
#include "tests/brush/ToolRows.h"
#include "tests/brush/ToolStrength.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/random/RandomNumbers.h"
#include "tests/random/RandomStroke.h"
#include "tests/stamps/StampFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace trovik::test {
namespace {

template <typename T>
bool SameBytes(const T* a, const T* b, std::size_t count) {
    return std::memcmp(a, b, count * sizeof(T)) == 0;
}

/// Two fixtures, and operations that are applied to both.
class Twins {
public:
    Twins(const PolygonMesh& polygons, unsigned levels)
        : passing(polygons, levels), visiting(polygons, levels) {
        visiting.brush->usesPatchCache = false;
    }

    template <typename Action>
    void Both(Action action) {
        action(passing);
        action(visiting);
    }

    /// \param away  offset of the dab from the face where its traversal starts.
    void Dab(
        uint32_t face, float radius, float strength, bool mirror = false, const Vector& away = {}) {
        Both([&](StrokeFixture& bench) {
            SurfacePoint hit = bench.HitFace(face);
            hit.position += away;
            hit.mirror = mirror;
            bench.brush->SetPreviousPatchPosition(hit.position + Vector(0.1f, 0.05f, 0.02f));
            boxes[&bench == &visiting] = bench.Dab(hit, radius, strength, 0.7f);
        });
    }

    void ExpectAlike() {
        LevelMesh& a = passing.Mesh();
        LevelMesh& b = visiting.Mesh();
        ASSERT_EQ(a.visitStamp, b.visitStamp);
        ASSERT_TRUE(SameBytes(a.vertices.array, b.vertices.array, a.VertexCount()));
        ASSERT_TRUE(SameBytes(a.vertexNormals.array, b.vertexNormals.array, a.VertexCount()));
        ASSERT_EQ(a.changeRecordCount, b.changeRecordCount);
        if (a.changeRecordCount != 0) {
            ASSERT_TRUE(SameBytes(a.changeRecords, b.changeRecords, a.changeRecordCount));
        }
        ASSERT_TRUE(SameBytes(&boxes[0], &boxes[1], 1));
        ASSERT_TRUE(SameBytes(passing.brush->directions, visiting.brush->directions, 2));
        ASSERT_TRUE(SameBytes(passing.brush->planePoints, visiting.brush->planePoints, 2));
        const auto& walkA = passing.geometry->Level(passing.brush->patchMeshLevel)->LastFaceWalk();
        const auto& walkB =
            visiting.geometry->Level(visiting.brush->patchMeshLevel)->LastFaceWalk();
        ASSERT_EQ(walkA.size(), walkB.size());
        for (std::size_t i = 0; i < walkA.size(); ++i) ASSERT_EQ(walkA[i].face, walkB[i].face);
    }

    StrokeFixture passing;
    StrokeFixture visiting;

private:
    AxisAlignedBoundingBox boxes[2];
};

/// Half the diagonal of the mesh's box.
float ExtentOf(const LevelMesh& mesh) {
    AxisAlignedBoundingBox box;
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) box.Extend(mesh.Position(v));
    return (Vector(box.maxX, box.maxY, box.maxZ) - Vector(box.minX, box.minY, box.minZ)).Length() *
           0.5f;
}

/// The diagonal of the face with the middle index.
float DiagonalOf(const LevelMesh& mesh) {
    const uint32_t* corners = mesh.faceVertexIndices.array + (mesh.faceCount / 2) * 4;
    return (mesh.Position(corners[2]) - mesh.Position(corners[0])).Length();
}

float ChooseStrength(RandomNumbers& random, Tool tool, float extent) {
    if (HasStrengthInPercent(tool)) return random.Between(1.0f, 100.0f);
    return random.Between(0.01f, 0.1f) * extent;
}

/// Chooses the settings at the start of a stroke.
void ChooseSettings(Twins& twins, RandomNumbers& random, Tool tool) {
    const auto falloff = static_cast<int>(random.Below(9));
    const auto direction = static_cast<int>(random.Below(13));
    const bool allLayers = random.Chance(0.6f);
    const bool byAngle = random.Chance(0.2f);
    // The plane is sampled over the area, which also reads the cache, or along a cross.
    const bool alongCross = random.Chance(0.2f);
    for (const Preferences::Bool* sampling :
         {&useOriginalDataForFlatten, &useVertexWeightsForFlatten})
        sampling->attribute->SetValue(random.Chance(0.5f), true);
    const bool stamp = random.Chance(0.25f);
    std::vector<float> pixels(64);
    for (float& pixel : pixels) pixel = random.Between(0.0f, 1.0f);
    const bool tiled = random.Chance(0.5f);
    // A brush identifies a stamp by its name and by the address and version of its image, and a new
    // image may reuse the memory of another.
    const QString stampName = QStringLiteral("stamp %1").arg(random.Below(1u << 30));
    twins.Both([&](StrokeFixture& bench) {
        SwiftStroke& brush = *bench.brush;
        bench.Activate(tool, falloff);
        brush.directionAttribute.SetValue(direction, true);
        brush.affectAllLayers.SetValue(allLayers, true);
        brush.setUsePatchNormal(alongCross);
        brush.SetFalloffBasedOnFacingAngle(byAngle, 30.0f, 40.0f);
        brush.SetStamp(false, QString());
        if (!stamp) return;
        SetTestStamp(brush, stampName, 8, 8, pixels);
        brush.Settings().stampTiled = tiled;
    });
}

/// Makes one stroke along adjacent faces, with other operations in between.
void MakeRandomStroke(Twins& twins, RandomNumbers& random, float extent) {
    const Tool tool = allTools[random.Below(allTools.size())];
    ChooseSettings(twins, random, tool);
    const auto modifier = random.OneOf({BrushOperation::ModifierNone,
                                        BrushOperation::ModifierNone,
                                        BrushOperation::ModifierSmooth,
                                        BrushOperation::ModifierInvert});
    twins.Both([&](StrokeFixture& bench) { bench.Begin(modifier); });
    LevelMesh& mesh = twins.passing.Mesh();
    const float diagonal = DiagonalOf(mesh);
    float radius = diagonal * random.Between(17.0f, 40.0f);
    uint32_t face = random.Below(mesh.faceCount);
    const bool mirrored = random.Chance(0.2f);
    for (uint32_t dabs = 3 + random.Below(4); dabs > 0; --dabs) {
        const float strength = ChooseStrength(random, tool, extent);
        twins.Dab(face, radius, strength);
        twins.ExpectAlike();
        if (testing::Test::HasFatalFailure()) return;
        if (mirrored) {
            twins.Dab((face + mesh.faceCount / 2) % mesh.faceCount, radius, strength, true);
            twins.ExpectAlike();
            if (testing::Test::HasFatalFailure()) return;
        }
        if (random.Chance(0.15f)) {
            const Tool next =
                random.Chance(0.5f) ? Tool::Smooth : allTools[random.Below(allTools.size())];
            const bool allLayers = random.Chance(0.3f);
            twins.Both([&](StrokeFixture& bench) {
                bench.Activate(next, 2);
                bench.brush->affectAllLayers.SetValue(allLayers, true);
            });
        }
        if (random.Chance(0.6f)) face = (face + random.Below(64)) % mesh.faceCount;
        if (random.Chance(0.1f)) radius = diagonal * random.Between(17.0f, 40.0f);
        if (random.Chance(0.1f))
            twins.Both([](StrokeFixture& bench) { bench.Mesh().OpenChange()->RevertStroke(); });
        if (random.Chance(0.05f))
            twins.Both([&](StrokeFixture& bench) {
                bench.brush->ApplyToWholeMesh(&bench.Mesh(), 0.001f * extent, false);
            });
        if (random.Chance(0.05f)) {
            const uint32_t vertex = random.Below(mesh.VertexCount());
            const bool withNormals = random.Chance(0.5f);
            twins.Both([&](StrokeFixture& bench) {
                bench.Mesh().SetPosition(vertex, bench.Mesh().Position(vertex) * 1.01f);
                if (withNormals) bench.Mesh().ComputeNormals();
            });
        }
    }
    twins.Both([](StrokeFixture& bench) { bench.End(); });
    twins.ExpectAlike();
}

/// Surfaces of several thousand faces. Their bases have irregular vertices, borders and faces with
/// rotated corners. Some surfaces have dents that fold patches over, some have a layer or masked
/// vertices, and some are stretched.
class RandomTwins {
public:
    RandomTwins(const ZooMesh& zoo, RandomNumbers& random)
        : twins(zoo.mesh, zoo.mesh.faceSizes.size() > 30 ? 4 : 5) {
        LevelMesh& mesh = twins.passing.Mesh();
        extent = ExtentOf(mesh);
        const bool rough = random.Chance(0.5f);
        const bool frozen = random.Chance(0.3f);
        const bool hasLayer = random.Chance(0.4f);
        const Vector scale = random.Chance(0.2f) ? Vector(1.0f, 1.0f, 1.5f) : Vector(1, 1, 1);
        for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
            const Vector shift = random.In(-0.003f, 0.003f) * extent;
            const auto amount = static_cast<uint8_t>(random.Below(128));
            twins.Both([&](StrokeFixture& bench) {
                if (rough) bench.Mesh().SetPosition(v, bench.Mesh().Position(v) + shift);
                if (frozen && v % 3 == 0) bench.Mesh().SetFreeze(v, amount);
            });
        }
        twins.Both([&](StrokeFixture& bench) {
            bench.Mesh().ComputeNormals();
            bench.geometry->Transform().Set(scale, {}, {});
            if (hasLayer) bench.AddLayer();
        });
    }
    Twins twins;
    float extent = 0.0f;
};

TEST(CulledPatches, GiveTheSameBitsAsPatchesVisitedInFull) {
    const HostSwitches restored;
    uint64_t passed = 0;
    uint32_t seed = 0;
    for (const ZooMesh& zoo : QuadMeshes()) {
        for (int round = 0; round < 5; ++round) {
            RandomNumbers random(4711 + seed++);
            SCOPED_TRACE(zoo.name + ", seed " + std::to_string(4710 + seed));
            RandomTwins drawn(zoo, random);
            for (int stroke = 0; stroke < 3; ++stroke) {
                MakeRandomStroke(drawn.twins, random, drawn.extent);
                if (HasFatalFailure()) return;
            }
            passed += drawn.twins.passing.brush->patchCache.CulledPatches();
            ASSERT_EQ(drawn.twins.visiting.brush->patchCache.CulledPatches(), 0u);
        }
    }
    // Otherwise, the comparison above proves nothing.
    EXPECT_GT(passed, 1000u);
}

/// Six patches meet at an irregular vertex, the tip, which is nearer to the brush than all other
/// vertices. A dab that starts in one of these patches moves the tip and visits the two adjacent
/// patches. The other three are not visited; the normals next to the tip on their sides are updated
/// the next time they are visited.
TEST(CulledPatches, UpdateTheNormalsNextToACornerMovedByOtherPatches) {
    PolygonMesh hexagon;
    for (int i = 0; i < 6; ++i) {
        const float angle = 1.0471976f * static_cast<float>(i);
        hexagon.positions.push_back({std::cos(angle), std::sin(angle), 0.0f});
        hexagon.faceVertices.push_back(static_cast<uint32_t>(i));
    }
    hexagon.faceSizes.push_back(6);
    Twins twins(hexagon, 6);
    LevelMesh& mesh = twins.passing.Mesh();

    uint32_t pole = 0;
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v)
        if (mesh.Position(v).Length() < mesh.Position(pole).Length()) pole = v;
    // The faces at the tip that are farthest to the right and to the left; then other faces of the
    // same patches that do not contain the tip.
    uint32_t right = mesh.LowestFaceOf(pole);
    uint32_t left = right;
    for (uint32_t face = 0; face < mesh.faceCount; ++face) {
        const uint32_t* corners = mesh.faceVertexIndices.array + face * 4;
        if (std::find(corners, corners + 4, pole) == corners + 4) continue;
        const float x = twins.passing.HitFace(face).position.x;
        if (x > twins.passing.HitFace(right).position.x) right = face;
        if (x < twins.passing.HitFace(left).position.x) left = face;
    }
    right ^= 32u;
    left ^= 32u;

    const float radius = 0.4f;
    const Vector tip(0.0f, 0.0f, 0.2f);
    twins.Both([&](StrokeFixture& bench) {
        bench.Mesh().SetPosition(pole, tip);
        bench.Mesh().ComputeNormals();
        bench.Activate(Tool::Sculpt, 2);
        bench.Begin();
    });
    twins.Dab(left, radius, 0.001f);
    ASSERT_EQ(twins.passing.brush->facesPerPatch, 64u);
    const float heightBefore = mesh.Position(pole).z;
    const Vector overTip = tip + Vector(0.0f, 0.0f, 0.95f * radius);
    twins.Dab(right, radius, 0.1f, false, overTip - twins.passing.HitFace(right).position);
    twins.ExpectAlike();
    EXPECT_NE(mesh.Position(pole).z, heightBefore);

    EXPECT_EQ(
        twins.passing.geometry->Level(twins.passing.brush->patchMeshLevel)->LastFaceWalk().size(),
        5u);

    const uint64_t passed = twins.passing.brush->patchCache.CulledPatches();
    twins.Dab(left, radius, 0.001f, false, {0.0f, 0.0f, 10.0f});
    twins.ExpectAlike();
    EXPECT_EQ(twins.passing.brush->patchCache.CulledPatches(), passed + 1);
    twins.Both([](StrokeFixture& bench) { bench.End(); });
}

/// After a switch to Smooth on a layer, visiting a patch also creates records around it, which
/// earlier visits did not.
TEST(CulledPatches, HaveTheRecordsOfSmoothOnALayer) {
    Twins twins(FlatGrid(8), 5);
    twins.Both([](StrokeFixture& bench) {
        bench.AddLayer();
        bench.Activate(Tool::Sculpt, 2);
        bench.Begin();
    });
    const uint32_t face = twins.passing.HitVertex(4 * 9 + 4).face;
    for (int dab = 0; dab < 3; ++dab) twins.Dab(face, 1.0f, 0.01f);
    twins.ExpectAlike();
    const uint32_t recordsBefore = twins.visiting.Mesh().changeRecordCount;
    twins.Both([](StrokeFixture& bench) {
        bench.Activate(Tool::Smooth, 2);
        bench.brush->affectAllLayers.SetValue(false, true);
    });
    twins.Dab(face, 1.0f, 50.0f);
    twins.ExpectAlike();
    EXPECT_GT(twins.visiting.Mesh().changeRecordCount, recordsBefore);
    // From then on, patches are culled again.
    const uint64_t passed = twins.passing.brush->patchCache.CulledPatches();
    twins.Dab(face, 1.0f, 50.0f);
    twins.ExpectAlike();
    EXPECT_GT(twins.passing.brush->patchCache.CulledPatches(), passed);
    twins.Both([](StrokeFixture& bench) { bench.End(); });
    twins.ExpectAlike();
}

/// The host edits the storage between dabs without counting its edits.
TEST(CulledPatches, OfAHostThatDoesNotCountEditsAreVisitedInFull) {
    for (const bool declared : {false, true}) {
        Twins twins(FlatGrid(8), 5);
        twins.Both([&](StrokeFixture& bench) {
            bench.Activate(Tool::Sculpt, 2);
            bench.Begin();
            bench.brush->CurrentChange()->countsOutsideEdits = declared;
        });
        LevelMesh& mesh = twins.passing.Mesh();
        const uint32_t face = twins.passing.HitVertex(4 * 9 + 4).face;
        const Vector middle = twins.passing.HitFace(face).position;
        for (int dab = 0; dab < 3; ++dab) twins.Dab(face, 1.0f, 0.001f);
        // Adds waves outside the brush's reach, in patches that its dabs visit.
        twins.Both([&](StrokeFixture& bench) {
            for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
                Vertex& vertex = bench.Mesh().vertices.array[v];
                if ((bench.Mesh().Position(v) - middle).Length() > 1.01f)
                    vertex.z = 0.01f * std::sin(vertex.x * 40.0f);
            }
        });
        const uint64_t passed = twins.passing.brush->patchCache.CulledPatches();
        twins.Dab(face, 1.0f, 0.001f);
        uint32_t stale = 0;
        for (uint32_t v = 0; v < mesh.VertexCount(); ++v)
            if (!SameBytes(
                    mesh.vertexNormals.array + v, twins.visiting.Mesh().vertexNormals.array + v, 1))
                ++stale;
        if (declared) {
            // The host declared that it counts its edits but did not count them. The stale normals
            // show that the count is necessary.
            EXPECT_GT(stale, 0u);
        } else {
            EXPECT_EQ(passed, 0u);
            EXPECT_EQ(twins.passing.brush->patchCache.CulledPatches(), 0u);
            EXPECT_EQ(stale, 0u);
            twins.ExpectAlike();
        }
        twins.Both([](StrokeFixture& bench) { bench.End(); });
    }
}

/// A fixture with a flat grid, and a repeated dab at its centre.
class CulledPatchesOfAGrid : public testing::Test {
protected:
    CulledPatchesOfAGrid() : bench(FlatGrid(8), 5) { bench.Activate(Tool::Sculpt, 2); }
    uint64_t PassedBy(float radius = 1.0f) {
        const uint64_t before = bench.brush->patchCache.CulledPatches();
        bench.Dab(bench.HitVertex(middle), radius, 0.001f);
        return bench.brush->patchCache.CulledPatches() - before;
    }
    StrokeFixture bench;
    const uint32_t middle = 4 * 9 + 4;
};

TEST_F(CulledPatchesOfAGrid, AreCulledFromTheSecondDabOn) {
    bench.Begin();
    EXPECT_EQ(PassedBy(), 0u);
    const uint64_t again = PassedBy();
    EXPECT_GT(again, 0u);
    EXPECT_EQ(PassedBy(), again);
    bench.End();
    bench.Begin();
    EXPECT_EQ(PassedBy(), 0u);
    bench.End();
}

TEST_F(CulledPatchesOfAGrid, AreInvalidatedWhenTheirDepthChanges) {
    bench.Begin();
    PassedBy(1.0f);
    EXPECT_EQ(PassedBy(2.0f), 0u);
    EXPECT_EQ(PassedBy(1.0f), 0u);
    EXPECT_GT(PassedBy(1.0f), 0u);
    bench.End();
}

TEST_F(CulledPatchesOfAGrid, AreInvalidatedByAnotherWalkWithTheStamp) {
    bench.Begin();
    PassedBy();
    ++bench.Mesh().visitStamp;
    EXPECT_EQ(PassedBy(), 0u);
    EXPECT_GT(PassedBy(), 0u);
    bench.End();
}

TEST_F(CulledPatchesOfAGrid, AreInvalidatedWhenTheStrokeIsReverted) {
    bench.Begin();
    PassedBy();
    bench.Mesh().OpenChange()->RevertStroke();
    EXPECT_EQ(PassedBy(), 0u);
    bench.End();
}

TEST_F(CulledPatchesOfAGrid, AreInvalidatedWhenTheHostUpdatesNormals) {
    bench.Begin();
    PassedBy();
    bench.Mesh().ComputeNormalsOf({0});
    EXPECT_EQ(PassedBy(), 0u);
    EXPECT_GT(PassedBy(), 0u);
    bench.Mesh().ComputeNormals();
    EXPECT_EQ(PassedBy(), 0u);
    bench.End();
}

TEST_F(CulledPatchesOfAGrid, AreInvalidatedWhenTheHostMovesAVertex) {
    bench.Begin();
    PassedBy();
    bench.Mesh().SetPosition(0, bench.Mesh().Position(0));
    EXPECT_EQ(PassedBy(), 0u);
    EXPECT_GT(PassedBy(), 0u);
    bench.End();
    // Outside a stroke, edits are not counted.
    bench.Mesh().SetPosition(0, bench.Mesh().Position(0));
}

TEST_F(CulledPatchesOfAGrid, WithANaNVertexAreAlwaysVisited) {
    bench.Begin();
    PassedBy();
    const uint64_t usual = PassedBy();
    bench.End();
    for (uint32_t v = 0; v < bench.Mesh().VertexCount(); ++v) {
        const Vector p = bench.Mesh().Position(v);
        if ((p - bench.Mesh().Position(middle)).Length() > 1.01f)
            bench.Mesh().SetPosition(v, {p.x, std::nanf(""), p.z});
    }
    bench.Begin();
    PassedBy();
    EXPECT_GT(usual, 0u);
    EXPECT_EQ(PassedBy(), 0u);
    bench.End();
}

TEST_F(CulledPatchesOfAGrid, AreVisitedOnceTheLayerRefusesChanges) {
    SculptLayer& layer = bench.AddLayer();
    bench.Begin();
    PassedBy();
    EXPECT_GT(PassedBy(), 0u);
    layer.SetWritable(false);
    EXPECT_EQ(PassedBy(), 0u);
    bench.End();
}

}  // namespace
}  // namespace trovik::test
