// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cmath>

namespace trovik {

/// Three floats. Functions that return a vector specify its space (world or mesh-local). Sums are
/// evaluated from left to right without fused operations, so that results are bit-identical on all
/// machines.
struct Vector {
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;

    constexpr Vector() = default;
    constexpr Vector(float px, float py, float pz) : x(px), y(py), z(pz) {}

    Vector operator+(const Vector& o) const { return {x + o.x, y + o.y, z + o.z}; }
    Vector operator-(const Vector& o) const { return {x - o.x, y - o.y, z - o.z}; }
    Vector operator-() const { return {-x, -y, -z}; }
    Vector operator*(float f) const { return {x * f, y * f, z * f}; }
    Vector& operator+=(const Vector& o) { return *this = *this + o; }
    Vector& operator-=(const Vector& o) { return *this = *this - o; }
    Vector& operator*=(float f) { return *this = *this * f; }
    bool operator==(const Vector&) const = default;

    /// Dot product; the terms are added from left to right.
    float operator|(const Vector& o) const { return x * o.x + y * o.y + z * o.z; }
    /// Cross product.
    Vector operator&(const Vector& o) const {
        return {y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x};
    }
    /// sqrt(x x + y y + z z).
    float Length() const { return std::sqrt(x * x + y * y + z * z); }
    /// Multiplies by 1 / Length(); a zero vector is unchanged.
    void Normalize() {
        const float length = Length();
        if (length != 0.0f) *this *= 1.0f / length;
    }
    /// Returns the normalised vector; zero for a zero vector.
    Vector Normalized() const {
        Vector result = *this;
        result.Normalize();
        return result;
    }
};
static_assert(sizeof(Vector) == 12);

/// Four floats in memory order.
struct Vector4 {
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;
    float w = 0.0f;
};
static_assert(sizeof(Vector4) == 16);

/// Corners of an axis-aligned box; empty while minX exceeds maxX.
struct AxisAlignedBoundingBox {
    float minX = 1.0f, minY = 1.0f, minZ = 1.0f;
    float maxX = -1.0f, maxY = -1.0f, maxZ = -1.0f;

    bool IsEmpty() const { return minX > maxX; }
    /// An empty box becomes the point; any other box is extended to contain it.
    void Extend(const Vector& p) {
        if (IsEmpty()) {
            *this = {p.x, p.y, p.z, p.x, p.y, p.z};
            return;
        }
        if (p.x < minX) minX = p.x;
        if (p.y < minY) minY = p.y;
        if (p.z < minZ) minZ = p.z;
        if (p.x > maxX) maxX = p.x;
        if (p.y > maxY) maxY = p.y;
        if (p.z > maxZ) maxZ = p.z;
    }
};
static_assert(sizeof(AxisAlignedBoundingBox) == 24);

}  // namespace trovik
