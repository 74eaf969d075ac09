// SPDX-License-Identifier: Apache-2.0
#include "host/Block.h"
#include "tests/memory/MemoryLimit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace trovik {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

std::vector<std::string> LinesOf(float share, bool everyBlock) {
    std::vector<std::string> lines;
    MemoryAccount::SetLogSink([&lines](const std::string& line) { lines.push_back(line); });
    Block::LogAll(share, everyBlock);
    MemoryAccount::SetLogSink(nullptr);
    return lines;
}

TEST(Block, RegisteredBytesCountUntilReleased) {
    const int64_t before = MemoryAccount::Total();
    EXPECT_TRUE(Block::RegisterMemoryBlock(1000));
    EXPECT_EQ(MemoryAccount::Total(), before + 1000);
    Block::UnregisterMemoryBlock(400);
    EXPECT_EQ(MemoryAccount::Total(), before + 600);
    Block::UnregisterMemoryBlock(600);
    EXPECT_EQ(MemoryAccount::Total(), before);
}

TEST(Block, TotalMayEqualTheLimitButNotExceedIt) {
    const int64_t before = MemoryAccount::Total();
    const test::MemoryLimit limit(100);
    EXPECT_TRUE(Block::RegisterMemoryBlock(60));
    EXPECT_FALSE(Block::RegisterMemoryBlock(41));
    EXPECT_EQ(MemoryAccount::Total(), before + 60) << "a refusal adds nothing";
    EXPECT_TRUE(Block::RegisterMemoryBlock(40));
    EXPECT_FALSE(Block::RegisterMemoryBlock(1));
    EXPECT_TRUE(Block::RegisterMemoryBlock(0));
    Block::UnregisterMemoryBlock(100);
}

TEST(Block, HugeRequestIsRefusedWithoutOverflow) {
    const test::MemoryLimit limit(100);
    EXPECT_FALSE(Block::RegisterMemoryBlock(std::numeric_limits<int64_t>::max()));
}

TEST(Block, LimitBelowTheTotalRefusesGrowthOnly) {
    EXPECT_TRUE(Block::RegisterMemoryBlock(50));
    {
        const test::MemoryLimit limit(-10);
        EXPECT_FALSE(Block::RegisterMemoryBlock(1));
        EXPECT_TRUE(Block::RegisterMemoryBlock(0));
    }
    Block::UnregisterMemoryBlock(50);
}

TEST(Block, CanBeAddedToAndRemovedFromTheListAnywhere) {
    Block* const before = Block::s_pHead;
    auto* a = new Block("a", 1);
    auto* b = new Block("b", 2);
    auto* c = new Block("c", 3);
    EXPECT_EQ(Block::s_pHead, c);
    EXPECT_EQ(c->next, b);
    EXPECT_EQ(b->next, a);
    EXPECT_EQ(a->next, before);
    EXPECT_EQ(a->previous, b);
    EXPECT_EQ(c->previous, nullptr);
    EXPECT_EQ(b->elementSize, 2u);
    delete b;
    EXPECT_EQ(c->next, a);
    EXPECT_EQ(a->previous, c);
    delete c;
    EXPECT_EQ(Block::s_pHead, a);
    EXPECT_EQ(a->previous, nullptr);
    delete a;
    EXPECT_EQ(Block::s_pHead, before);
    if (before != nullptr) {
        EXPECT_EQ(before->previous, nullptr);
    }
}

TEST(Block, AlignedMemoryIsAlignedAndWritable) {
    for (const uint64_t alignment : {16u, 64u, 4096u}) {
        void* memory = Block::AlignedAlloc(alignment + 3, alignment);
        ASSERT_NE(memory, nullptr);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(memory) % alignment, 0u);
        std::memset(memory, 7, alignment + 3);
        Block::AlignedFree(memory);
    }
}

TEST(Block, CopyTransfersTheBytesAndAcceptsZeroBytes) {
    const uint32_t from[3] = {1, 2, 3};
    uint32_t to[3] = {};
    Block::CopyMemoryBlock(to, from, 8);
    EXPECT_THAT(to, testing::ElementsAre(1u, 2u, 0u));
    Block::CopyMemoryBlock(nullptr, nullptr, 0);
}

TEST(Block, LogListsTotalLimitAndArraysByName) {
    const Block one("log test", 4);
    const Block two("log test", 4);
    const test::MemoryLimit limit(500);
    const std::string total = std::to_string(MemoryAccount::Total());
    const std::vector<std::string> lines = LinesOf(0.0f, true);
    EXPECT_EQ(
        lines.front(),
        "memory: " + total + " bytes accounted, limit " + std::to_string(MemoryAccount::Limit()));
    EXPECT_THAT(lines, Contains("memory:   log test: 2 arrays"));
}

TEST(Block, LogNamesTheCurrentAllocation) {
    Block::SetAllocatorID("growing list");
    EXPECT_THAT(LinesOf(0.0f, true).front(), HasSubstr("allocating for growing list"));
    Block::SetAllocatorID(nullptr);
    EXPECT_THAT(LinesOf(0.0f, true).front(), Not(HasSubstr("allocating for")));
}

TEST(Block, LogOmitsNamesWithASmallFraction) {
    std::vector<std::unique_ptr<Block>> many;
    many.reserve(99);
    for (int i = 0; i < 99; ++i) many.push_back(std::make_unique<Block>("many", 4));
    const Block few("few", 4);
    EXPECT_THAT(LinesOf(0.5f, false), Contains(HasSubstr("many: 99 arrays")));
    EXPECT_THAT(LinesOf(0.5f, false), Not(Contains(HasSubstr("few"))));
    EXPECT_THAT(LinesOf(0.5f, true), Contains(HasSubstr("few: 1 arrays")));
}

TEST(Block, LogIsSilentByDefault) {
    const auto logged = [] {
        testing::internal::CaptureStderr();
        Block::LogAll(0.0f, true);
        return testing::internal::GetCapturedStderr();
    };
    unsetenv("TROVIK_MEMORY_LOG");
    EXPECT_EQ(logged(), "");
    setenv("TROVIK_MEMORY_LOG", "1", 1);
    EXPECT_THAT(logged(), HasSubstr(" bytes accounted"));
    unsetenv("TROVIK_MEMORY_LOG");
}

TEST(Block, LogWithoutMemoryIsDropped) {
    MemoryAccount::SetLogSink([](const std::string&) { throw std::bad_alloc(); });
    EXPECT_NO_THROW(Block::LogAll(0.0f, true));
    MemoryAccount::SetLogSink(nullptr);
}

}  // namespace
}  // namespace trovik
