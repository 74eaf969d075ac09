// SPDX-License-Identifier: Apache-2.0
#include "kernels/batch/VectorWidth.h"

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

VectorWidth CurrentVectorWidth() { return Chosen(); }

VectorWidth UseVectorWidth(VectorWidth width) {
    assert(IsAvailable(width));
    return std::exchange(Chosen(), width);
}

}  // namespace trovik
