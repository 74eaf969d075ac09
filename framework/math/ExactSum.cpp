// SPDX-License-Identifier: Apache-2.0
#include "framework/math/ExactSum.h"

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

namespace trovik {

namespace {

/// A sum of floats, stored as non-overlapping doubles in ascending order of magnitude: an expansion
/// as in Shewchuk: "Adaptive Precision Floating-Point Arithmetic and Fast Robust Geometric
/// Predicates" (1997).
class Expansion {
public:
    void Add(double term) {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < parts.size(); ++i) {
            double part = parts[i];
            if (std::fabs(term) < std::fabs(part)) std::swap(term, part);
            const double high = term + part;
            const double low = part - (high - term);
            if (low != 0.0) parts[kept++] = low;
            term = high;
        }
        parts.resize(kept);
        parts.push_back(term);
    }

    /// The sum, rounded once to the nearest double, ties to even.
    double Rounded() const {
        if (parts.empty()) return 0.0;
        std::size_t i = parts.size() - 1;
        double high = parts[i];
        double low = 0.0;
        while (i > 0 && low == 0.0) {
            const double before = high;
            const double part = parts[--i];
            high = before + part;
            low = part - (high - before);
        }
        // If the rounding was a tie, `low` is half a unit in the last place. The lower parts, which
        // have not been added yet, then determine the direction of rounding.
        if (i > 0 && std::signbit(low) == std::signbit(parts[i - 1])) {
            const double twice = low * 2.0;
            const double further = high + twice;
            if (further - high == twice) high = further;
        }
        return high;
    }

private:
    std::vector<double> parts;
};

}  // namespace

DoubleVector SumByExpansion(const Vector* terms, std::size_t count) {
    const auto sumOf = [terms, count](float Vector::*component) {
        Expansion expansion;
        for (std::size_t i = 0; i < count; ++i) {
            const auto term = static_cast<double>(terms[i].*component);
            // The error terms of an expansion are undefined for infinities and NaN.
            if (!std::isfinite(term)) return std::numeric_limits<double>::quiet_NaN();
            expansion.Add(term);
        }
        return expansion.Rounded();
    };
    return {sumOf(&Vector::x), sumOf(&Vector::y), sumOf(&Vector::z)};
}

}  // namespace trovik
