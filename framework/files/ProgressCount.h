// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/MeshSource.h"

#include <cstdint>

namespace trovik {

/// Counts what a writer has done, and tells of it block by block.
class ProgressCount {
public:
    ProgressCount(const WriteProgress& listener, std::uint64_t totalCount)
        : progress(listener), total(totalCount) {}
    void Add(std::uint64_t count) {
        done += count;
        if (progress) {
            progress(done, total);
        }
    }

private:
    const WriteProgress& progress;
    std::uint64_t total;
    std::uint64_t done = 0;
};

}  // namespace trovik
