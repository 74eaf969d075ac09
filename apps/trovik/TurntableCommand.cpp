// SPDX-License-Identifier: Apache-2.0
#include "Commands.h"
#include "FrameSequence.h"
#include "JsonOutput.h"
#include "ProgressLine.h"
#include "RenderArguments.h"
#include "framework/render/RenderFile.h"

#include <nlohmann/json.hpp>

#include <memory>

namespace trovik {

namespace {

struct TurntableArguments : RenderArguments, FrameSequenceArguments {
    int frames = 72;
};

void RenderTurntable(const TurntableArguments& wanted) {
    const RenderOptions options = PictureOptionsOf(wanted);
    ProgressLine line(wanted.quiet);
    FrameSequence sequence(wanted, options, "a turntable");
    const RenderCamera camera =
        RenderFrames(wanted,
                     options,
                     sequence.FrameNames(static_cast<std::size_t>(wanted.frames)),
                     line,
                     [&](std::size_t, const RenderImage& frame) { sequence.Add(frame); });
    sequence.Finish();
    if (wanted.json) {
        PrintJson({{"mesh", wanted.mesh},
                   {"destination", wanted.destination},
                   {"files", sequence.Files()},
                   {"frames", wanted.frames},
                   {"framesPerSecond", wanted.framesPerSecond},
                   {"width", options.width},
                   {"height", options.height},
                   {"shading", ShadingModeNames()[static_cast<std::size_t>(options.shading)]},
                   {"camera", CameraJson(camera)}});
    } else if (!wanted.quiet) {
        sequence.PrintSummary();
    }
}

}  // namespace

void AddTurntableCommand(CLI::App& program) {
    auto options = std::make_shared<TurntableArguments>();
    CLI::App* verb = program.add_subcommand(
        "turntable",
        "Renders a mesh or a scene from all sides, as numbered images or as a video. Videos "
        "require the program ffmpeg");
    verb->add_option("mesh", options->mesh, "Mesh file or scene (.trovik)")->required();
    verb->add_option("destination",
                     options->destination,
                     "Folder for the images frame_0001.png and so on, or video (*.mp4)")
        ->required();
    verb->add_option("--frames", options->frames, "Number of frames (default 72)")
        ->check(CLI::Range(1, maxFrames));
    AddFrameSequenceArguments(*verb, *options);
    AddRenderArguments(*verb, *options);
    verb->callback([options] { RenderTurntable(*options); });
}

}  // namespace trovik
