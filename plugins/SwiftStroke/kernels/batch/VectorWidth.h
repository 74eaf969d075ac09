// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

/// \file The number of vertices that the batch stages process at a time. All widths give
/// bit-identical results: each number is computed by the same operations in the same order, without
/// fused operations.
namespace trovik {

enum class VectorWidth {
    Four,   ///< SSE2, available on every x86-64 CPU
    Eight,  ///< AVX2
};
/// All widths, the narrowest first.
inline constexpr VectorWidth allVectorWidths[] = {VectorWidth::Four, VectorWidth::Eight};

/// Returns whether the CPU supports the width.
bool IsAvailable(VectorWidth width);
/// Returns the width in use: the widest that the CPU supports, unless UseVectorWidth has set a
/// different one.
VectorWidth CurrentVectorWidth();
/// Sets the width, so that results can be compared. Must not be called while a dab is running.
/// \return the previous width.
VectorWidth UseVectorWidth(VectorWidth width);

}  // namespace trovik
