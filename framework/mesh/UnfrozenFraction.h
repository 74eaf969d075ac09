// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/MeshRecords.h"

#include <cstdint>

namespace trovik {

/// The fraction of a displacement that a freeze amount permits: from 1 for 0 to 0 for 127.
inline float UnfrozenFraction(uint32_t amount) {
    return 1.0f - static_cast<float>(amount) / static_cast<float>(freezeAmountMask);
}

}  // namespace trovik
