// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

/// Number of vertices that the batch stages process at a time. All widths give bit-identical
/// results: each number is computed by the same operations in the same order, without fused
/// operations.
namespace trovik {

enum class VectorWidth {
    Four,   ///< SSE2, which every x86-64 processor has
    Eight,  ///< AVX2
};

/// Returns whether the processor supports the width.
bool IsAvailable(VectorWidth width);
/// Returns the width in use: the widest that the processor supports, unless UseVectorWidth has set
/// a different one.
VectorWidth CurrentVectorWidth();
/// Sets the width, for comparisons. Must not be called while a dab is running.
/// \return the previous width.
VectorWidth UseVectorWidth(VectorWidth width);

}  // namespace trovik
