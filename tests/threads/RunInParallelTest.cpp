// SPDX-License-Identifier: Apache-2.0
#include "framework/threads/WorkerThreads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

namespace trovik::test {
namespace {

TEST(RunInParallel, CallsEachIndexOnce) {
    for (const uint32_t count : {0u, 1u, 7u, 1000u}) {
        for (const uint32_t grain : {1u, 64u}) {
            std::vector<std::atomic<int>> calls(count);
            RunInParallel(count, grain, [&](uint32_t i) { ++calls.at(i); });
            for (const std::atomic<int>& one : calls) EXPECT_EQ(one, 1);
        }
    }
}

TEST(RunInParallel, OneThreadCallsInOrderOnTheCaller) {
    std::vector<uint32_t> order;
    const std::thread::id caller = std::this_thread::get_id();
    RunInParallel(
        5,
        1,
        [&](uint32_t i) {
            EXPECT_EQ(std::this_thread::get_id(), caller);
            order.push_back(i);
        },
        1);
    EXPECT_EQ(order, (std::vector<uint32_t>{0, 1, 2, 3, 4}));
}

TEST(RunInParallel, RethrowsAnException) {
    const auto failing = [](uint32_t i) {
        if (i == 37) throw std::runtime_error("37");
    };
    EXPECT_THROW(RunInParallel(100, 1, failing), std::runtime_error);
    EXPECT_THROW(RunInParallel(100, 1, failing, 1), std::runtime_error);
}

}  // namespace
}  // namespace trovik::test
