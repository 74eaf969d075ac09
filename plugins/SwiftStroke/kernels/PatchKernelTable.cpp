// SPDX-License-Identifier: Apache-2.0
#include "kernels/PatchKernelTable.h"

#include <utility>

namespace trovik {

PatchKernelTable::PatchKernelTable() {
    [this]<unsigned... shards>(std::integer_sequence<unsigned, shards...>) {
        (FillPatchKernelShard<shards>(entries.data() + shards * shardSize), ...);
    }
    (std::make_integer_sequence<unsigned, shardCount>{});
    for (unsigned index = 0; index < KernelSwitches::count; ++index)
        entries[index] = entries[KernelOf(index)];
}

}  // namespace trovik
