// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"

#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <random>

namespace trovik::test {

/// Random numbers that are the same on every machine: the language standard defines the generator,
/// and its words are converted to floats here.
class RandomNumbers {
public:
    explicit RandomNumbers(uint32_t seed) : words(seed) {}

    /// A number from 0 to count - 1.
    uint32_t Below(uint32_t count) { return Word() % count; }
    /// A number from `low` up to, but not including, `high`.
    float Between(float low, float high) {
        return low + (high - low) * (static_cast<float>(Word() >> 8) / 16777216.0f);
    }
    bool Chance(float share) { return Between(0.0f, 1.0f) < share; }
    Vector In(float low, float high) {
        const float x = Between(low, high);
        const float y = Between(low, high);
        return {x, y, Between(low, high)};
    }
    template <typename T>
    T OneOf(std::initializer_list<T> values) {
        return values.begin()[Below(static_cast<uint32_t>(values.size()))];
    }

private:
    uint32_t Word() { return static_cast<uint32_t>(words()); }
    std::mt19937 words;
};

/// The value of the environment variable, which must be above 0; `otherwise` if the variable is not
/// set.
inline uint32_t CountFromEnvironment(const char* variable, uint32_t otherwise) {
    const char* wanted = std::getenv(variable);
    const long count = wanted == nullptr ? 0 : std::strtol(wanted, nullptr, 10);
    return count > 0 ? static_cast<uint32_t>(count) : otherwise;
}

}  // namespace trovik::test
