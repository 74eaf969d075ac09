// SPDX-License-Identifier: Apache-2.0
#include "framework/memory/FilledStore.h"
#include "host/Store.h"
#include "tests/memory/MemoryLimit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace trovik {
namespace {

template <typename T>
std::vector<T> ContentOf(const Store<T>& store) {
    return {store.array, store.array + store.fill};
}

/// Elements whose array allocation fails while `refuse` is set.
struct Unobtainable {
    static inline bool refuse = false;
    static void* operator new[](std::size_t size) {
        if (refuse) throw std::bad_alloc();
        return ::operator new[](size);
    }
    static void operator delete[](void* memory) { ::operator delete[](memory); }
    int value = 0;
};

TEST(Store, StartsEmpty) {
    const Store<uint32_t> store("some list");
    EXPECT_EQ(store.array, nullptr);
    EXPECT_EQ(store.capacity, 0u);
    EXPECT_EQ(store.fill, 0u);
    EXPECT_TRUE(store.plainCopy);
    EXPECT_EQ(store.self, &store);
    EXPECT_EQ(store.elementSize, 4u);
    EXPECT_STREQ(store.allocatorName, "some list");
    EXPECT_STREQ(Store<uint32_t>().allocatorName, "unknown");
}

TEST(Store, AppendingGrowsTheCapacityToOneThreeSevenFifteen) {
    Store<uint32_t> store;
    std::vector<uint32_t> capacities;
    for (uint32_t i = 0; i < 8; ++i) {
        store.Append(i * 10);
        capacities.push_back(store.capacity);
    }
    EXPECT_EQ(capacities, (std::vector<uint32_t>{1, 3, 3, 7, 7, 7, 7, 15}));
    EXPECT_EQ(ContentOf(store), (std::vector<uint32_t>{0, 10, 20, 30, 40, 50, 60, 70}));
}

TEST(Store, AppendingAtAnExactCapacityDoublesItAndAddsOne) {
    Store<uint32_t> store;
    store.SetFill(4, true);
    store.Append(9);
    EXPECT_EQ(store.capacity, 9u);
    EXPECT_EQ(store.fill, 5u);
    EXPECT_EQ(store.array[4], 9u);
}

TEST(Store, IndexAtTheCapacityReadsTheFirstElement) {
    Store<uint32_t> store;
    store.Append(5);
    store.Append(6);
    ASSERT_EQ(store.capacity, 3u);
    store.array[2] = 7;
    const Store<uint32_t>& reading = store;
    EXPECT_EQ(reading[1], 6u);
    EXPECT_EQ(reading[2], 7u) << "between fill and capacity it is the element itself";
    EXPECT_EQ(reading[3], 5u);
    EXPECT_EQ(reading[0xffffffffu], 5u);
    store[3] = 8;
    EXPECT_EQ(store.array[0], 8u);
}

TEST(Store, AccountsForItsCapacity) {
    const int64_t before = MemoryAccount::Total();
    {
        Store<uint64_t> store;
        store.SetCapacity(10);
        EXPECT_EQ(MemoryAccount::Total(), before + 80);
        store.SetCapacity(3);
        EXPECT_EQ(MemoryAccount::Total(), before + 24);
        store.Clear();
        EXPECT_EQ(MemoryAccount::Total(), before);
        for (uint64_t i = 0; i < 5; ++i) store.Append(i);
        EXPECT_EQ(MemoryAccount::Total(), before + 56);
    }
    EXPECT_EQ(MemoryAccount::Total(), before);
}

TEST(Store, RefusedGrowthThrowsAndChangesNothing) {
    Store<uint32_t> store;
    for (uint32_t i = 0; i < 7; ++i) store.Append(i);
    // Both are read after the exception has been caught, which the analyzer does not follow.
    const int64_t before = MemoryAccount::Total();  // NOLINT(clang-analyzer-deadcode.DeadStores)
    const uint32_t* const array = store.array;      // NOLINT(clang-analyzer-deadcode.DeadStores)
    {
        // The old array exists until the new one is allocated, so 15 more elements have to fit.
        const test::MemoryLimit limit(15 * 4 - 1);
        try {
            store.Append(99);
            FAIL() << "the growth was not refused";
        } catch (Error* error) {
            EXPECT_EQ(error, Error::s_cBadAlloc);
        }
    }
    EXPECT_EQ(store.array, array);
    EXPECT_EQ(store.capacity, 7u);
    EXPECT_EQ(ContentOf(store), (std::vector<uint32_t>{0, 1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(MemoryAccount::Total(), before);
    const test::MemoryLimit limit(15 * 4);
    store.Append(99);
    EXPECT_EQ(store.fill, 8u);
}

TEST(Store, FailedAllocationAppendsNothingAndOnlyLogs) {
    Store<Unobtainable> store("rare");
    store.Append({1});
    const int64_t before = MemoryAccount::Total();
    std::string log;
    MemoryAccount::SetLogSink([&log](const std::string& line) { log += line + "\n"; });
    Unobtainable::refuse = true;
    store.Append({2});
    EXPECT_FALSE(store.SetCapacity(100));
    EXPECT_FALSE(store.SetFill(100, true));
    Unobtainable::refuse = false;
    MemoryAccount::SetLogSink(nullptr);
    EXPECT_EQ(store.fill, 1u);
    EXPECT_EQ(store.capacity, 1u);
    EXPECT_EQ(store.array[0].value, 1);
    EXPECT_EQ(MemoryAccount::Total(), before);
    EXPECT_THAT(log, testing::HasSubstr("allocating for rare"));
}

TEST(FilledStore, HasItsElementsOrThrows) {
    Store<uint32_t> numbers;
    FillStore(numbers, 3, 7u);
    EXPECT_EQ(ContentOf(numbers), (std::vector<uint32_t>{7, 7, 7}));
    Store<Unobtainable> store("rare");
    ResizeStore(store, 2);
    EXPECT_EQ(store.fill, 2u);
    Unobtainable::refuse = true;
    EXPECT_THROW(ResizeStore(store, 100), std::bad_alloc);
    EXPECT_THROW(FillStore(store, 100, Unobtainable{}), std::bad_alloc);
    Unobtainable::refuse = false;
}

TEST(Store, SmallerFillOnlyStoresTheNumber) {
    Store<uint32_t> store;
    for (uint32_t i = 0; i < 5; ++i) store.Append(i);
    const uint32_t* const array = store.array;
    EXPECT_TRUE(store.SetFill(2, false));
    EXPECT_EQ(store.fill, 2u);
    EXPECT_EQ(store.capacity, 7u);
    EXPECT_EQ(store.array, array);
}

TEST(Store, LargerFillSetsExactlyThatCapacity) {
    Store<uint32_t> store;
    store.Append(1);
    store.Append(2);
    EXPECT_TRUE(store.SetFill(6, true));
    EXPECT_EQ(store.capacity, 6u);
    EXPECT_EQ(store.fill, 6u);
    EXPECT_EQ(store.array[1], 2u);
    // Setting a size above the old size but within the capacity reduces the capacity to the new
    // size.
    store.SetFill(0, true);
    EXPECT_TRUE(store.SetFill(4, true));
    EXPECT_EQ(store.capacity, 4u);
}

TEST(Store, OldContentIsFreedFirstUnlessItIsKept) {
    Store<uint32_t> store;
    store.SetFill(10, true);
    // There is memory for 20 elements in total, which is enough only if the old ten are freed
    // first.
    const test::MemoryLimit limit(10 * 4);
    EXPECT_THROW(store.SetFill(20, true), Error*);
    EXPECT_EQ(store.fill, 10u);
    EXPECT_TRUE(store.SetFill(20, false));
    EXPECT_EQ(store.capacity, 20u);
}

TEST(Store, ElementsWithResourcesAreCopiedOneByOne) {
    Store<std::string> store;
    store.plainCopy = false;
    for (int i = 0; i < 20; ++i)
        store.Append("a text too long for the small buffer " + std::to_string(i));
    EXPECT_EQ(store.fill, 20u);
    EXPECT_EQ(store[0], "a text too long for the small buffer 0");
    EXPECT_EQ(store[19], "a text too long for the small buffer 19");
    store.SetCapacity(2);
    EXPECT_EQ(store[1], "a text too long for the small buffer 1");
}

TEST(Store, ClearingAnEmptyStoreDoesNothing) {
    Store<uint32_t> store;
    store.Clear();
    EXPECT_EQ(store.array, nullptr);
    EXPECT_TRUE(store.SetCapacity(0));
    EXPECT_EQ(store.array, nullptr);
}

TEST(Store, FieldsAreInTheirOrder) {
    const Store<uint16_t> store;
    const auto at = [&store](const auto& field) {
        return reinterpret_cast<const char*>(&field) - reinterpret_cast<const char*>(&store);
    };
    EXPECT_LT(at(store.next), at(store.previous));
    EXPECT_LT(at(store.previous), at(store.elementSize));
    EXPECT_LT(at(store.elementSize), at(store.allocatorName));
    EXPECT_LT(at(store.allocatorName), at(store.array));
    EXPECT_LT(at(store.array), at(store.capacity));
    EXPECT_LT(at(store.capacity), at(store.plainCopy));
    EXPECT_LT(at(store.plainCopy), at(store.self));
    EXPECT_LT(at(store.self), at(store.fill));
}

}  // namespace
}  // namespace trovik
