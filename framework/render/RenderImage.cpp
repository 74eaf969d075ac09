// SPDX-License-Identifier: Apache-2.0
#include "framework/render/RenderImage.h"

#include "framework/render/Caption.h"
#include "framework/render/ImageRenderer.h"
#include "framework/render/RenderMemory.h"
#include "framework/render/RenderRange.h"

#include <algorithm>
#include <utility>

namespace trovik {

namespace {

std::size_t PixelAt(const RenderImage& picture, int x, int y) {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width) +
           static_cast<std::size_t>(x);
}

}  // namespace

RenderScene::RenderScene(std::vector<RenderMesh> shown, JobControl* job)
    : meshes(std::move(shown)) {
    PrepareRenderMemory(meshes);
    scene = std::make_unique<EmbreeScene>(meshes, job);
}

RenderScene::~RenderScene() = default;

RenderImage RenderScene::Render(const RenderCamera& camera,
                                const RenderOptions& options,
                                JobControl* job) const {
    CheckCamera(camera);
    return ImageRenderer(*scene, camera, options, job).Render();
}

RenderImage RenderOnce(const std::vector<RenderMesh>& meshes,
                       const RenderCamera& camera,
                       const RenderOptions& options,
                       JobControl* job) {
    return RenderScene(meshes, job).Render(camera, options, job);
}

RenderImage MakeContactSheet(const std::vector<RenderImage>& pictures,
                             int columns,
                             int gap,
                             const std::vector<std::string>& captions) {
    if (pictures.empty()) return {};
    constexpr int scale = 2;
    const bool withCaptions = captions.size() == pictures.size();
    const int cellWidth = pictures[0].width;
    const int cellHeight = pictures[0].height + (withCaptions ? captionHeight * scale + gap : 0);
    const int rows = (static_cast<int>(pictures.size()) + columns - 1) / columns;
    RenderImage sheet;
    sheet.width = columns * cellWidth + (columns + 1) * gap;
    sheet.height = rows * cellHeight + (rows + 1) * gap;
    constexpr uint8_t ground = 24;
    sheet.rgb.assign(
        static_cast<std::size_t>(sheet.width) * static_cast<std::size_t>(sheet.height) * 3, ground);
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        const RenderImage& picture = pictures[i];
        const int left = gap + static_cast<int>(i) % columns * (cellWidth + gap);
        const int top = gap + static_cast<int>(i) / columns * (cellHeight + gap);
        for (int y = 0; y < std::min(picture.height, cellHeight); ++y) {
            for (int x = 0; x < std::min(picture.width, cellWidth); ++x) {
                const std::size_t from = PixelAt(picture, x, y);
                const std::size_t to = PixelAt(sheet, left + x, top + y) * 3;
                const int alpha = picture.alpha.empty() ? 255 : picture.alpha[from];
                for (std::size_t k = 0; k < 3; ++k)
                    sheet.rgb[to + k] = static_cast<uint8_t>(
                        (picture.rgb[from * 3 + k] * alpha + ground * (255 - alpha) + 127) / 255);
            }
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
