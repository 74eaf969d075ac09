// SPDX-License-Identifier: Apache-2.0

/// \file The loops for AVX2. Only the templates over lanes are compiled for AVX2, in a region:
/// every other header must be included before the region. If the compiler emitted an inline
/// function of such a header with AVX2 instructions, the linker could choose this version for the
/// whole library, and a CPU without AVX2 would run it. A check after the build verifies that the
/// object file defines no other functions.
#include "kernels/batch/BatchStages.h"
#include "kernels/batch/RowSteps.h"
#include "kernels/stages/DabConstants.h"

#include <algorithm>
#include <bit>

#if defined(__x86_64__)
#include <immintrin.h>

#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2")
#endif

#include "kernels/batch/StagesOfLanes.h"
#include "kernels/lanes/Lanes8.h"

namespace trovik {

constinit const BatchStages batchStages8 = StagesOfLanes<Lanes8>();

}  // namespace trovik

#if defined(__clang__)
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif
#endif
