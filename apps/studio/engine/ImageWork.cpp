// SPDX-License-Identifier: Apache-2.0
#include "engine/ImageWork.h"

#include "framework/document/Document.h"
#include "framework/render/RenderedLevel.h"

#include <QImage>

#include <algorithm>
#include <cmath>

namespace trovik::studio {

namespace {

/// The first pass has this fraction of the width and height, and one sample per pixel.
constexpr int coarseDivisor = 4;
/// The second pass has this fraction of the samples.
constexpr int sampleDivisor = 8;

/// Converts a value of a map to a channel, 0 to 255.
int ChannelOf(float value, float range) {
    const float scaled = range > 0.0f ? value / range : 0.0f;
    return std::clamp(static_cast<int>(std::lround((0.5f + 0.5f * scaled) * 255.0f)), 0, 255);
}

QImage ImageOf(const FloatImage& map, float range) {
    QImage image(static_cast<int>(map.width), static_cast<int>(map.height), QImage::Format_RGB32);
    const float* value = map.pixels.data();
    for (int y = 0; y < image.height(); ++y) {
        auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x, value += map.channels) {
            const int red = ChannelOf(value[0], range);
            row[x] = map.channels < 3
                         ? qRgb(red, red, red)
                         : qRgb(red, ChannelOf(value[1], range), ChannelOf(value[2], range));
        }
    }
    return image;
}

}  // namespace

QImage ToQImage(const RenderImage& picture) {
    const bool hasAlpha = !picture.alpha.empty();
    QImage image(
        picture.width, picture.height, hasAlpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
    const uint8_t* rgb = picture.rgb.data();
    const uint8_t* alpha = picture.alpha.data();
    for (int y = 0; y < picture.height; ++y) {
        uint8_t* out = image.scanLine(y);
        for (int x = 0; x < picture.width; ++x) {
            out = std::copy_n(rgb, 3, out);
            rgb += 3;
            if (hasAlpha) *out++ = *alpha++;
        }
    }
    return image;
}

ImageWork RenderWork(const RenderOptions& options) {
    return [options](trovik::Document& document,
                     const StrokeView& view,
                     JobControl& job,
                     const ShowImage& show) {
        const RenderCamera camera{
            view.eye, view.target, view.up, view.verticalFieldOfView, view.isOrthographic};
        const RenderedLevel level(document.Geometry(), options.shading);
        const RenderScene scene({level.Mesh()}, &job);
        RenderOptions coarse = options;
        coarse.width = std::max(1, options.width / coarseDivisor);
        coarse.height = std::max(1, options.height / coarseDivisor);
        coarse.samples = 1;
        show(ToQImage(scene.Render(camera, coarse, &job)));
        if (options.samples >= 2 * sampleDivisor) {
            RenderOptions noisy = options;
            noisy.samples = options.samples / sampleDivisor;
            show(ToQImage(scene.Render(camera, noisy, &job)));
        }
        show(ToQImage(scene.Render(camera, options, &job)));
    };
}

ImageWork BakeWork(const BakeOptions& options) {
    return [options](trovik::Document& document,
                     const StrokeView&,
                     JobControl& job,
                     const ShowImage& show) {
        // No file is written; the name determines whether the map may have several tiles.
        const char* name = options.repeat ? "preview.exr" : "preview.<UDIM>.exr";
        const BakedMap map = BakeMap(document.Geometry(), options, name, &job);
        if (map.tiles.empty()) return;
        show(ImageOf(map.tiles.front().image, options.kind == MapKind::Normal ? 1.0f : map.range));
    };
}

}  // namespace trovik::studio
