// SPDX-License-Identifier: Apache-2.0
#include "framework/display/PatchPacker.h"
#include "framework/math/SameBits.h"
#include "tests/display/PackedLevel.h"
#include "tests/fixture/Triangles.h"
#include "tests/random/RandomNumbers.h"

#include <gtest/gtest.h>

#include <numeric>

namespace trovik::test {
namespace {

/// Sets everything that is packed to random values. Positions and normals get random bits.
void Scramble(LevelMesh& level, uint32_t seed) {
    RandomNumbers random(seed);
    const auto word = [&] { return static_cast<int16_t>(random.Below(65536) - 32768); };
    for (uint32_t v = 0; v < level.VertexCount(); ++v) {
        for (float* c : {&level.vertices.array[v].x, &level.vertices.array[v].y}) {
            const uint32_t bits = random.Below(65536) << 16 | random.Below(65536);
            std::memcpy(c, &bits, sizeof bits);
        }
        level.SetFreeze(v, static_cast<uint8_t>(random.Below(128)));
        // The highest bit of the freeze byte and all other vertex data are not packed.
        if (random.Chance(0.5f)) level.vertices.array[v].freeze |= 0x80;
        level.vertices.array[v].changeLink = random.Below(65536);
        level.vertexNormals.array[v] = {word(), word(), word(), word()};
    }
    const float share = random.OneOf({0.0f, 0.02f, 0.5f, 1.0f});
    for (uint32_t face = 0; face < level.faceCount; ++face)
        level.faceFlags[face] = random.Chance(share) ? 0xff : uint8_t{0xff & ~faceIsHidden};
}

void AssignGroups(LevelGeometry& geometry, uint32_t seed) {
    RandomNumbers random(seed);
    SurfaceAttributes attributes;
    for (int i = 0; i < 200; ++i) attributes.groupNames.push_back("group " + std::to_string(i));
    for (uint32_t face = 0; face < geometry.Level(0)->faceCount; ++face)
        attributes.faceGroups.push_back(random.Chance(0.3f) ? SurfaceAttributes::none
                                                            : random.Below(200));
    geometry.RestoreAttributes(std::move(attributes));
}

uint8_t ExpectedFlags(const LevelMesh& level, uint32_t face) {
    uint8_t flags = level.IsFaceHidden(face) ? 1 : 0;
    const auto& groups = GeometryOf(level).Attributes().faceGroups;
    if (groups.empty()) return flags;
    const uint32_t group = groups[face / (level.faceCount / level.Hierarchy().Level(0)->faceCount)];
    if (group != SurfaceAttributes::none)
        flags = static_cast<uint8_t>(flags + 2 * (1 + group % 127));
    return flags;
}

void ExpectLevel(const LevelMesh& level, const PatchLayout& layout) {
    const std::vector<DisplayVertex> packed = PackLevel(level, layout);
    const std::multimap<Triangle, uint32_t> faces = TrianglesOf(level);
    for (uint32_t patch = 0; patch < layout.PatchCount(); ++patch) {
        const std::vector<uint32_t> vertices = MeshVerticesOf(level, layout, patch);
        const DisplayVertex* first = packed.data() + layout.FirstVertex(patch);
        std::vector<bool> beginsTriangle(vertices.size());
        const auto indices = layout.Triangles(patch);
        for (std::size_t i = 0; i < indices.size(); i += 3) {
            const auto [face, end] = faces.equal_range(Canonical(
                {vertices[indices[i]], vertices[indices[i + 1]], vertices[indices[i + 2]]}));
            ASSERT_EQ(std::distance(face, end), 1) << "each triangle identifies its face";
            ASSERT_EQ(first[indices[i]].flags, ExpectedFlags(level, face->second))
                << "face " << face->second;
            beginsTriangle[indices[i]] = true;
        }
        for (std::size_t i = 0; i < vertices.size(); ++i) {
            const Vertex& v = level.vertices.array[vertices[i]];
            const PackedNormal& n = level.vertexNormals.array[vertices[i]];
            const DisplayVertex& d = first[i];
            ASSERT_TRUE(SameBits(v.x, d.x) && SameBits(v.y, d.y) && SameBits(v.z, d.z));
            ASSERT_EQ(n.x, d.normalX);
            ASSERT_EQ(n.y, d.normalY);
            ASSERT_EQ(n.z, d.normalZ);
            ASSERT_EQ(level.Freeze(vertices[i]), d.freeze);
            if (!beginsTriangle[i]) {
                ASSERT_EQ(d.flags, 0);
            }
        }
    }
}

TEST(PatchPacker, PreservesEveryBitOfEveryVertexAndFace) {
    uint32_t seed = 0;
    ForEachLevel(4, [&](LevelMesh& level, const std::string& name) {
        SCOPED_TRACE(name);
        // Subdivision needs valid positions.
        LevelGeometry& geometry = GeometryOf(level);
        const std::vector<Vertex> before(level.vertices.array,
                                         level.vertices.array + level.VertexCount());
        const PatchLayout layout(level);
        Scramble(level, ++seed);
        if (seed % 2 == 0) AssignGroups(geometry, seed);
        ExpectLevel(level, layout);
        std::copy(before.begin(), before.end(), level.vertices.array);
        level.ComputeNormals();
    });
}

TEST(PatchPacker, PreservesEveryBitInDeepPatches) {
    for (const PolygonMesh& mesh : {Torus(4, 3), FlatTriangles(2)}) {
        LevelGeometry geometry(mesh);
        for (int i = 0; i < 7; ++i) geometry.Subdivide();
        const PatchLayout layout(*geometry.Bound());
        ASSERT_EQ(layout.Depth(), 5u);
        Scramble(*geometry.Bound(), 70);
        AssignGroups(geometry, 70);
        ExpectLevel(*geometry.Bound(), layout);
    }
}

TEST(PatchPacker, BytesDoNotDependOnThreadsOrOnTheOrderOfPatches) {
    for (const bool grids : {false, true}) {
        SCOPED_TRACE(grids);
        LevelGeometry geometry(grids ? Torus(6, 4) : FlatTriangles(170));
        for (int i = 0; grids && i < 6; ++i) geometry.Subdivide();
        LevelMesh& level = *geometry.Bound();
        Scramble(level, 9);
        const PatchLayout layout(level);
        const std::vector<DisplayVertex> expected = PackLevel(level, layout);
        ASSERT_GT(expected.size(), 50000u) << "enough for several tasks";
        std::vector<uint32_t> reversed(layout.PatchCount());
        std::iota(reversed.rbegin(), reversed.rend(), 0u);
        for (const unsigned threads : {1u, 2u, 5u}) {
            PatchPacker packer(level, layout);
            std::vector<DisplayVertex> all(layout.TotalVertexCount());
            EXPECT_EQ(packer.PackAll(all, threads), all.size());
            EXPECT_TRUE(SameVertices(all, expected)) << threads;
            std::vector<DisplayVertex> list(layout.TotalVertexCount());
            EXPECT_EQ(packer.Pack(reversed, list, threads), list.size());
            uint64_t at = 0;
            for (const uint32_t patch : reversed) {
                const auto count = layout.VertexCount(patch);
                ASSERT_EQ(std::memcmp(&list[at],
                                      &expected[layout.FirstVertex(patch)],
                                      count * sizeof(DisplayVertex)),
                          0)
                    << threads << " threads, patch " << patch;
                at += count;
            }
            EXPECT_EQ(packer.Packed().patches, 2u * layout.PatchCount());
            EXPECT_EQ(packer.Packed().vertices, 2u * expected.size());
        }
    }
}

TEST(PatchPacker, WritesNothingPastItsPatches) {
    LevelGeometry geometry(Cube());
    for (int i = 0; i < 4; ++i) geometry.Subdivide();
    const PatchLayout layout(*geometry.Bound());
    PatchPacker packer(*geometry.Bound(), layout);
    const uint32_t patches[] = {5, 0};
    const DisplayVertex untouched = {1, 2, 3, 4, 5, 6, 7, 8};
    std::vector<DisplayVertex> out(2 * 289 + 3, untouched);
    EXPECT_EQ(packer.Pack(patches, out), 2u * 289u);
    for (std::size_t i = 2 * 289; i < out.size(); ++i) EXPECT_EQ(out[i], untouched);
    EXPECT_EQ(packer.Pack({}, out), 0u);
    EXPECT_EQ(packer.Packed().patches, 2u);
}

TEST(DisplayVertex, GroupNumbersWrapAfter127) {
    EXPECT_EQ(DisplayGroup(0), 1);
    EXPECT_EQ(DisplayGroup(126), 127);
    EXPECT_EQ(DisplayGroup(127), 1);
}

}  // namespace
}  // namespace trovik::test
