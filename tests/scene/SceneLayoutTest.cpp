// SPDX-License-Identifier: Apache-2.0

/// \file Checks that the bytes of scene files match docs/scene-format.md.
#include "framework/io/Crc32.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/scene/SampleScene.h"
#include "tests/scene/SceneBytes.h"

#include <gmock/gmock.h>

namespace trovik::test {
namespace {

/// Reads a chunk's content from start to end.
class ChunkReader {
public:
    explicit ChunkReader(const std::string& content) : bytes(content) {}
    template <typename T>
    T Read() {
        at += sizeof(T);
        return NumberAt<T>(bytes, at - sizeof(T));
    }
    std::string Text() {
        const auto length = Read<uint32_t>();
        at += length;
        return bytes.substr(at - length, length);
    }
    void Skip(std::size_t count) { at += count; }
    std::size_t Left() const { return bytes.size() - at; }

private:
    const std::string& bytes;
    std::size_t at = 0;
};

class SceneLayout : public ::testing::Test {
protected:
    SceneLayout() : document(RichDocument(folder)), scene(SplitScene(StateOf(*document, folder))) {}
    TemporaryFolder folder;
    std::unique_ptr<Document> document;
    RawScene scene;
};

/// Checks the brush's data for the tool Wax, value by value.
void ExpectWax(const std::string& data) {
    ChunkReader wax(data);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(wax.Text(), "") << "the node's strings";
    EXPECT_EQ(wax.Read<float>(), 33.0f) << "size";
    EXPECT_EQ(wax.Read<int32_t>(), 1) << "direction";
    EXPECT_EQ(wax.Read<uint8_t>(), 1u) << "stroke smoothing";
    EXPECT_EQ(wax.Read<float>(), 0.1f);
    EXPECT_EQ(wax.Read<uint8_t>(), 0u) << "steady stroke";
    EXPECT_EQ(wax.Read<float>(), 0.04f);
    EXPECT_EQ(wax.Read<float>(), 25.0f) << "stamp spacing";
    EXPECT_EQ(wax.Read<float>(), 0.0f);
    EXPECT_EQ(wax.Read<uint8_t>(), 1u) << "pressure scales the strength";
    EXPECT_EQ(wax.Read<uint8_t>(), 0u);
    EXPECT_EQ(wax.Read<uint8_t>(), 0u);
    EXPECT_EQ(wax.Read<int32_t>(), 0) << "stamp positioning";
    EXPECT_EQ(wax.Read<int32_t>(), 0) << "stamp rotation";
    EXPECT_EQ(wax.Read<uint8_t>(), 0u) << "imprint fade";
    EXPECT_EQ(wax.Read<float>(), 0.6f);
    EXPECT_EQ(wax.Read<float>(), 15.0f) << "strength";
    EXPECT_EQ(wax.Read<float>(), 12.0f) << "the fraction that pressure does not affect";
    EXPECT_EQ(wax.Read<float>(), 0.0f);
    EXPECT_EQ(wax.Read<float>(), 0.0f) << "random rotation";
    EXPECT_EQ(wax.Read<float>(), 1.0f) << "stamp factor";
    EXPECT_EQ(wax.Read<float>(), 0.0f);
    EXPECT_EQ(wax.Text(), "") << "stamp";
    for (const unsigned flag : {1u, 0u, 0u, 0u, 0u, 0u}) EXPECT_EQ(wax.Read<uint8_t>(), flag);
    EXPECT_EQ(wax.Read<int32_t>(), -1) << "falloff";
    ASSERT_EQ(wax.Read<uint32_t>(), 4u);
    for (const float sample : {1.0f, 0.75f, 0.25f, 0.0f}) EXPECT_EQ(wax.Read<float>(), sample);
    EXPECT_EQ(wax.Read<float>(), 0.5f) << "build-up rate";
    wax.Read<uint8_t>();
    for (const unsigned flag : {1u, 0u, 1u}) EXPECT_EQ(wax.Read<uint8_t>(), flag);
    EXPECT_EQ(wax.Left(), 0u);
}

TEST(Crc32, HasItsCheckValueAndCanBeComputedInPieces) {
    const std::string text = "123456789";
    EXPECT_EQ(Crc32(text.data(), text.size()), 0xcbf43926u);
    EXPECT_EQ(Crc32(text.data() + 4, 5, Crc32(text.data(), 4)), 0xcbf43926u);
    EXPECT_EQ(Crc32(nullptr, 0), 0u);
    std::string longer;
    for (int i = 0; i < 1000; ++i) longer += static_cast<char>(i * 7);
    for (std::size_t size = 0; size < 40; ++size)
        EXPECT_EQ(Crc32(longer.data() + size, 900 + size),
                  SlowCrc32(longer.substr(size, 900 + size)));
}

TEST_F(SceneLayout, HeaderHasFormatAndClasses) {
    EXPECT_EQ(scene.format, 334u);
    EXPECT_THAT(scene.classes, testing::Contains(std::pair(std::string("SwiftStroke"), 1)));
    EXPECT_THAT(scene.classes, testing::Contains(std::pair(std::string("PatchMap"), 0)));
}

TEST_F(SceneLayout, ChunksAreInTheirOrder) {
    std::vector<std::string> names;
    for (const RawChunk& chunk : scene.chunks) names.push_back(chunk.name);
    EXPECT_THAT(names,
                testing::ElementsAre("HEAD",
                                     "GEOM",
                                     "LEVL",
                                     "LEVL",
                                     "LEVL",
                                     "IMPT",
                                     "LAYR",
                                     "LGND",
                                     "LAYR",
                                     "LAYR",
                                     "LGND",
                                     "NODE",
                                     "SETT",
                                     "PENS",
                                     "BRSH",
                                     "FRZB",
                                     "TEND"));
    const RawChunk& end = scene.chunks.back();
    EXPECT_EQ(NumberAt<uint64_t>(end.content, 0), end.contentOffset + 8);
}

TEST_F(SceneLayout, GeometryHasNameCountsFacesAndTransform) {
    ChunkReader geom(scene.Chunk("GEOM").content);
    EXPECT_EQ(geom.Text(), "Würfel");
    EXPECT_EQ(geom.Read<uint32_t>(), 4u) << "corners";
    EXPECT_EQ(geom.Read<uint32_t>(), 6u) << "faces";
    EXPECT_EQ(geom.Read<uint32_t>(), 8u) << "vertices";
    EXPECT_EQ(geom.Read<uint32_t>(), 3u) << "levels";
    EXPECT_EQ(geom.Read<uint32_t>(), 1u) << "bound";
    const LevelMesh& base = *document->Geometry().Level(0);
    for (uint32_t i = 0; i < 24; ++i)
        EXPECT_EQ(geom.Read<uint32_t>(), base.faceVertexIndices.array[i]);
    for (const auto& row : document->Geometry().Transform().ToWorld().m)
        for (const float number : row) EXPECT_EQ(geom.Read<float>(), number);
    geom.Skip(64);
    EXPECT_EQ(geom.Read<float>(), 2.0f);
    EXPECT_EQ(geom.Read<float>(), 1.5f);
    EXPECT_EQ(geom.Read<float>(), 1.0f);
    EXPECT_EQ(geom.Left(), 0u);
}

TEST_F(SceneLayout, LevelHasPositionsNormalsMaskAndSeenState) {
    ChunkReader levl(scene.chunks[3].content);
    const LevelMesh& level = *document->Geometry().Level(1);
    EXPECT_EQ(levl.Read<uint32_t>(), 1u);
    ASSERT_EQ(levl.Read<uint32_t>(), 26u);
    EXPECT_EQ(levl.Read<uint32_t>(), 1u | 4u | 16u | 32u | 64u)
        << "freeze bytes, seen positions and freeze amounts";
    for (uint32_t v = 0; v < 26; ++v) {
        EXPECT_EQ(levl.Read<float>(), level.Position(v).x);
        EXPECT_EQ(levl.Read<float>(), level.Position(v).y);
        EXPECT_EQ(levl.Read<float>(), level.Position(v).z);
    }
    for (uint32_t v = 0; v < 26; ++v) {
        EXPECT_EQ(levl.Read<int16_t>(), level.vertexNormals.array[v].x);
        EXPECT_EQ(levl.Read<int16_t>(), level.vertexNormals.array[v].y);
        EXPECT_EQ(levl.Read<int16_t>(), level.vertexNormals.array[v].z);
        EXPECT_EQ(levl.Read<int16_t>(), 0);
    }
    for (uint32_t v = 0; v < 26; ++v) EXPECT_EQ(levl.Read<uint8_t>(), v * 5 % 128);
    const auto seen = levl.Read<uint32_t>();
    EXPECT_GT(seen, 0u);
    levl.Skip(seen * 16);
    // The strokes on the finer level were propagated to this level, but not yet to level 0.
    EXPECT_EQ(levl.Read<uint32_t>(), 26u) << "seen from below";
    EXPECT_EQ(levl.Read<uint32_t>(), 0u);
    EXPECT_EQ(levl.Read<float>(), document->Geometry().Seen(1).fromBelow.positions[0].x);
    levl.Skip(26 * 16 - 8);
    for (int neighbour = 0; neighbour < 2; ++neighbour) {
        // All vertices except 0 have been masked since both neighbouring levels were last updated.
        EXPECT_EQ(levl.Read<uint32_t>(), 25u);
        for (uint32_t v = 1; v < 26; ++v) EXPECT_EQ(levl.Read<uint32_t>(), v);
        for (uint32_t v = 1; v < 26; ++v) EXPECT_EQ(levl.Read<uint8_t>(), 0u);
    }
    for (int i = 0; i < 3; ++i) EXPECT_EQ(levl.Text(), "") << "the node's strings";
    EXPECT_EQ(levl.Read<uint8_t>(), 1u) << "visible";
    EXPECT_EQ(levl.Read<uint8_t>(), 0u) << "locked";
    EXPECT_EQ(levl.Read<uint8_t>(), 0u) << "hidden";
    EXPECT_EQ(levl.Left(), 0u);
}

TEST_F(SceneLayout, LayerHasItsTouchedVertices) {
    const auto chunk = std::find_if(scene.chunks.begin(), scene.chunks.end(), [](const auto& one) {
        return one.name == "LAYR" && NumberAt<uint32_t>(one.content, 0) == 2;
    });
    ASSERT_NE(chunk, scene.chunks.end());
    ChunkReader layr(chunk->content);
    EXPECT_EQ(layr.Read<uint32_t>(), 2u);
    EXPECT_EQ(layr.Text(), "fine");
    EXPECT_EQ(layr.Read<float>(), 0.5f);
    EXPECT_EQ(layr.Read<uint8_t>(), 1u) << "writable";
    EXPECT_EQ(layr.Read<uint8_t>(), 1u) << "active";
    EXPECT_EQ(layr.Read<uint8_t>(), 1u) << "visible";
    const auto count = layr.Read<uint32_t>();
    EXPECT_GT(count, 10u);
    EXPECT_EQ(layr.Left(), count * 40u);
}

TEST_F(SceneLayout, GroundChunkHasTheLayerBase) {
    ChunkReader ground(scene.Chunk("LGND").content);
    ground.Read<uint32_t>();
    const auto layeredVertices = ground.Read<uint32_t>();
    ground.Skip(layeredVertices * 40u);
    const auto normals = ground.Read<uint32_t>();
    EXPECT_EQ(ground.Left(), normals * 24u);
}

TEST_F(SceneLayout, BrushHasItsToolsWithTheActiveOneLast) {
    ChunkReader brsh(scene.Chunk("BRSH").content);
    EXPECT_EQ(brsh.Text(), "SwiftStroke");
    const auto count = brsh.Read<uint32_t>();
    std::vector<std::string> tools;
    std::string data;
    for (uint32_t i = 0; i < count; ++i) {
        tools.push_back(brsh.Text());
        data = brsh.Text();
        if (tools.back() == "Wax") ExpectWax(data);
    }
    EXPECT_THAT(tools, testing::ElementsAre("Sculpt", "Flatten", "Wax", "Bulge"));
    EXPECT_EQ(brsh.Read<uint8_t>(), 0u) << "facing";
    EXPECT_EQ(brsh.Read<float>(), 0.0f);
    EXPECT_EQ(brsh.Read<float>(), 90.0f);
    EXPECT_EQ(brsh.Read<uint8_t>(), 0u) << "screen space";
    EXPECT_EQ(brsh.Read<int32_t>(), 0) << "locked to its mesh";
    EXPECT_EQ(brsh.Left(), 0u);
}

TEST_F(SceneLayout, SettingsHaveViewStrokesAndMirrors) {
    ChunkReader sett(scene.Chunk("SETT").content);
    EXPECT_EQ(sett.Read<float>(), 4.0f);
    sett.Skip(32);
    EXPECT_EQ(sett.Read<float>(), 50.0f);
    EXPECT_EQ(sett.Read<int32_t>(), 320);
    EXPECT_EQ(sett.Read<int32_t>(), 720);
    EXPECT_EQ(sett.Read<float>(), 0.75f);
    EXPECT_EQ(sett.Read<float>(), 0.125f);
    EXPECT_EQ(sett.Read<uint64_t>(), 77u) << "seed";
    EXPECT_EQ(sett.Read<uint64_t>(), 5u) << "strokes begun";
    EXPECT_EQ(sett.Read<int32_t>(), document->Settings().mirrorMode);
    ASSERT_EQ(sett.Read<uint32_t>(), 3u);
    EXPECT_EQ(sett.Read<float>(), -1.0f) << "x is mirrored first";
    EXPECT_EQ(sett.Left(), 3u * 64u - 4u);
}

TEST_F(SceneLayout, PenHasCurvesTiltRandomnessAndAirbrush) {
    ChunkReader pens(scene.Chunk("PENS").content);
    ASSERT_EQ(pens.Read<uint32_t>(), 3u) << "the curve for strength";
    for (const float number : {0.0f, 0.125f, 0.5f, 0.25f, 1.0f, 1.0f})
        EXPECT_EQ(pens.Read<float>(), number);
    EXPECT_EQ(pens.Read<uint32_t>(), 0u) << "no curve for size";
    EXPECT_EQ(pens.Read<float>(), 0.375f) << "chance";
    EXPECT_EQ(pens.Read<uint8_t>(), 1u) << "the tilt rotates the stamp";
    EXPECT_EQ(pens.Read<float>(), 1.5f);
    EXPECT_EQ(pens.Read<float>(), -0.5f);
    EXPECT_EQ(pens.Read<float>(), 0.0f) << "pixels";
    EXPECT_EQ(pens.Read<float>(), 30.0f) << "dabs per second";
    EXPECT_EQ(pens.Left(), 0u);
}

TEST_F(SceneLayout, FreezeBrushHasItsSettings) {
    ChunkReader brush(scene.Chunk("FRZB").content);
    EXPECT_EQ(brush.Read<uint8_t>(), 0u) << "another brush is active";
    const std::string data = brush.Text();
    // The strength follows three strings, size, direction, smoothing, steady stroke, spacing,
    // flags, stamp and fade.
    const std::size_t strength = 3 * 4 + 4 + 4 + 5 + 5 + 8 + 3 + 8 + 5;
    EXPECT_EQ(NumberAt<float>(data, strength), 62.5f);
    EXPECT_EQ(NumberAt<int32_t>(data, data.size() - 4), 3) << "falloff";
    brush.Skip(8);
    EXPECT_EQ(brush.Left(), 0u);
}

}  // namespace
}  // namespace trovik::test
