// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/errors/HostError.h"
#include "framework/multires/LevelGeometry.h"
#include "framework/render/RenderImage.h"
#include "framework/render/RenderedLevel.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <string>

namespace trovik::test {

inline std::size_t PixelAt(const RenderImage& p, int x, int y) {
    const int pixel = y * p.width + x;
    return static_cast<std::size_t>(pixel);
}

/// Returns the sum of red, green and blue, 0 to 765.
inline int Brightness(const RenderImage& p, int x, int y) {
    const std::size_t at = PixelAt(p, x, y) * 3;
    return p.rgb[at] + p.rgb[at + 1] + p.rgb[at + 2];
}

/// A sphere of radius 1, seen from a distance of five units.
class SphereRender : public ::testing::Test {
protected:
    SphereRender() {
        options.width = 120;
        options.height = 90;
        options.samples = 4;
    }

    RenderImage Make(JobControl* job = nullptr) {
        return RenderOnce({shown}, camera, options, job);
    }

    /// Returns the error message of the render; empty if it succeeds.
    std::string Refusal() {
        try {
            Make();
        } catch (const HostError& error) {
            return error.what();
        }
        return {};
    }

    LevelGeometry geometry{SphereQuads(4)};
    RenderMesh shown = VisibleLevel(geometry);
    RenderCamera camera{{0, 0, 5}, {0, 0, 0}, {0, 1, 0}, 35.0f};
    RenderOptions options;
};

}  // namespace trovik::test
