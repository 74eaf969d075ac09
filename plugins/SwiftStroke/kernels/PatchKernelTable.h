// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "brush/SwiftStroke.h"

#include <array>

namespace trovik {

using PatchKernelPointer = bool (SwiftStroke::*)(uint32_t face);

/// All specialisations of the patch kernel; entry i has the switches KernelSwitches::FromIndex(i).
/// Filled when the library is loaded and constant afterwards. Tiling has no effect without a stamp,
/// so the 256 entries that tile without a stamp are those that do not tile.
class PatchKernelTable {
public:
    PatchKernelTable();
    PatchKernelPointer operator[](unsigned index) const { return entries[index]; }

    static constexpr unsigned shardSize = 64;
    static constexpr unsigned shardCount = KernelSwitches::count / shardSize;

    /// Returns the index of the kernel in entry `index`.
    static constexpr unsigned KernelOf(unsigned index) {
        KernelSwitches switches = KernelSwitches::FromIndex(index);
        switches.tiledStamp = switches.tiledStamp && switches.withStamp;
        return switches.Index();
    }

private:
    std::array<PatchKernelPointer, KernelSwitches::count> entries{};
};

/// Writes the kernels of a shard to the shard's 64 table entries; skips those that KernelOf
/// replaces. Defined in the instance files.
template <unsigned shard>
void FillPatchKernelShard(PatchKernelPointer* entries);

extern const PatchKernelTable patchKernels;

}  // namespace trovik
