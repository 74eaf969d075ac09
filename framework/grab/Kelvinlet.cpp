// SPDX-License-Identifier: Apache-2.0
#include "framework/grab/Kelvinlet.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

constexpr double scaleStep = 1.1;
/// Growth along the axis is limited, so that no point passes the press point.
constexpr float minGrowth = -0.9f;
/// Pinch shrinks the plane by half of the growth.
constexpr float maxPinch = 1.8f;

}  // namespace

// The weights of the scales cancel the slowest terms of the far field: their sum is 0 and, with
// three scales, also the sum of their products with the squared radii.
Kelvinlet::Kelvinlet(ElasticMode deformation, float radius, const ElasticMaterial& material)
    : mode(deformation),
      ratio(0.25 / (1.0 - std::clamp(static_cast<double>(material.poissonRatio),
                                     0.0,
                                     static_cast<double>(maxPoissonRatio)))),
      count(std::clamp(material.scales, 1, maxScales)),
      epsilons{radius, radius * scaleStep, radius * scaleStep * scaleStep},
      weights{1.0, count == 2 ? -1.0 : 0.0, 0.0} {
    if (count == 3) {
        const double first = epsilons[0] * epsilons[0];
        const double second = epsilons[1] * epsilons[1];
        const double third = epsilons[2] * epsilons[2];
        weights[1] = -(third - first) / (third - second);
        weights[2] = (second - first) / (third - second);
    }
    factor = 1.0 / Sum(0.0).direct;
}

Kelvinlet::Pair Kelvinlet::OfScale(double epsilon, double squaredDistance) const {
    const double square = epsilon * epsilon;
    const double inverse = 1.0 / std::sqrt(squaredDistance + square);
    const double cube = inverse * inverse * inverse;
    const double fifth = cube * inverse * inverse;
    switch (mode) {
        case ElasticMode::Grab:
            return {(1.0 - ratio) * inverse + 0.5 * square * cube, ratio * cube};
        case ElasticMode::Pinch:
            return {(2.0 * ratio - 1.0) * cube - 1.5 * square * fifth, -3.0 * ratio * fifth};
        case ElasticMode::Twist:
        case ElasticMode::Scale:
            break;
    }
    return {cube + 1.5 * square * fifth, 0.0};
}

Kelvinlet::Pair Kelvinlet::Sum(double squaredDistance) const {
    Pair sum{0.0, 0.0};
    for (int i = 0; i < count; ++i) {
        const Pair one = OfScale(epsilons[i], squaredDistance);
        sum.direct += weights[i] * one.direct;
        sum.radial += weights[i] * one.radial;
    }
    return sum;
}

Kelvinlet::Coefficients Kelvinlet::At(const Vector& arm) const {
    const double x = arm.x;
    const double y = arm.y;
    const double z = arm.z;
    const Pair sum = Sum((x * x + y * y) + z * z);
    return {static_cast<float>(sum.direct * factor), static_cast<float>(sum.radial * factor)};
}

Vector Kelvinlet::Displacement(const Vector& arm, const Coefficients& at, const Load& load) const {
    const Vector& axis = load.vector;
    switch (mode) {
        case ElasticMode::Grab:
            return axis * at.direct + arm * (at.radial * (arm | axis));
        case ElasticMode::Twist: {
            const float half = 0.5f * (load.amount * at.direct);
            const Vector turned = axis & arm;
            return (turned * half + (axis & turned) * (half * half)) *
                   (2.0f / (1.0f + half * half));
        }
        case ElasticMode::Scale:
            return arm * (std::max(load.amount, minGrowth) * at.direct);
        case ElasticMode::Pinch:
            break;
    }
    const float amount = std::clamp(load.amount, minGrowth, maxPinch);
    const float along = axis | arm;
    const Vector strained = (axis * (1.5f * along) - arm * 0.5f) * amount;
    return strained * at.direct + arm * (at.radial * (arm | strained));
}

float Kelvinlet::RelativeSize(const Vector& arm, const Coefficients& at) const {
    const float square = arm | arm;
    const float size = std::fabs(at.direct) + std::fabs(at.radial) * square;
    if (mode == ElasticMode::Grab) return size;
    return size * std::sqrt(square) / static_cast<float>(epsilons[0]);
}

}  // namespace trovik
