// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/HWVector.h"

#include <cmath>

/// \file One lane: the width of the vertex step. See Xyz.h for the lane types.
namespace trovik {

struct I32x1 {
    int32_t value;

    static I32x1 Splat(uint32_t i) { return {static_cast<int32_t>(i)}; }
    /// Whether the integer, interpreted as unsigned, exceeds `last`, which must not be negative.
    bool IsBeyond(const I32x1& last) const {
        return static_cast<uint32_t>(value) > static_cast<uint32_t>(last.value);
    }
    I32x1 ZeroWhere(bool mask) const { return {mask ? 0 : value}; }
};

struct F32x1 {
    using Integers = I32x1;

    float value;

    static F32x1 Splat(float f) { return {f}; }
    static F32x1 Load(const float* from) { return {*from}; }
    void Store(float* to) const { *to = value; }

    F32x1 operator+(const F32x1& o) const { return {value + o.value}; }
    F32x1 operator-(const F32x1& o) const { return {value - o.value}; }
    F32x1 operator*(const F32x1& o) const { return {value * o.value}; }
    F32x1 Sqrt() const { return {std::sqrt(value)}; }
    F32x1 ZeroWhere(bool mask) const { return {mask ? 0.0f : value}; }
    /// Also true if either operand is NaN.
    bool IsNotGreater(const F32x1& o) const { return !(value > o.value); }
    /// Truncates. NaN and values beyond the integer range become the most negative integer.
    I32x1 Truncated() const { return {_mm_cvttss_si32(_mm_set_ss(value))}; }
    static F32x1 Gather(const float* table, const I32x1& index) { return {table[index.value]}; }

    /// If the comparison is false, as it is for NaN, the result is the second operand.
    static F32x1 Minimum(const F32x1& a, const F32x1& b) { return {a.value < b.value ? a : b}; }
    static F32x1 Maximum(const F32x1& a, const F32x1& b) { return {a.value > b.value ? a : b}; }
};

}  // namespace trovik
