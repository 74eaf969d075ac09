// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace trovik {

/// Returns the light that a surface receives from a wide source, relative to a surface that faces
/// the source. It is 1 if the normal points to the centre of the source and falls off to 0 where
/// the whole source is below the horizon. This is the mean of max(0, c) over cosines c that are
/// evenly distributed within `softness` of `cosine`. The slope is continuous, so that the edge of
/// the light is not visible as a line on a smooth surface.
/// \param cosine  cosine of the angle between the normal and the direction to the source's centre.
/// \param softness  sine of the angular radius of the source, above 0, at most 1.
inline float SoftFacing(float cosine, float softness) {
    if (cosine >= softness) return cosine;
    if (cosine <= -softness) return 0.0f;
    const float above = cosine + softness;
    return above * above / (4.0f * softness);
}

}  // namespace trovik
