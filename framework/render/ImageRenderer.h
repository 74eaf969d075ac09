// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/render/Matcap.h"
#include "framework/render/Shading.h"
#include "framework/render/VisibilityFilter.h"
#include "framework/render/WireLines.h"
#include "host/Api.h"

#include <optional>

namespace trovik {

/// Renders one image of a scene; see RenderScene::Render.
class TROVIK_API ImageRenderer {
public:
    /// \param jobControl  checked by Render, which throws Cancelled; may be null. Borrowed.
    ImageRenderer(const EmbreeScene& scene,
                  const RenderCamera& camera,
                  const RenderOptions& options,
                  JobControl* jobControl = nullptr);

    /// \param pixelsPerBand  number of pixels that are rendered and filtered at a time; a smaller
    /// number needs less memory. The result does not depend on it.
    RenderImage Render(int pixelsPerBand = 1 << 21) const;

private:
    /// Means over a pixel's hits. Visibility is stored separately until it is filtered.
    struct Pixel {
        /// Unlit colour: linear, or byte values divided by 255 for ShadingMode::Normals and
        /// VertexColors.
        Vector plain;
        Vector albedo;
        Vector ambient;
        Vector key;
        /// Fraction of the samples that hit a mesh.
        float coverage = 0.0f;
    };
    struct Sums;

    bool IsLit() const {
        return options.shading == ShadingMode::Clay || options.shading == ShadingMode::Flat;
    }
    void Sample(int x,
                int y,
                WireLines& wires,
                Pixel& pixel,
                PixelGuide& guide,
                PixelVisibility& visibility) const;
    void AddSample(const SurfaceSample& sample,
                   const Vector& direction,
                   float remaining,
                   const PixelSamples& points,
                   int index,
                   Sums& sums) const;
    Vector PlainColor(const SurfaceSample& sample, const Vector& toEye) const;
    void Store(
        int x, int y, const Pixel& pixel, const PixelVisibility& visibility, RenderImage&) const;

    const EmbreeScene& scene;
    const RenderOptions& options;
    JobControl* job;
    RenderViewport view;
    /// The depth at which rays start in orthographic projection.
    float nearest = 0.0f;
    Shading shading;
    std::optional<Matcap> matcap;
};

}  // namespace trovik
