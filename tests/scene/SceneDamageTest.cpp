// SPDX-License-Identifier: Apache-2.0

/// \file Tests that reading a truncated, damaged or malicious file results in a clear error or a
/// valid scene, and needs no more memory than the file size justifies.
#include "framework/errors/HostError.h"
#include "framework/nodes/HostKernel.h"
#include "tests/scene/AllocationCount.h"
#include "tests/scene/SampleScene.h"
#include "tests/scene/SceneBytes.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <limits>
#include <random>

namespace trovik::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr unsigned flips = 2000;
/// File buffers take 1 MiB. All other memory is proportional to the size of the scene, which is a
/// few kilobytes.
constexpr uint64_t maxMemory = uint64_t{8} << 20;

class DamagedScene : public ::testing::Test {
protected:
    DamagedScene() {
        auto document = RichDocument(folder);
        document->Save(path);
        whole = TemporaryFolder::Content(path);
        Document::OpenScene(path);
    }

    /// Reads a scene and returns the error message, or an empty string on success. The memory limit
    /// is checked in both cases.
    std::string Read(const std::string& bytes) {
        // A new file is created each time, because some file systems wait for the disk when a file
        // is overwritten.
        std::filesystem::remove(path);
        folder.Fill("scene.trovik", bytes);
        ForgetPeak();
        const uint64_t before = BytesHeld();
        const unsigned geometries = HostKernel::Instance().Scene()->GeometryCount();
        std::string message;
        try {
            const auto brush = NewBrush();
            FreezeBrush freezeBrush;
            const LoadedScene scene = LoadScene(path, brush.get(), &freezeBrush);
            EXPECT_NE(scene.geometry, nullptr);
        } catch (const HostError& error) {
            message = error.what();
            EXPECT_THAT(message, StartsWith(path + ": "));
            EXPECT_EQ(message.find('\n'), std::string::npos) << message;
        }
        EXPECT_LT(PeakBytes() - before, maxMemory) << message;
        EXPECT_EQ(HostKernel::Instance().Scene()->GeometryCount(), geometries);
        EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
        return message;
    }

    TemporaryFolder folder;
    std::string path = folder.Path("scene.trovik");
    std::string whole;
};

TEST_F(DamagedScene, EveryTruncationIsAnError) {
    ASSERT_EQ(Read(whole), "");
    for (std::size_t size = 0; size < whole.size(); size += size < 400 ? 1 : 7)
        EXPECT_THAT(Read(whole.substr(0, size)), HasSubstr("byte ")) << "cut at " << size;
    for (std::size_t size = whole.size() - 64; size < whole.size(); ++size)
        EXPECT_NE(Read(whole.substr(0, size)), "") << "cut at " << size;
}

TEST_F(DamagedScene, EveryFlippedByteIsAnError) {
    std::mt19937 random(1);
    for (unsigned i = 0; i < flips; ++i) {
        std::string bytes = whole;
        const std::size_t place = random() % bytes.size();
        const auto mask = static_cast<char>(1 + random() % 255);
        bytes[place] = static_cast<char>(bytes[place] ^ mask);
        EXPECT_THAT(Read(bytes), HasSubstr("byte ")) << "flipped at " << place;
    }
}

TEST_F(DamagedScene, DuplicateChunksAreErrors) {
    const RawScene scene = SplitScene(whole);
    unsigned doubled = 0;
    for (std::size_t i = 0; i + 1 < scene.chunks.size(); ++i) {
        const std::string& name = scene.chunks[i].name;
        if (name == "LEVL" || name == "LAYR" || name == "LGND") continue;
        SCOPED_TRACE(name);
        std::vector<RawChunk> chunks = scene.chunks;
        chunks.insert(chunks.end() - 1, scene.chunks[i]);
        EXPECT_THAT(Read(JoinScene(whole.substr(0, scene.headerBytes), chunks)),
                    HasSubstr("chunk " + name + ": it occurs twice; the file is damaged"));
        ++doubled;
    }
    EXPECT_EQ(doubled, 8u);
}

