// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/MeshRecords.h"

#include <cstdint>

namespace trovik {

/// Returns the fraction of a displacement that a freeze amount permits. It decreases linearly from
/// 1 at amount 0 to 0 at amount 127.
inline float UnfrozenFraction(uint32_t amount) {
    return 1.0f - static_cast<float>(amount) / static_cast<float>(freezeAmountMask);
}

}  // namespace trovik
