// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "render/RenderSettings.h"
#include "render/SurfaceBuffers.h"

namespace trovik::studio {

/// The surface under each pixel, in rows from top to bottom.
struct IdImage {
    static constexpr uint32_t none = 0xffffffffu;

    int width = 0;
    int height = 0;
    /// Patch number, and face number within the level; an unused number where the surface does not
    /// cover the pixel.
    std::vector<uint32_t> patches;
    std::vector<uint32_t> faces;
    /// World-space distance from the eye along the view direction, negative behind the eye of an
    /// orthographic view; 0 where the surface does not cover the pixel.
    std::vector<float> depths;
};

/// Draws the surface without multisampling into a separate buffer and reads it back, which waits
/// for the GPU; for tests and single picks. Requires a current context.
/// \param view  the size must be 16384 pixels at most. \param strideLog2  level of detail; a coarse
/// cell has the number of its first face. \throw std::runtime_error if the buffer cannot be
/// created.
IdImage DrawIds(SurfaceBuffers& surface,
                const RenderView& view,
                const Matrix& toWorld,
                uint32_t strideLog2 = 0);

}  // namespace trovik::studio