// Checksums detect only accidental damage; values must be validated in any case.
TEST_F(DamagedScene, FlippedBytesWithValidChecksumsAreErrorsOrUsableScenes) {
    const RawScene scene = SplitScene(whole);
    std::mt19937 random(2);
    unsigned read = 0;
    for (unsigned i = 0; i < flips; ++i) {
        std::vector<RawChunk> chunks = scene.chunks;
        // Chunk by chunk, so that small chunks are also covered.
        std::string& content = chunks[1 + i % (chunks.size() - 2)].content;
        if (content.empty()) continue;
        const std::size_t place = random() % content.size();
        const auto mask = static_cast<char>(1 + random() % 255);
        content[place] = static_cast<char>(content[place] ^ mask);
        const std::string bytes = JoinScene(whole.substr(0, scene.headerBytes), chunks);
        SCOPED_TRACE("flip " + std::to_string(i) + " at " + std::to_string(place) + " of " +
                     chunks[1 + i % (chunks.size() - 2)].name);
        if (!Read(bytes).empty()) continue;
        ++read;
        auto document = Document::OpenScene(path);
        if (document->Brush().ActiveConfiguration() == nullptr) document->SelectTool("Sculpt");
        StrokeOver(*document, {0, 13}, 1.0f);
        document->BindLevel(document->Geometry().LevelCount() - 1);
        StrokeOver(*document, {3}, 1.0f);
    }
    EXPECT_GT(read, flips / 10);
    EXPECT_LT(read, flips);
}

TEST_F(DamagedScene, CountsBeyondTheFileAllocateNothing) {
    const RawScene scene = SplitScene(whole);
    const std::string header = whole.substr(0, scene.headerBytes);
    for (std::size_t i = 1; i + 1 < scene.chunks.size(); ++i) {
        for (std::size_t place = 0; place + 4 <= scene.chunks[i].content.size() && place < 120;
             ++place) {
            for (const uint32_t number : {0xffffffffu, 0x10000000u}) {
                std::vector<RawChunk> chunks = scene.chunks;
                chunks[i].content.replace(place, 4, BytesOf(number));
                Read(JoinScene(header, chunks));
            }
        }
    }
}

TEST_F(DamagedScene, RadiusAndSpacingHaveTheRangeOfScripts) {
    const RawScene scene = SplitScene(whole);
    const auto readWith = [&](std::size_t place, float number) {
        std::vector<RawChunk> chunks = scene.chunks;
        for (RawChunk& chunk : chunks)
            if (chunk.name == "SETT") chunk.content.replace(place, 4, BytesOf(number));
        return Read(JoinScene(whole.substr(0, scene.headerBytes), chunks));
    };
    // Byte offsets: the view's three vectors, angle and size come before the radius.
    constexpr std::size_t radius = 48;
    constexpr std::size_t spacing = 52;
    EXPECT_EQ(readWith(spacing, 0.001f), "");
    EXPECT_THAT(readWith(spacing, 1e-9f),
                HasSubstr("the dab spacing is 1e-07 percent of the radius; it must be"));
    EXPECT_THAT(readWith(spacing, 11.0f), HasSubstr("the dab spacing is 1100 percent"));
    EXPECT_THAT(readWith(radius, 0.0f), HasSubstr("the radius is not above 0"));
    // Values that cannot be read again are not written.
    ASSERT_EQ(Read(whole), "");
    auto document = Document::OpenScene(path);
    document->Settings().spacing = 1e-9f;
    EXPECT_THAT(MessageOf<HostError>([&] { document->Save(folder.Path("tiny.trovik")); }),
                HasSubstr("tiny.trovik: the dab spacing is 1e-07 percent"));
    EXPECT_FALSE(std::filesystem::exists(folder.Path("tiny.trovik")));
}

TEST_F(DamagedScene, OtherFilesAreRefused) {
    EXPECT_EQ(Read("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"),
              path + ": byte 0: not a scene: the first eight bytes are not TROVIKSC");
    EXPECT_EQ(Read(""), path + ": byte 0: the file ends inside the scene header");
    EXPECT_EQ(Read("TROVIKSC"), path + ": byte 8: the file ends inside the scene header");
    EXPECT_THAT(Read(whole + "x"), HasSubstr("bytes follow the end of the scene"));
    EXPECT_THAT(MessageOf<HostError>([&] { LoadScene(folder.Path("none.trovik"), nullptr); }),
                HasSubstr(folder.Path("none.trovik")));
}

