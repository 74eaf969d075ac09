// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "brush/SwiftStroke.h"

#include <array>

namespace trovik {

using PatchKernelPointer = bool (SwiftStroke::*)(uint32_t face);

/// All specialisations of the patch kernel; entry i has the switches KernelSwitches::FromIndex(i).
/// Filled when the library is loaded and constant afterwards.
class PatchKernelTable {
public:
    PatchKernelTable();
    PatchKernelPointer operator[](unsigned index) const { return entries[index]; }

    static constexpr unsigned shardSize = 64;
    static constexpr unsigned shardCount = KernelSwitches::count / shardSize;

private:
    std::array<PatchKernelPointer, KernelSwitches::count> entries{};
};

/// Writes the 64 kernels of a shard to the shard's table entries. Defined in the instance files.
template <unsigned shard>
void FillPatchKernelShard(PatchKernelPointer* entries);

extern const PatchKernelTable patchKernels;

}  // namespace trovik
