// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <limits>
#include <type_traits>

namespace trovik {

/// Converts an image sample to a float: integers are divided by the largest value of their type.
template <class Sample>
float SampleValue(Sample sample) {
    if constexpr (std::is_floating_point_v<Sample>) {
        return static_cast<float>(sample);
    } else if constexpr (sizeof(Sample) < 4) {
        // Dividend and divisor are exactly representable as floats, so the result is the float
        // nearest to the quotient.
        constexpr auto largest = static_cast<float>(std::numeric_limits<Sample>::max());
        return static_cast<float>(sample) / largest;
    } else {
        constexpr auto largest = static_cast<double>(std::numeric_limits<Sample>::max());
        return static_cast<float>(static_cast<double>(sample) / largest);
    }
}

}  // namespace trovik
