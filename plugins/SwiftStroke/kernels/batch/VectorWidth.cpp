// SPDX-License-Identifier: Apache-2.0
#include "kernels/batch/BatchStages.h"

#include <cassert>
#include <utility>

namespace trovik {

namespace {

VectorWidth& Chosen() {
    static VectorWidth chosen =
        IsAvailable(VectorWidth::Eight) ? VectorWidth::Eight : VectorWidth::Four;
    return chosen;
}

}  // namespace

bool IsAvailable(VectorWidth width) {
#if defined(__x86_64__)
    return width == VectorWidth::Four || __builtin_cpu_supports("avx2");
#else
    return width == VectorWidth::Four;
#endif
}

const BatchStages& StagesOf(VectorWidth width) {
#if defined(__x86_64__)
    if (width == VectorWidth::Eight) return batchStages8;
#endif
    assert(width == VectorWidth::Four);
    return batchStages4;
}

VectorWidth CurrentVectorWidth() { return Chosen(); }

VectorWidth UseVectorWidth(VectorWidth width) {
    assert(IsAvailable(width));
    return std::exchange(Chosen(), width);
}

}  // namespace trovik
