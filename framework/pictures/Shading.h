// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/pictures/EmbreeScene.h"

namespace trovik {

/// A stream of numbers in [0, 1) that depends on nothing but its seed.
class HashSampler {
public:
    explicit HashSampler(uint32_t seed) : state(seed * 747796405u + 2891336453u) {}
    float Next();

private:
    uint32_t state;
};

/// Light and material of the pictures. Directions are in the camera's frame, so that a mesh is lit
/// alike from wherever it is seen.
class Shading {
public:
    Shading(const EmbreeScene& scene, const Vector& right, const Vector& up, const Vector& back);
    /// Linear colour of a sample seen from `toEye` (unit length).
    Vector Shade(const SurfaceSample& sample, const Vector& toEye, HashSampler& random) const;
    /// The backdrop: `height` from 0 at the lower edge of the picture to 1 at the upper.
    static Vector Backdrop(float height);

private:
    struct Light {
        Vector direction;
        Vector color;
        /// Half of the opening of the light as a sine; 0 casts no shadow.
        float softness;
    };

    float Visible(const SurfaceSample& sample, const Light& light, HashSampler& random) const;
    float Openness(const SurfaceSample& sample, HashSampler& random) const;

    const EmbreeScene& scene;
    float extent;
    Light lights[3];
};

}  // namespace trovik
