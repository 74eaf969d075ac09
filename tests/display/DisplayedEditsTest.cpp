// SPDX-License-Identifier: Apache-2.0

/// \file Tests that a copy of the surface in which only the changed patches are repacked after each
/// random edit stays byte-identical to a copy that is repacked completely.
/// TROVIK_RANDOM_EDITS sets the number of edits.
#include "framework/display/DirtyPatches.h"
#include "tests/display/PackedLevel.h"
#include "tests/edits/RandomEdits.h"

#include <gtest/gtest.h>

#include <set>

namespace trovik::test {
namespace {

/// The visible data of a level.
struct SeenState {
    explicit SeenState(const LevelMesh& level)
        : vertices(level.vertices.array, level.vertices.array + level.VertexCount()),
          normals(level.vertexNormals.array, level.vertexNormals.array + level.VertexCount()),
          faceFlags(level.faceFlags, level.faceFlags + level.faceCount) {}

    uint8_t VertexChanges(const SeenState& before, uint32_t v) const {
        uint8_t what = 0;
        if (std::memcmp(&vertices[v], &before.vertices[v], 12) != 0)
            what |= SurfaceChange::Positions;
        if (std::memcmp(&normals[v], &before.normals[v], 6) != 0) what |= SurfaceChange::Normals;
        if (((vertices[v].freeze ^ before.vertices[v].freeze) & freezeAmountMask) != 0)
            what |= SurfaceChange::Mask;
        return what;
    }

    std::vector<Vertex> vertices;
    std::vector<PackedNormal> normals;
    std::vector<uint8_t> faceFlags;
};

/// A copy of the vertices of a geometry's bound level, in the form in which they are uploaded to a
/// GPU. The copy is updated from change reports.
class Display {
public:
    explicit Display(LevelGeometry& shown) : geometry(shown) { Reset(); }

    /// Finds the changes, reports them by faces of random levels, and packs the dirty patches.
    /// \return the number of patches packed.
    uint64_t Update(RandomNumbers& random) {
        LevelMesh& level = *geometry.Bound();
        if (geometry.BoundIndex() != layout->Level() ||
            level.faceVertexIndices.array != faceTable) {
            const SurfaceChange change = {
                geometry.BoundIndex(), SurfaceChange::Topology, 0, {}, true};
            dirty->Add(change);
            EXPECT_TRUE(dirty->LayoutChanged());
            Reset();
            return 0;
        }
        // One change of each kind, each with a random patch level.
        const SeenState after(level);
        for (const uint8_t what : {SurfaceChange::Positions,
                                   SurfaceChange::Normals,
                                   SurfaceChange::Mask,
                                   SurfaceChange::Visibility})
            Report(after, what, random.Below(geometry.BoundIndex() + 1));
        PatchPacker packer(level, *layout);
        const std::vector<uint32_t> patches(dirty->Patches().begin(), dirty->Patches().end());
        std::vector<DisplayVertex> staged(layout->VertexCount(patches));
        packer.Pack(patches, staged);
        uint64_t at = 0;
        for (const uint32_t patch : patches) {
            std::copy_n(staged.begin() + static_cast<std::ptrdiff_t>(at),
                        layout->VertexCount(patch),
                        uploaded.begin() + static_cast<std::ptrdiff_t>(layout->FirstVertex(patch)));
            at += layout->VertexCount(patch);
        }
        EXPECT_EQ(packer.Packed().patches, patches.size());
        dirty->Remove(patches);
        EXPECT_TRUE(dirty->IsEmpty());
        seen = std::make_unique<SeenState>(after);
        return patches.size();
    }

    bool EqualsFullPacking() const {
        return SameVertices(uploaded, PackLevel(*geometry.Bound(), *layout));
    }

private:
    void Reset() {
        const LevelMesh& level = *geometry.Bound();
        layout = std::make_unique<PatchLayout>(level);
        dirty = std::make_unique<DirtyPatches>(*layout);
        uploaded = PackLevel(level, *layout);
        seen = std::make_unique<SeenState>(level);
        faceTable = level.faceVertexIndices.array;
    }

    void Report(const SeenState& after, uint8_t what, uint32_t patchLevel) {
        const LevelMesh& level = *geometry.Bound();
        const uint32_t perPatch = level.faceCount / geometry.Level(patchLevel)->faceCount;
        const uint32_t corners = level.CornersPerFace();
        std::set<uint32_t> patches;
        for (uint32_t face = 0; face < level.faceCount; ++face) {
            bool changed =
                what == SurfaceChange::Visibility && after.faceFlags[face] != seen->faceFlags[face];
            for (uint32_t k = 0; k < corners; ++k)
                changed |=
                    (after.VertexChanges(*seen, level.faceVertexIndices.array[face * corners + k]) &
                     what) != 0;
            if (changed) patches.insert(face / perPatch);
        }
        const std::vector<uint32_t> list(patches.begin(), patches.end());
        dirty->Add({geometry.BoundIndex(), what, patchLevel, list, false});
    }