TEST_F(DamagedScene, MissingChunkIsAnError) {
    const RawScene scene = SplitScene(whole);
    const std::string header = whole.substr(0, scene.headerBytes);
    for (std::size_t i = 0; i < scene.chunks.size(); ++i) {
        std::vector<RawChunk> chunks = scene.chunks;
        const std::string name = chunks[i].name;
        chunks.erase(chunks.begin() + static_cast<std::ptrdiff_t>(i));
        const bool mayLack = name == "LAYR" || name == "LGND" || name == "NODE" || name == "SETT" ||
                             name == "PENS" || name == "BRSH" || name == "FRZB";
        EXPECT_EQ(Read(JoinScene(header, chunks)).empty(), mayLack) << name;
    }
}

TEST_F(DamagedScene, InvalidPenSettingsAreRefused) {
    const RawScene scene = SplitScene(whole);
    const std::string header = whole.substr(0, scene.headerBytes);
    const auto error = [&](const char* name, std::size_t place, const std::string& bytes) {
        std::vector<RawChunk> chunks = scene.chunks;
        for (RawChunk& chunk : chunks)
            if (chunk.name == name) chunk.content.replace(place, bytes.size(), bytes);
        return Read(JoinScene(header, chunks));
    };
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    constexpr float infinite = std::numeric_limits<float>::infinity();
    // The chunk contains a curve with three points, an empty curve and then the numbers.
    EXPECT_THAT(error("PENS", 12, BytesOf(0.0f)),
                HasSubstr("chunk PENS: the pressure curve for strength: the pressures of curve "
                          "points must be in ascending order"));
    EXPECT_THAT(error("PENS", 8, BytesOf(nan)),
                HasSubstr("chunk PENS: the pressure curve for strength: "));
    EXPECT_THAT(error("PENS", 32, BytesOf(nan)),
                HasSubstr("chunk PENS: the random variation of the size is not within 0 to 1"));
    EXPECT_THAT(error("PENS", 37, BytesOf(-1.5f)),
                HasSubstr("the effect of tilt on size is not within -1 to 4"));
    EXPECT_THAT(error("PENS", 41, BytesOf(infinite)),
                HasSubstr("the effect of tilt on strength is not within -1 to 4"));
    EXPECT_THAT(error("PENS", 45, BytesOf(-1.0f)),
                HasSubstr("the radius in pixels is not within 0 to 16384"));
    EXPECT_THAT(error("PENS", 49, BytesOf(1e9f)),
                HasSubstr("the airbrush rate is not within 0 to 1000"));
    const std::size_t end = scene.Chunk("FRZB").content.size();
    EXPECT_THAT(error("FRZB", end - 4, BytesOf(nan)),
                HasSubstr("chunk FRZB: an angle of the facing falloff is not finite"));
    EXPECT_THAT(error("FRZB", 1, BytesOf(uint32_t{0xffffff})), HasSubstr("chunk FRZB: "));
}

TEST_F(DamagedScene, BaseThatIsNotAnOrientedManifoldIsRefused) {
    RawScene scene = SplitScene(whole);
    std::string& content = scene.chunks[1].content;
    ASSERT_EQ(scene.chunks[1].name, "GEOM");
    // The faces come after the name and five numbers. Reverses the first face.
    const std::size_t faces = 4 + NumberAt<uint32_t>(content, 0) + 20;
    const auto second = NumberAt<uint32_t>(content, faces + 4);
    const auto fourth = NumberAt<uint32_t>(content, faces + 12);
    content.replace(faces + 4, 4, BytesOf(fourth));
    content.replace(faces + 12, 4, BytesOf(second));
    EXPECT_THAT(Read(JoinScene(whole.substr(0, scene.headerBytes), scene.chunks)),
                HasSubstr("the faces of level 0 are not an oriented manifold"));
}

}  // namespace
}  // namespace trovik::test
