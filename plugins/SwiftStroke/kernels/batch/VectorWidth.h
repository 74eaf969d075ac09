// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

/// How many vertices the batch stages take at a time. All widths give the same bits: each number is
/// made by the same operations in the same order, none of them fused.
namespace trovik {

enum class VectorWidth {
    Four,   ///< SSE2, which every x86-64 has
    Eight,  ///< AVX2
};

/// Whether the processor can.
bool IsAvailable(VectorWidth width);
/// The widest that the processor can, unless told otherwise below.
VectorWidth PresentVectorWidth();
/// For comparisons. Not while a dab runs. \return the width before.
VectorWidth UseVectorWidth(VectorWidth width);

}  // namespace trovik
