// SPDX-License-Identifier: Apache-2.0
#include "python/core/EngineUse.h"

#include <atomic>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace trovik::python {

namespace {

/// Never destroyed: Python may destroy documents while the process's static objects are being
/// destroyed.
struct Shared {
    std::mutex engine;
    std::atomic<std::thread::id> user;
    std::mutex retiring;
    std::vector<std::shared_ptr<void>> retired;
};

Shared& State() {
    static auto* shared = new Shared;
    return *shared;
}

/// The calling thread must hold the lock of the engine.
void DestroyRetired() {
    std::vector<std::shared_ptr<void>> objects;
    {
        const std::lock_guard lock(State().retiring);
        objects.swap(State().retired);
    }
}

}  // namespace

EngineUse::EngineUse() {
    State().engine.lock();
    State().user = std::this_thread::get_id();
}

EngineUse::~EngineUse() {
    DestroyRetired();
    State().user = std::thread::id();
    State().engine.unlock();
}

bool EngineUse::IsOnThisThread() { return State().user == std::this_thread::get_id(); }

void EngineUse::Retire(std::shared_ptr<void> object) {
    {
        const std::lock_guard lock(State().retiring);
        State().retired.push_back(std::move(object));
    }
    if (IsOnThisThread() || !State().engine.try_lock()) return;
    DestroyRetired();
    State().engine.unlock();
}

}  // namespace trovik::python
