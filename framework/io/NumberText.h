// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <charconv>
#include <cstddef>
#include <limits>
#include <string_view>
#include <system_error>

namespace trovik {

/// Parses a decimal number and rounds it to the nearest float, independently of the locale. Values
/// that are too small become a signed zero, and values that are too large become an infinity; `nan`
/// and `inf` are accepted.
/// \return false unless the whole text is a number.
inline bool ParseFloat(std::string_view text, float& value) {
    // A plus sign is common in files, but std::from_chars rejects it.
    if (text.size() > 1 && text.front() == '+' && text[1] != '-') {
        text.remove_prefix(1);
    }
    const char* const end = text.data() + text.size();
    const auto [used, error] = std::from_chars(text.data(), end, value);
    if (used != end || error == std::errc::invalid_argument) {
        return false;
    }
    if (error == std::errc::result_out_of_range) {
        // `value` is not set in this case. Parsing in double precision shows whether the number is
        // too small or too large; if it is also out of range for a double, the sign of the exponent
        // decides.
        double wide = 0.0;
        bool tooSmall = false;
        if (std::from_chars(text.data(), end, wide).ec == std::errc()) {
            tooSmall = wide > -1.0 && wide < 1.0;
        } else {
            const std::size_t exponent = text.find_first_of("eE");
            tooSmall = exponent == std::string_view::npos
                           ? text.find_first_of("123456789") > text.find('.')
                           : exponent + 1 < text.size() && text[exponent + 1] == '-';
        }
        value = tooSmall ? 0.0f : std::numeric_limits<float>::infinity();
        if (text.front() == '-') {
            value = -value;
        }
    }
    return true;
}

}  // namespace trovik
