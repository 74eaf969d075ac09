// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/batch/VectorWidth.h"

#include <vector>

namespace trovik::test {

/// Returns the vector widths that the CPU supports, the narrowest first.
inline std::vector<VectorWidth> AvailableWidths() {
    std::vector<VectorWidth> widths;
    for (const VectorWidth width : allVectorWidths)
        if (IsAvailable(width)) widths.push_back(width);
    return widths;
}

/// Returns the vector widths that the CPU supports and that are compared with the narrowest.
inline std::vector<VectorWidth> WiderWidths() {
    std::vector<VectorWidth> widths = AvailableWidths();
    widths.erase(widths.begin());
    return widths;
}

/// Uses a vector width during its lifetime.
class WithWidth {
public:
    explicit WithWidth(VectorWidth width) : before(UseVectorWidth(width)) {}
    ~WithWidth() { UseVectorWidth(before); }
    WithWidth(const WithWidth&) = delete;
    WithWidth& operator=(const WithWidth&) = delete;

private:
    VectorWidth before;
};

}  // namespace trovik::test
