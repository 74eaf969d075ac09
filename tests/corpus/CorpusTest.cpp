// SPDX-License-Identifier: Apache-2.0

/// \file
/// The files that the fuzz targets start from, whole, cut off and damaged, go through the targets:
/// a target ends the process where a reader crashes, or refuses poorly.
#include "tests/random/RandomNumbers.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#define TROVIK_FEED(reader) extern "C" int Feed##reader(const std::uint8_t*, std::size_t)
TROVIK_FEED(Obj);
TROVIK_FEED(Ply);
TROVIK_FEED(Stl);
TROVIK_FEED(Gltf);
TROVIK_FEED(Scene);
TROVIK_FEED(Script);
TROVIK_FEED(Journal);
#undef TROVIK_FEED

namespace trovik::test {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

struct Target {
    const char* name;
    int (*feed)(const std::uint8_t*, std::size_t);
};

constexpr Target targets[] = {{"obj", &FeedObj},
                              {"ply", &FeedPly},
                              {"stl", &FeedStl},
                              {"gltf", &FeedGltf},
                              {"scene", &FeedScene},
                              {"script", &FeedScript},
                              {"journal", &FeedJournal}};

class Corpus : public ::testing::TestWithParam<Target> {
protected:
    Corpus() {
        const fs::path folder = fs::path(TROVIK_SOURCE_DIR) / "fuzz/corpus" / GetParam().name;
        for (const auto& entry : fs::directory_iterator(folder)) {
            std::ifstream file(entry.path(), std::ios::binary);
            files.emplace_back(std::istreambuf_iterator<char>(file),
                               std::istreambuf_iterator<char>());
        }
    }

    void Feed(const Bytes& bytes) { EXPECT_EQ(GetParam().feed(bytes.data(), bytes.size()), 0); }

    std::vector<Bytes> files;
};

TEST_P(Corpus, GoesThroughItsReader) {
    ASSERT_FALSE(files.empty());
    for (const Bytes& file : files) {
        EXPECT_FALSE(file.empty());
        Feed(file);
    }
}

TEST_P(Corpus, IsReadOrRefusedWhereverItIsCutOff) {
    for (const Bytes& file : files) {
        const std::size_t step = 1 + file.size() / 64;
        for (std::size_t size = 0; size < file.size(); size += step)
            Feed(Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size)));
    }
}

TEST_P(Corpus, IsReadOrRefusedWhenDamaged) {
    RandomNumbers random(3);
    const std::uint8_t telling[] = {0, 1, 0x7f, 0x80, 0xff, '"', '{', '-', '9', '\n'};
    for (const Bytes& file : files) {
        for (int round = 0; round < 100; ++round) {
            Bytes damaged = file;
            const auto size = static_cast<uint32_t>(damaged.size());
            for (uint32_t k = 0; k <= random.Below(4); ++k) {
                std::uint8_t& byte = damaged[random.Below(size)];
                byte = random.Chance(0.5f)
                           ? static_cast<std::uint8_t>(byte ^ (1u << random.Below(8)))
                           : telling[random.Below(static_cast<uint32_t>(std::size(telling)))];
            }
            Feed(damaged);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Targets, Corpus, ::testing::ValuesIn(targets), [](const auto& target) {
    return std::string(target.param.name);
});

}  // namespace
}  // namespace trovik::test
