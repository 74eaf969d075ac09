// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/render/EmbreeScene.h"
#include "framework/render/PictureView.h"

namespace trovik {

/// The edges of faces as lines of constant width on the screen. Distances are measured between
/// pixels and projected edges, so that lines keep their width where faces are seen edge-on.
///
/// Holds the projection of the face that was asked for last, as the samples of a pixel mostly hit
/// one face: one object for each thread.
class WireLines {
public:
    WireLines(const EmbreeScene& scene, const PictureView& view);

    /// What is left of the light, 0 to 1, of a sample that was seen through a point of the picture.
    float Remaining(const SurfaceSample& sample, float pixelX, float pixelY);

private:
    struct Segment {
        Vector from;
        Vector to;
    };
    void Project(const SurfaceSample& sample);

    const EmbreeScene& scene;
    const PictureView& view;
    bool hasFace = false;
    uint32_t mesh = 0;
    uint32_t face = 0;
    Segment edges[4];
    uint32_t edgeCount = 0;
    float strength = 0.0f;
};

}  // namespace trovik
