// SPDX-License-Identifier: Apache-2.0
#include "Commands.h"
#include "JsonOutput.h"
#include "ProgressLine.h"
#include "RenderArguments.h"
#include "framework/io/FilePath.h"
#include "framework/render/RenderFile.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <memory>

namespace trovik {

namespace {

struct RenderCommandArguments : RenderArguments {
    std::string picture;
    /// 0 for a single image.
    int frames = 0;
};

void Report(const RenderCommandArguments& wanted,
            const RenderOptions& options,
            const RenderCamera& camera,
            const std::vector<std::string>& files) {
    if (wanted.json) {
        PrintJson({{"mesh", wanted.mesh},
                   {"picture", wanted.picture},
                   {"files", files},
                   {"width", options.width},
                   {"height", options.height},
                   {"shading", ShadingModeNames()[static_cast<std::size_t>(options.shading)]},
                   {"camera", CameraJson(camera)}});
    } else if (!wanted.quiet && wanted.frames > 0) {
        std::printf("wrote %s to %s: %zu frames of %d x %d pixels\n",
                    files.front().c_str(),
                    files.back().c_str(),
                    files.size(),
                    options.width,
                    options.height);
    } else if (!wanted.quiet) {
        std::printf(
            "wrote %s: %d x %d pixels\n", files.front().c_str(), options.width, options.height);
    }
}

void Render(const RenderCommandArguments& wanted) {
    const RenderOptions options = PictureOptionsOf(wanted);
    ProgressLine line(wanted.quiet);
    CheckRenderPath(wanted.picture, options.transparent);
    CheckWritable(wanted.picture);
    std::vector<std::string> files;
    files.reserve(static_cast<std::size_t>(wanted.frames) + 1);
    for (int i = 0; i < wanted.frames; ++i) files.push_back(FramePath(wanted.picture, i + 1));
    // A single image has no steps of progress.
    const std::vector<std::string> names = wanted.frames == 0 ? std::vector<std::string>(1) : files;
    if (wanted.frames == 0) files.push_back(wanted.picture);
    const RenderCamera camera =
        RenderFrames(wanted, options, names, line, [&](std::size_t i, const RenderImage& picture) {
            WriteRender(files[i], picture);
        });
    Report(wanted, options, camera, files);
}

}  // namespace

void AddRenderCommand(CLI::App& program) {
    auto options = std::make_shared<RenderCommandArguments>();
    CLI::App* verb = program.add_subcommand("render", "Renders a mesh or a scene to an image");
    verb->add_option("mesh", options->mesh, "Mesh file or scene (.trovik)")->required();
    verb->add_option("picture", options->picture, "Image file (PNG, JPEG, TIFF)")->required();
    AddRenderArguments(*verb, *options);
    verb->add_option("--frames", options->frames, "Renders a turntable of N numbered images")
        ->check(CLI::Range(1, maxFrames));
    verb->callback([options] { Render(*options); });
}

}  // namespace trovik
