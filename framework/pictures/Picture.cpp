// SPDX-License-Identifier: Apache-2.0
#include "framework/pictures/Picture.h"

#include "framework/pictures/Caption.h"
#include "framework/pictures/RenderRange.h"
#include "framework/pictures/RenderMemory.h"
#include "framework/pictures/Shading.h"

#include <tbb/parallel_for.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace trovik {

namespace {

/// Linear to sRGB bytes, with a soft shoulder so that highlights keep their shape.
uint8_t ToByte(float linear) {
    const float clean = linear > 0.0f ? linear : 0.0f;
    const float soft =
        clean < 0.6f ? clean : 0.6f + 0.4f * (1.0f - std::exp((0.6f - clean) / 0.4f));
    const float coded =
        soft <= 0.0031308f ? soft * 12.92f : 1.055f * std::pow(soft, 1.0f / 2.4f) - 0.055f;
    return static_cast<uint8_t>(std::clamp(coded, 0.0f, 1.0f) * 255.0f + 0.5f);
}

/// Rays of a picture; each pixel has random numbers of its own, whichever thread works on it.
class Renderer {
public:
    Renderer(const EmbreeScene& shownScene,
             const PictureCamera& view,
             const PictureOptions& pictureOptions)
        : scene(shownScene),
          camera(view),
          options(pictureOptions),
          back((view.eye - view.target).Normalized()),
          right((view.up & back).Normalized()),
          up(back & right),
          tangent(std::tan(view.verticalFieldOfView * 0.5f * 0.017453293f)),
          shading(shownScene, right, up, back) {}

    Vector Pixel(int x, int y) const {
        HashSampler random(static_cast<uint32_t>(y * options.width + x) * 9781u + 1u);
        const int samples = std::max(1, options.samples);
        const int side = std::max(1, static_cast<int>(std::sqrt(static_cast<float>(samples))));
        Vector sum;
        for (int i = 0; i < samples; ++i) {
            // A jittered grid; what does not fit into a square lies anywhere.
            const bool gridded = i < side * side;
            const float column = static_cast<float>(i % side);
            const float row = static_cast<float>(i / side);
            const auto grid = static_cast<float>(side);
            const float dx = gridded ? (column + random.Next()) / grid : random.Next();
            const float dy = gridded ? (row + random.Next()) / grid : random.Next();
            sum += Ray(static_cast<float>(x) + dx, static_cast<float>(y) + dy, random);
        }
        return sum * (1.0f / static_cast<float>(samples));
    }

private:
    Vector Ray(float x, float y, HashSampler& random) const {
        const auto width = static_cast<float>(options.width);
        const auto height = static_cast<float>(options.height);
        const float u = (2.0f * x - width) / height * tangent;
        const float v = (1.0f - 2.0f * y / height) * tangent;
        const Vector direction = (right * u + up * v - back).Normalized();
        SurfaceSample sample;
        if (!scene.Hit(camera.eye, direction, sample)) return Shading::Backdrop(1.0f - y / height);
        Vector color = shading.Shade(sample, -direction, random);
        if (options.wireframe) {
            const float pixel = sample.distance * tangent * 2.0f / height;
            const float line = std::clamp(1.3f - sample.edgeDistance / pixel, 0.0f, 1.0f);
            color = color * (1.0f - 0.75f * line);
        }
        return color;
    }

    const EmbreeScene& scene;
    const PictureCamera& camera;
    const PictureOptions& options;
    Vector back, right, up;
    float tangent;
    Shading shading;
};

}  // namespace

Picture RenderPicture(const std::vector<PictureMesh>& meshes,
                      const PictureCamera& camera,
                      const PictureOptions& options) {
    Picture picture{options.width, options.height, {}};
    picture.rgb.resize(static_cast<std::size_t>(options.width) *
                       static_cast<std::size_t>(options.height) * 3);
    PrepareRenderMemory(meshes);
    const EmbreeScene scene(meshes);
    CheckCamera(camera);
    const Renderer renderer(scene, camera, options);
    tbb::parallel_for(0, options.height, [&](int y) {
        uint8_t* out = picture.rgb.data() +
                       static_cast<std::size_t>(y) * static_cast<std::size_t>(options.width) * 3;
        for (int x = 0; x < options.width; ++x) {
            const Vector color = renderer.Pixel(x, y);
            *out++ = ToByte(color.x);
            *out++ = ToByte(color.y);
            *out++ = ToByte(color.z);
        }
    });
    return picture;
}

Picture PlaceInRows(const std::vector<Picture>& pictures,
                    int columns,
                    int gap,
                    const std::vector<std::string>& captions) {
    if (pictures.empty()) return {};
    constexpr int scale = 2;
    const bool withCaptions = captions.size() == pictures.size();
    const int cellWidth = pictures[0].width;
    const int cellHeight = pictures[0].height + (withCaptions ? captionHeight * scale + gap : 0);
    const int rows = (static_cast<int>(pictures.size()) + columns - 1) / columns;
    Picture sheet;
    sheet.width = columns * cellWidth + (columns + 1) * gap;
    sheet.height = rows * cellHeight + (rows + 1) * gap;
    constexpr uint8_t ground = 24;
    sheet.rgb.assign(
        static_cast<std::size_t>(sheet.width) * static_cast<std::size_t>(sheet.height) * 3, ground);
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        const Picture& picture = pictures[i];
        const int left = gap + static_cast<int>(i) % columns * (cellWidth + gap);
        const int top = gap + static_cast<int>(i) / columns * (cellHeight + gap);
        for (int y = 0; y < picture.height && y < cellHeight; ++y) {
            const auto bytes = static_cast<std::ptrdiff_t>(std::min(picture.width, cellWidth)) * 3;
            const auto from =
                picture.rgb.begin() + static_cast<std::ptrdiff_t>(y) * picture.width * 3;
            std::copy(from,
                      from + bytes,
                      sheet.rgb.begin() +
                          (static_cast<std::ptrdiff_t>(top + y) * sheet.width + left) * 3);
        }
        if (withCaptions) {
            const int width = CaptionWidth(captions[i], scale);
            DrawCaption(sheet,
                        left + (cellWidth - width) / 2,
                        top + pictures[i].height + gap / 2,
                        scale,
                        captions[i],
                        220);
        }
    }
    return sheet;
}

}  // namespace trovik
