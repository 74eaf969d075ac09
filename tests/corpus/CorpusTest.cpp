// SPDX-License-Identifier: Apache-2.0

/// \file Runs the fuzz targets on their corpus files: whole, truncated and damaged. A target ends
/// the process if a reader crashes or reports an error of the wrong kind. With TROVIK_FUZZ_SECONDS,
/// each reader then runs for that long on randomly damaged files, which differ in every run.
#include "framework/files/MeshFormat.h"
#include "fuzz/ReaderFuzzer.h"
#include "tests/SourceFolder.h"
#include "tests/random/RandomNumbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#define TROVIK_FEED(reader) extern "C" int Feed##reader(const std::uint8_t*, std::size_t)
TROVIK_FEED(Scene);
TROVIK_FEED(Script);
TROVIK_FEED(Journal);
#undef TROVIK_FEED

namespace trovik::test {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

struct Target {
    /// Name of the folder in fuzz/corpus.
    std::string name;
    std::function<void(const std::uint8_t*, std::size_t)> feed;
};

/// The readers of all mesh formats, and the fuzz targets of other files. Formats with the same
/// reader, such as the encodings of glTF, share the folder of the last one.
std::vector<Target> Targets() {
    std::vector<Target> targets = {
        {"scene", &FeedScene}, {"script", &FeedScript}, {"journal", &FeedJournal}};
    std::map<MeshFormat::Reader, std::string> readers;
    for (const MeshFormat& format : MeshFormats())
        if (format.read != nullptr) readers[format.read] = format.extension + 1;
    for (const auto& [read, name] : readers) {
        targets.push_back({name, [read = read](const std::uint8_t* bytes, std::size_t size) {
                               FuzzReader(bytes, size, read);
                           }});
    }
    std::sort(targets.begin(), targets.end(), [](const Target& a, const Target& b) {
        return a.name < b.name;
    });
    return targets;
}

class Corpus : public ::testing::TestWithParam<Target> {
protected:
    Corpus() {
        const fs::path folder = fs::path(SourceFolder()) / "fuzz/corpus" / GetParam().name;
        for (const auto& entry : fs::directory_iterator(folder)) {
            std::ifstream file(entry.path(), std::ios::binary);
            files.emplace_back(std::istreambuf_iterator<char>(file),
                               std::istreambuf_iterator<char>());
        }
    }

    void Feed(const Bytes& bytes) { GetParam().feed(bytes.data(), bytes.size()); }

    std::vector<Bytes> files;
};

TEST_P(Corpus, GoesThroughItsReader) {
    ASSERT_FALSE(files.empty());
    for (const Bytes& file : files) {
        EXPECT_FALSE(file.empty());
        Feed(file);
    }
}

TEST_P(Corpus, IsReadOrRefusedAfterAnyTruncation) {
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

/// Changes, removes or duplicates bytes, or copies them from another file, one to four times.
Bytes Damaged(const std::vector<Bytes>& files, RandomNumbers& random) {
    Bytes bytes = files[random.Below(static_cast<uint32_t>(files.size()))];
    for (uint32_t changes = 1 + random.Below(4); changes > 0 && !bytes.empty(); --changes) {
        const auto size = static_cast<uint32_t>(bytes.size());
        const uint32_t from = random.Below(size);
        const uint32_t length = std::min(size - from, 1 + random.Below(64));
        const auto at = bytes.begin() + from;
        switch (random.Below(5)) {
            case 0:
                *at = static_cast<std::uint8_t>(random.Below(256));
                break;
            case 1:
                *at = static_cast<std::uint8_t>(*at ^ (1u << random.Below(8)));
                break;
            case 2:
                bytes.erase(at, at + length);
                break;
            case 3: {
                const Bytes twice(at, at + length);
                bytes.insert(at, twice.begin(), twice.end());
                break;
            }
            default: {
                const Bytes& other = files[random.Below(static_cast<uint32_t>(files.size()))];
                const uint32_t start = random.Below(static_cast<uint32_t>(other.size()));
                const auto taken =
                    std::min({length, size - from, static_cast<uint32_t>(other.size()) - start});
                std::copy_n(other.begin() + start, taken, at);
                break;
            }
        }
    }
    return bytes;
}

/// The seed of the damaged file that a reader is processing, printed if the process is terminated.
volatile std::sig_atomic_t presentSeed = 0;

extern "C" void TellSeed(int number) {
    std::fprintf(stderr, "damaged file with seed %d\n", static_cast<int>(presentSeed));
    std::signal(number, SIG_DFL);
    std::raise(number);
}

TEST_P(Corpus, IsReadOrRefusedWithRandomDamage) {
    const char* wanted = std::getenv("TROVIK_FUZZ_SECONDS");
    const long seconds = wanted == nullptr ? 0 : std::strtol(wanted, nullptr, 10);
    if (seconds <= 0) GTEST_SKIP() << "TROVIK_FUZZ_SECONDS is not set";
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds);
    // Each run uses different seeds; a failing seed can be passed in again.
    const char* given = std::getenv("TROVIK_FUZZ_SEED");
    int seed = given != nullptr
                   ? std::atoi(given)
                   : static_cast<int>(Clock::now().time_since_epoch().count() >> 20 & 0x3fffffff);
    for (const int number : {SIGABRT, SIGSEGV, SIGFPE}) std::signal(number, TellSeed);
    int fed = 0;
    for (; Clock::now() < end; ++seed, ++fed) {
        presentSeed = seed;
        RandomNumbers random(static_cast<uint32_t>(seed));
        Feed(Damaged(files, random));
    }
    for (const int number : {SIGABRT, SIGSEGV, SIGFPE}) std::signal(number, SIG_DFL);
    std::printf("%d damaged files\n", fed);
    EXPECT_GT(fed, 0);
}

INSTANTIATE_TEST_SUITE_P(Targets, Corpus, ::testing::ValuesIn(Targets()), [](const auto& target) {
    return target.param.name;
});

}  // namespace
}  // namespace trovik::test
