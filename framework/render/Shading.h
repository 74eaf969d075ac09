// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/render/EmbreeScene.h"
#include "framework/render/PixelSamples.h"
#include "framework/render/RenderViewport.h"

namespace trovik {

/// The lighting of one sample. The sampled visibility is kept separate from the analytically
/// computed light. The two are multiplied after the visibility has been averaged and filtered; see
/// Heitz, Hill, McGuire: "Combining Analytic Direct Illumination and Stochastic Shadows" (2018).
struct LitSample {
    Vector albedo;
    /// Reflected light from the surroundings and from the key light, without occlusion.
    Vector ambient;
    Vector key;
    /// 1 if the ambient ray is unoccluded, 0 if it is blocked.
    float openness = 0.0f;
    /// The weight of the shadow ray (0 if it points below the horizon), and whether the ray is
    /// unoccluded.
    float keyWeight = 0.0f;
    float keyVisible = 0.0f;
};

/// The clay material and the studio lighting of renders: a wide, warm key light from the upper
/// left, and a soft environment that is brighter above and in front. Lights are fixed relative to
/// the camera, so that a mesh is lit in the same way from every side.
class Shading {
public:
    Shading(const EmbreeScene& scene, const RenderViewport& view);

    /// Computes the lighting of a sample seen from the direction `toEye` (unit length). If `flat`
    /// is set, the face normal is used. Traces two rays.
    /// \param index  index of the sample in its pixel.
    LitSample Light(const SurfaceSample& sample,
                    bool flat,
                    const Vector& toEye,
                    const PixelSamples& points,
                    int index) const;

    /// Computes the linear colour from averaged light and visibility (each 0 .. 1).
    static Vector Combine(const Vector& albedo,
                          const Vector& ambient,
                          const Vector& key,
                          float openness,
                          float keyVisible);

    /// Returns the brightness of a matte surface lit by a light at the eye.
    static float Headlight(const SurfaceSample& sample, const Vector& toEye);

    /// Returns the colour of the backdrop: `height` is 0 at the lower edge of the image and 1 at
    /// the upper edge.
    static Vector Backdrop(float height);

private:
    Vector Start(const SurfaceSample& sample, bool flat) const;
    float Openness(const Vector& start,
                   const Vector& normal,
                   const Vector& faceNormal,
                   const SamplePoint& direction,
                   float reach) const;
    Vector Surroundings(const Vector& normal) const;

    const EmbreeScene& scene;
    float extent;
    Vector right, up, back;
    Vector keyDirection;
    /// Two directions perpendicular to that of the key light.
    Vector keyAcross[2];
};

}  // namespace trovik
