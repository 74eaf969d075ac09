// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/history/PackedArrays.h"
#include "host/Vector.h"
#include "tests/files/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <random>

namespace trovik::test {
namespace {

struct Content {
    std::vector<uint32_t> numbers;
    std::vector<Vector> places;
    std::vector<std::array<int16_t, 3>> normals;
    std::vector<uint8_t> bytes;

    std::vector<StepArray> Arrays() {
        return {StepArray(numbers), StepArray(places), StepArray(normals), StepArray(bytes)};
    }
    bool operator==(const Content&) const = default;
};

Content ContentOf(std::size_t count, uint32_t seed) {
    std::mt19937 random(seed);
    std::normal_distribution<float> place;
    Content content;
    for (uint32_t i = 0; i < count; ++i) {
        content.numbers.push_back(i * 3);
        content.places.emplace_back(place(random), place(random), -0.0f);
        content.normals.push_back({static_cast<int16_t>(random()), 0, 32767});
        if (i % 2 == 0) content.bytes.push_back(static_cast<uint8_t>(random()));
    }
    return content;
}

TEST(PackedArrays, EveryLengthIsRestoredExactly) {
    for (const PackMethod method : {PackMethod::Quick, PackMethod::Tight}) {
        // Empty and tiny arrays, and lengths on both sides of a piece boundary of one of the
        // arrays.
        for (const std::size_t count : {0u, 1u, 2u, 21845u, 21846u, 65536u, 65537u, 200000u}) {
            const Content content = ContentOf(count, 7);
            Content other = content;
            const std::vector<uint8_t> packed = PackArrays(other.Arrays(), method);
            EXPECT_EQ(other, content) << "packing only reads";
            other = Content();
            UnpackArrays(packed, method, other.Arrays());
            ASSERT_EQ(other, content) << count;
            EXPECT_EQ(other.numbers.capacity(), count);
        }
    }
}

TEST(PackedArrays, OrderedNumbersShrinkTwentyfoldAndNoiseDoesNotGrow) {
    std::vector<uint32_t> ordered(100000);
    for (uint32_t i = 0; i < ordered.size(); ++i) ordered[i] = i;
    const std::vector<StepArray> arrays = {StepArray(ordered)};
    EXPECT_LT(PackArrays(arrays, PackMethod::Quick).size(), 400000u / 20);
    EXPECT_LT(PackArrays(arrays, PackMethod::Tight).size(), 400000u / 20);

    std::mt19937 random(3);
    std::vector<uint32_t> noise(100000);
    for (uint32_t& word : noise) word = static_cast<uint32_t>(random());
    // The data is preceded by a 12-byte header and the lengths of the two pieces.
    EXPECT_EQ(PackArrays({StepArray(noise)}, PackMethod::Quick).size(), 400000u + 12 + 2 * 4);
}

TEST(PackedArrays, RepackingEqualsPacking) {
    Content content = ContentOf(70000, 9);
    const auto quick = PackArrays(content.Arrays(), PackMethod::Quick);
    const auto tight = PackArrays(content.Arrays(), PackMethod::Tight);
    EXPECT_LT(tight.size(), quick.size());
    EXPECT_EQ(Repack(quick, PackMethod::Quick, PackMethod::Tight), tight);
    EXPECT_EQ(Repack(tight, PackMethod::Tight, PackMethod::Quick), quick);
}

TEST(PackedArrays, DamagedBytesAreRefusedAndLeaveTheArraysEmpty) {
    const Content content = ContentOf(3000, 4);
    Content other = content;
    for (const PackMethod method : {PackMethod::Quick, PackMethod::Tight}) {
        const std::vector<uint8_t> packed = PackArrays(other.Arrays(), method);
        for (std::size_t length = 0; length < packed.size(); length += 97) {
            const std::vector<uint8_t> cut(packed.begin(),
                                           packed.begin() + static_cast<std::ptrdiff_t>(length));
            ASSERT_THROW(UnpackArrays(cut, method, other.Arrays()), HostError) << length;
            ASSERT_EQ(other, Content());
        }
        std::vector<uint8_t> longer = packed;
        longer.push_back(0);
        EXPECT_THROW(UnpackArrays(longer, method, other.Arrays()), HostError);
        // Mismatched arrays: a count of 2^56, and a different element size.
        std::vector<uint8_t> wrong = packed;
        wrong[11] = 1;
        EXPECT_THROW(UnpackArrays(wrong, method, other.Arrays()), HostError);
        wrong = packed;
        wrong[0] = 2;
        EXPECT_THROW(UnpackArrays(wrong, method, other.Arrays()), HostError);
        other = content;
    }
}

}  // namespace
}  // namespace trovik::test
