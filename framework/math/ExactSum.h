// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace trovik {

/// A double-precision sum of single-precision vectors, before the result is rounded to single
/// precision.
struct DoubleVector {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

/// A running sum in double precision that detects rounding.
///
/// A double-precision sum of floats is almost always exact, because the magnitudes of the
/// coordinates of neighbouring vertices rarely differ by more than the 29 additional bits of a
/// double. An exact sum does not depend on the order of its terms. If an addition does round,
/// IsExact() returns false, and the caller sums the same terms again with ExactSum.
class RunningSum {
public:
    void Add(const Vector& term) {
        Add(sum.x, static_cast<double>(term.x));
        Add(sum.y, static_cast<double>(term.y));
        Add(sum.z, static_cast<double>(term.z));
        ++count;
    }
    bool IsExact() const { return lost == 0.0; }
    const DoubleVector& Value() const { return sum; }
    /// Number of terms added so far.
    uint32_t Count() const { return count; }

private:
    // The rounding error of an addition, from Knuth: "The Art of Computer Programming, Volume 2:
    // Seminumerical Algorithms" (1997), section 4.2.2, theorem B. If a term is infinite, the error
    // is NaN, which counts as inexact.
    void Add(double& total, double term) {
        const double next = total + term;
        const double rounded = next - total;
        lost += std::fabs((total - (next - rounded)) + (term - rounded));
        total = next;
    }

    DoubleVector sum;
    /// Sum of the magnitudes of all rounding errors.
    double lost = 0.0;
    uint32_t count = 0;
};

/// Returns the mean of `count` terms whose sum is `sum`, rounded once.
inline Vector MeanOf(const DoubleVector& sum, uint32_t count) {
    const auto n = static_cast<double>(count);
    return {static_cast<float>(sum.x / n),
            static_cast<float>(sum.y / n),
            static_cast<float>(sum.z / n)};
}

/// Implements ExactSum for terms whose running sum in double precision is inexact. The algorithm is
/// from Shewchuk: "Adaptive Precision Floating-Point Arithmetic and Fast Robust Geometric
/// Predicates" (1997).
TROVIK_API DoubleVector SumByExpansion(const Vector* terms, std::size_t count);

/// Returns the sum of the terms, computed exactly and rounded once to double precision. The order
/// of the terms does not affect the sum, and negating all terms negates it. The sum of an empty
/// list is zero. If a term is non-finite, so is the sum.
inline DoubleVector ExactSum(const Vector* terms, std::size_t count) {
    RunningSum quick;
    for (std::size_t i = 0; i < count; ++i) quick.Add(terms[i]);
    return quick.IsExact() ? quick.Value() : SumByExpansion(terms, count);
}

}  // namespace trovik
