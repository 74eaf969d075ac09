// SPDX-License-Identifier: Apache-2.0
#include "engine/DabPacer.h"

namespace trovik::studio {

void DabPacer::Go() {
    {
        const std::lock_guard lock(mutex);
        mayGo = true;
    }
    wake.notify_one();
}

void DabPacer::Release() {
    {
        const std::lock_guard lock(mutex);
        isReleased = true;
    }
    wake.notify_one();
}

void DabPacer::Begin() {
    const std::lock_guard lock(mutex);
    mayGo = isReleased = false;
}

void DabPacer::Wait() {
    std::unique_lock lock(mutex);
    wake.wait(lock, [this] { return mayGo || isReleased; });
    mayGo = false;
}

}  // namespace trovik::studio
