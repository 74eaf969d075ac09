// SPDX-License-Identifier: Apache-2.0
#include "framework/threads/WorkerThreads.h"

#include "framework/memory/FreeMemory.h"

#include <tbb/global_control.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <system_error>
#include <thread>
#include <vector>

namespace trovik {

namespace {

/// Address space per thread: its stack and the heap that the C library reserves for it.
constexpr uint64_t addressBytesPerThread = uint64_t{144} << 20;
/// Address space that remains free for the data of libraries.
constexpr uint64_t addressReserve = uint64_t{64} << 20;

/// Starts up to `wanted` threads and returns the number of threads that can run at the same time.
unsigned CountGrantedThreads(unsigned wanted) {
    std::mutex mutex;
    std::condition_variable over;
    bool isOver = false;
    std::vector<std::thread> threads;
    threads.reserve(wanted);
    try {
        while (threads.size() + 1 < wanted) {
            threads.emplace_back([&] {
                std::unique_lock lock(mutex);
                over.wait(lock, [&] { return isOver; });
            });
        }
    } catch (const std::system_error&) {
        // No further thread can be started.
    } catch (const std::bad_alloc&) {
        // No further thread can be started, because its state does not fit into the address space.
    }
    {
        const std::lock_guard lock(mutex);
        isOver = true;
    }
    over.notify_all();
    for (std::thread& thread : threads) thread.join();
    return static_cast<unsigned>(threads.size()) + 1;
}

/// Returns the number of threads, up to `wanted`, that fit into the address space not needed for
/// the work.
unsigned CountAddressableThreads(unsigned wanted, uint64_t workBytes) {
    // Only address space is considered, because stacks reserve address space but use little
    // physical memory.
    const std::optional<uint64_t> left = QueryFreeAddressSpace();
    if (!left) return wanted;
    const uint64_t free = *left;
    const uint64_t reserved = workBytes + addressReserve;
    const uint64_t fitting = free > reserved ? (free - reserved) / addressBytesPerThread : 0;
    return static_cast<unsigned>(std::min<uint64_t>(wanted, fitting + 1));
}

}  // namespace

unsigned LimitWorkerThreads(uint64_t workBytes) {
    static std::mutex mutex;
    static unsigned granted = 0;
    // Never destroyed: oneTBB may be in use until the program exits.
    static auto* controls = new std::vector<std::unique_ptr<tbb::global_control>>;
    const std::lock_guard lock(mutex);
    const unsigned wanted =
        granted != 0 ? granted : std::max(1u, std::thread::hardware_concurrency());
    unsigned possible = CountAddressableThreads(wanted, workBytes);
    if (granted == 0) possible = CountGrantedThreads(possible);
    if (granted == 0 || possible < granted) {
        controls->push_back(std::make_unique<tbb::global_control>(
            tbb::global_control::max_allowed_parallelism, possible));
        granted = possible;
    }
    return granted;
}

void RunInParallel(uint32_t count,
                   uint32_t grain,
                   const std::function<void(uint32_t)>& work,
                   unsigned threads) {
    if (threads > 1 && count > grain) threads = std::min(threads, LimitWorkerThreads());
    if (threads <= 1 || count <= grain) {
        for (uint32_t i = 0; i < count; ++i) work(i);
        return;
    }
    tbb::task_arena arena(static_cast<int>(threads));
    arena.execute([&] {
        tbb::parallel_for(tbb::blocked_range<uint32_t>(0, count, grain),
                          [&](const tbb::blocked_range<uint32_t>& some) {
                              for (uint32_t i = some.begin(); i != some.end(); ++i) work(i);
                          });
    });
}

}  // namespace trovik
