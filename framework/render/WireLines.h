// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/render/EmbreeScene.h"
#include "framework/render/RenderViewport.h"

namespace trovik {

/// Draws the edges of faces as lines of constant width in image space. Distances are measured from
/// pixels to projected edges, so that lines keep their width even on faces seen edge-on.
///
/// Caches the projection of the last face, because most samples of a pixel hit the same face. Use
/// one object per thread.
class WireLines {
public:
    WireLines(const EmbreeScene& scene, const RenderViewport& view);

    /// Returns the fraction of light, 0 to 1, that remains after the lines darken a sample seen
    /// through a point of the image.
    float Remaining(const SurfaceSample& sample, float pixelX, float pixelY);

private:
    struct Segment {
        Vector from;
        Vector to;
    };
    void Project(const SurfaceSample& sample);

    const EmbreeScene& scene;
    const RenderViewport& view;
    bool hasFace = false;
    uint32_t mesh = 0;
    uint32_t face = 0;
    Segment edges[4];
    uint32_t edgeCount = 0;
    float strength = 0.0f;
};

}  // namespace trovik