    LevelGeometry& geometry;
    std::unique_ptr<PatchLayout> layout;
    std::unique_ptr<DirtyPatches> dirty;
    std::vector<DisplayVertex> uploaded;
    std::unique_ptr<SeenState> seen;
    /// Identifies the face table. The pointer changes if the level is replaced by another one with
    /// the same number, or if faces are renumbered.
    const uint32_t* faceTable = nullptr;
};

TEST(DisplayedEdits, PackingDirtyPatchesEqualsPackingEverything) {
    HostSwitches switches;
    constexpr uint32_t editsPerMesh = 25;
    const uint32_t wanted = CountFromEnvironment("TROVIK_RANDOM_EDITS", 500);
    uint64_t packed = 0;
    uint32_t updates = 0;
    for (uint32_t edit = 0; edit < wanted; edit += editsPerMesh) {
        RandomNumbers random(41790 + edit);
        switches.Draw(random);
        RandomEdits edits(random);
        LevelGeometry& geometry = edits.Geometry();
        Display display(geometry);
        for (uint32_t i = 0; i < editsPerMesh; ++i) {
            SCOPED_TRACE("edit " + std::to_string(edit + i) + ": " + edits.CaseDescription());
            if (random.Chance(0.2f))
                geometry.History().Undo(geometry);
            else if (random.Chance(0.1f))
                geometry.History().Redo(geometry);
            else
                edits.Edit();
            const uint64_t patches = display.Update(random);
            packed += patches;
            updates += patches > 0 ? 1 : 0;
            ASSERT_TRUE(display.EqualsFullPacking());
        }
    }
    // The test is meaningless if the edits change nothing visible.
    EXPECT_GT(updates, wanted / 4);
    EXPECT_GT(packed, updates);
}

/// The faces that a walk visited, and the faces that have a vertex in common with one of them. A
/// dab writes the normals on the borders of all visited patches, including patches out of reach,
/// and the vertices there also belong to the patches across the border.
std::vector<uint32_t> PatchesWritten(const LevelMesh& patches) {
    std::vector<bool> isWritten(patches.VertexCount());
    const uint32_t corners = patches.CornersPerFace();
    for (const FaceVisit& visit : patches.LastFaceWalk())
        for (uint32_t k = 0; k < corners; ++k)
            isWritten[patches.faceVertexIndices.array[visit.face * corners + k]] = true;
    std::vector<uint32_t> written;
    for (uint32_t slot = 0; slot < patches.faceCount * corners; ++slot)
        if (isWritten[patches.faceVertexIndices.array[slot]] &&
            (written.empty() || written.back() != slot / corners))
            written.push_back(slot / corners);
    return written;
}

/// A torus of 196608 quads in 192 patches.
TEST(DisplayedEdits, DabPacksExactlyThePatchesItWrites) {
    StrokeFixture bench(Torus(4, 3), 7);
    LevelMesh& level = bench.Mesh();
    const PatchLayout layout(level);
    ASSERT_EQ(layout.PatchLevel(), 2u);
    ASSERT_EQ(layout.PatchCount(), 192u);
    std::vector<DisplayVertex> uploaded = PackLevel(level, layout);
    DirtyPatches dirty(layout);
    PatchPacker packer(level, layout);
    RandomNumbers random(3);
    for (const Tool tool : {Tool::Sculpt, Tool::Smooth, Tool::Flatten, Tool::Pinch}) {
        bench.Activate(tool, 2);
        bench.Begin();
        for (int dab = 0; dab < 6; ++dab) {
            SCOPED_TRACE("dab " + std::to_string(dab));
            bench.Dab(bench.HitFace(random.Below(level.faceCount)),
                      random.OneOf({0.02f, 0.1f, 0.3f}),
                      20.0f);
            const uint32_t patchLevel = bench.brush->patchMeshLevel;
            const std::vector<uint32_t> written =
                PatchesWritten(*bench.geometry->Level(patchLevel));
            ASSERT_FALSE(written.empty());
            std::set<uint32_t> expected;
            for (const uint32_t face : written)
                layout.VisitPatchesUnder(
                    patchLevel, face, [&](uint32_t patch) { expected.insert(patch); });
            dirty.Add({layout.Level(),
                       SurfaceChange::Positions | SurfaceChange::Normals,
                       patchLevel,
                       written,
                       false});

            const PatchPacker::Counters before = packer.Packed();
            for (const uint32_t patch : dirty.Patches())
                packer.Pack({&patch, 1},
                            std::span(uploaded).subspan(layout.FirstVertex(patch), 33 * 33));
            EXPECT_EQ(packer.Packed().patches - before.patches, expected.size());
            EXPECT_EQ(packer.Packed().vertices - before.vertices, expected.size() * 33 * 33);
            EXPECT_LT(expected.size(), 40u) << "a dab packs only its surroundings";
            dirty.Clear();
            ASSERT_TRUE(SameVertices(uploaded, PackLevel(level, layout)));
        }
        bench.End();
    }
}

}  // namespace
}  // namespace trovik::test
