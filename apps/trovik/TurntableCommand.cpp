// SPDX-License-Identifier: Apache-2.0
#include "ChildProcess.h"
#include "Commands.h"
#include "Interruption.h"
#include "JsonOutput.h"
#include "ProgressLine.h"
#include "RenderArguments.h"
#include "framework/errors/HostError.h"
#include "framework/io/FilePath.h"
#include "framework/render/RenderFile.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <sstream>
#include <string_view>
#include <thread>
#include <unistd.h>

namespace trovik {

namespace {

namespace fs = std::filesystem;

constexpr auto pollInterval = std::chrono::milliseconds(5);
/// Frames in a contact sheet are reduced to at most this width.
constexpr int sheetFrameWidth = 240;
constexpr int sheetGap = 8;

struct TurntableArguments : RenderArguments {
    std::string destination;
    int frames = 72;
    int framesPerSecond = 24;
    std::string sheet;
    /// 0 for a nearly square sheet.
    int columns = 0;
};

bool IsVideoPath(const std::string& path) { return LowerExtension(path) == ".mp4"; }

/// Whether a program can be found in PATH.
bool IsInstalled(const std::string& name) {
    const char* path = std::getenv("PATH");
    std::istringstream folders(path == nullptr ? "" : path);
    for (std::string folder; std::getline(folders, folder, ':');)
        if (access((fs::path(folder) / name).c_str(), X_OK) == 0) return true;
    return false;
}

/// A folder for temporary files, removed with its content by the destructor.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (fs::temp_directory_path() / "trovik-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr)
            ThrowFileError("create the temporary folder", pattern, errno);
        path = pattern;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& Path() const { return path; }

private:
    std::string path;
};

/// Encodes the numbered images of a folder as a video. \throw HostError; Cancelled.
void EncodeVideo(const std::string& folder, int framesPerSecond, const std::string& video) {
    FileReplacement replacement(video);
    // In the pattern of the file names, % begins a number.
    std::string pattern;
    for (const char letter : folder)
        pattern += letter == '%' ? std::string("%%") : std::string(1, letter);
    ChildProcess encoder({"ffmpeg",
                          "-hide_banner",
                          "-loglevel",
                          "error",
                          "-y",
                          "-framerate",
                          std::to_string(framesPerSecond),
                          "-i",
                          // Without the prefix, a name with a colon would be a URL.
                          "file:" + pattern + "/frame_%04d.png",
                          "-c:v",
                          "libx264",
                          // Players support only this format, which requires even sizes.
                          "-pix_fmt",
                          "yuv420p",
                          "-vf",
                          "pad=ceil(iw/2)*2:ceil(ih/2)*2",
                          "-movflags",
                          "+faststart",
                          "file:" + replacement.TemporaryPath()});
    while (!encoder.HasEnded()) {
        ThrowIfInterrupted();
        std::this_thread::sleep_for(pollInterval);
    }
    const ChildResult result = encoder.Wait();
    ThrowIfInterrupted();
    if (result.status != 0)
        throw HostError(
            video + ": ffmpeg failed: " +
            (result.error.empty() ? "status " + std::to_string(result.status) : result.error));
    replacement.Commit();
}

/// Returns the image reduced by an integer factor, by averaging squares of pixels.
RenderImage Reduced(const RenderImage& picture, int factor) {
    RenderImage reduced;
    reduced.width = std::max(1, picture.width / factor);
    reduced.height = std::max(1, picture.height / factor);
    const auto channel =
        [&](const std::vector<uint8_t>& values, int channels, int k, int x, int y) {
            int sum = 0;
            int count = 0;
            for (int row = y * factor; row < std::min((y + 1) * factor, picture.height); ++row)
                for (int column = x * factor; column < std::min((x + 1) * factor, picture.width);
                     ++column, ++count)
                    sum += values[(static_cast<std::size_t>(row) *
                                       static_cast<std::size_t>(picture.width) +
                                   static_cast<std::size_t>(column)) *
                                      static_cast<std::size_t>(channels) +
                                  static_cast<std::size_t>(k)];
            return static_cast<uint8_t>((sum + count / 2) / count);
        };
    for (int y = 0; y < reduced.height; ++y) {
        for (int x = 0; x < reduced.width; ++x) {
            for (int k = 0; k < 3; ++k) reduced.rgb.push_back(channel(picture.rgb, 3, k, x, y));
            if (!picture.alpha.empty()) reduced.alpha.push_back(channel(picture.alpha, 1, 0, x, y));
        }
    }
    return reduced;
}

/// Whether the name is that of an image or of a video in another format, and therefore not intended
/// for a folder.
bool IsOtherMediaPath(const std::string& path) {
    constexpr std::string_view extensions[] = {
        ".apng", ".avi", ".bmp", ".exr", ".gif", ".jpeg", ".jpg", ".m4v",  ".mkv",  ".mov",
        ".mpeg", ".mpg", ".ogv", ".png", ".tif", ".tiff", ".tga", ".webm", ".webp", ".wmv"};
    std::error_code ignored;
    return std::find(std::begin(extensions), std::end(extensions), LowerExtension(path)) !=
               std::end(extensions) &&
           !fs::is_directory(path, ignored);
}

void CreateFolder(const std::string& folder) {
    std::error_code failed;
    fs::create_directories(folder, failed);
    if (failed) throw HostError("cannot create the folder " + folder + ": " + failed.message());
}

void CheckDestination(const TurntableArguments& wanted) {
    if (IsOtherMediaPath(wanted.destination))
        throw HostError(wanted.destination +
                        ": a turntable is written as a video (*.mp4) or as images in a folder; use "
                        "trovik render for a single image");
    if (!IsVideoPath(wanted.destination)) {
        std::error_code ignored;
        if (fs::exists(wanted.destination, ignored) &&
            !fs::is_directory(wanted.destination, ignored))
            throw HostError(wanted.destination + ": not a folder");
        return;
    }
    if (wanted.options.transparent)
        throw HostError(wanted.destination + ": a video cannot be transparent");
    if (!IsInstalled("ffmpeg"))
        throw HostError(wanted.destination +
                        ": videos are written by ffmpeg, which is not in PATH; install it, or give "
                        "the name of a folder, such as " +
                        fs::path(wanted.destination).replace_extension().string() +
                        ", for numbered images");
    CheckWritable(wanted.destination);
}

void Report(const TurntableArguments& wanted,
            const RenderOptions& options,
            const RenderCamera& camera,
            const std::vector<std::string>& files) {
    if (wanted.json) {
        PrintJson({{"mesh", wanted.mesh},
                   {"destination", wanted.destination},
                   {"files", files},
                   {"frames", wanted.frames},
                   {"framesPerSecond", wanted.framesPerSecond},
                   {"width", options.width},
                   {"height", options.height},
                   {"shading", ShadingModeNames()[static_cast<std::size_t>(options.shading)]},
                   {"camera", CameraJson(camera)}});
        return;
    }
    if (wanted.quiet) return;
    std::printf("wrote %s: %d frames of %d x %d pixels\n",
                wanted.destination.c_str(),
                wanted.frames,
                options.width,
                options.height);
    if (!wanted.sheet.empty()) std::printf("wrote %s\n", wanted.sheet.c_str());
}

void RenderTurntable(const TurntableArguments& wanted) {
    const RenderOptions options = PictureOptionsOf(wanted);
    ProgressLine line(wanted.quiet);
    if (!wanted.sheet.empty()) {
        CheckRenderPath(wanted.sheet, false);
        CheckWritable(wanted.sheet);
    }
    CheckDestination(wanted);
    const bool isVideo = IsVideoPath(wanted.destination);
    std::optional<TemporaryFolder> temporary;
    if (isVideo) temporary.emplace();
    const std::string folder = isVideo ? temporary->Path() : wanted.destination;
    std::vector<std::string> frames;
    for (int i = 0; i < wanted.frames; ++i)
        frames.push_back(FramePath((fs::path(folder) / "frame.png").string(), i + 1));

    const int factor = (options.width + sheetFrameWidth - 1) / sheetFrameWidth;
    std::vector<RenderImage> sheetFrames;
    const RenderCamera camera =
        RenderFrames(wanted, options, frames, line, [&](std::size_t i, const RenderImage& picture) {
            // Created only now, so that nothing is left behind if the mesh cannot be read.
            if (i == 0 && !isVideo) CreateFolder(folder);
            WriteRender(frames[i], picture);
            if (!wanted.sheet.empty()) sheetFrames.push_back(Reduced(picture, factor));
        });
    if (isVideo) EncodeVideo(folder, wanted.framesPerSecond, wanted.destination);
    std::vector<std::string> files =
        isVideo ? std::vector<std::string>{wanted.destination} : frames;
    if (!wanted.sheet.empty()) {
        const int columns =
            wanted.columns != 0
                ? wanted.columns
                : static_cast<int>(std::ceil(std::sqrt(static_cast<double>(wanted.frames))));
        WriteRender(wanted.sheet, MakeContactSheet(sheetFrames, columns, sheetGap, {}));
        files.push_back(wanted.sheet);
    }
    Report(wanted, options, camera, files);
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
    verb->add_option("--fps", options->framesPerSecond, "Frames per second of a video (default 24)")
        ->check(CLI::Range(1, 240));
    CLI::Option* sheet = verb->add_option(
        "--sheet", options->sheet, "Also writes a contact sheet of all frames to this image file");
    verb->add_option("--columns",
                     options->columns,
                     "With --sheet: frames per row (default: a nearly square sheet)")
        ->check(CLI::Range(1, 100))
        ->needs(sheet);
    AddRenderArguments(*verb, *options);
    verb->callback([options] { RenderTurntable(*options); });
}

}  // namespace trovik
