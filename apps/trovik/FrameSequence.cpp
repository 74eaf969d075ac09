// SPDX-License-Identifier: Apache-2.0
#include "FrameSequence.h"

#include "VideoEncoder.h"
#include "framework/errors/HostError.h"
#include "framework/io/FilePath.h"
#include "framework/render/RenderFile.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string_view>

namespace trovik {

namespace {

namespace fs = std::filesystem;

/// Frames in a contact sheet are reduced to at most this width.
constexpr int sheetFrameWidth = 240;
constexpr int sheetGap = 8;

bool IsVideoPath(const std::string& path) { return LowerExtension(path) == ".mp4"; }

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

}  // namespace

/// A folder for temporary files, removed with its content by the destructor.
class FrameSequence::TemporaryFolder {
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

std::vector<CLI::Option*> AddFrameSequenceArguments(CLI::App& command,
                                                    FrameSequenceArguments& arguments) {
    CLI::Option* rate =
        command
            .add_option(
                "--fps", arguments.framesPerSecond, "Frames per second of a video (default 24)")
            ->check(CLI::Range(1, 240));
    CLI::Option* sheet = command.add_option(
        "--sheet", arguments.sheet, "Also writes a contact sheet of all frames to this image file");
    CLI::Option* columns =
        command
            .add_option("--columns",
                        arguments.columns,
                        "With --sheet: frames per row (default: a nearly square sheet)")
            ->check(CLI::Range(1, 100))
            ->needs(sheet);
    return {rate, sheet, columns};
}

FrameSequence::FrameSequence(const FrameSequenceArguments& given,
                             const RenderOptions& ofRenders,
                             const std::string& kind)
    : wanted(given), options(ofRenders), isVideo(IsVideoPath(given.destination)) {
    if (!wanted.sheet.empty()) {
        CheckRenderPath(wanted.sheet, false);
        CheckWritable(wanted.sheet);
    }
    CheckDestination(kind);
    if (isVideo) temporary = std::make_unique<TemporaryFolder>();
    folder = isVideo ? temporary->Path() : wanted.destination;
}

FrameSequence::~FrameSequence() = default;

void FrameSequence::CheckDestination(const std::string& kind) const {
    if (IsOtherMediaPath(wanted.destination))
        throw HostError(wanted.destination + ": " + kind +
                        " is written as a video (*.mp4) or as images in a folder; use "
                        "trovik render for a single image");
    if (!isVideo) {
        std::error_code ignored;
        if (fs::exists(wanted.destination, ignored) &&
            !fs::is_directory(wanted.destination, ignored))
            throw HostError(wanted.destination + ": not a folder");
        return;
    }
    if (options.transparent)
        throw HostError(wanted.destination + ": a video cannot be transparent");
    if (!HasVideoEncoder())
        throw HostError(wanted.destination +
                        ": videos are written by ffmpeg, which is not in PATH; install it, or give "
                        "the name of a folder, such as " +
                        fs::path(wanted.destination).replace_extension().string() +
                        ", for numbered images");
    CheckWritable(wanted.destination);
}

std::vector<std::string> FrameSequence::FrameNames(std::size_t count) const {
    const std::string pattern = (fs::path(folder) / "frame.png").string();
    std::vector<std::string> names;
    names.reserve(count);
    for (std::size_t i = 1; i <= count; ++i)
        names.push_back(FramePath(pattern, static_cast<int>(i)));
    return names;
}

void FrameSequence::Add(const RenderImage& frame) {
    if (frameCount == 0 && !isVideo) CreateFolder(folder);
    ++frameCount;
    WriteRender(FramePath((fs::path(folder) / "frame.png").string(), static_cast<int>(frameCount)),
                frame);
    const int factor = (options.width + sheetFrameWidth - 1) / sheetFrameWidth;
    if (!wanted.sheet.empty()) sheetFrames.push_back(Reduced(frame, factor));
}

void FrameSequence::Finish() {
    if (isVideo) EncodeVideo(folder, wanted.framesPerSecond, wanted.destination);
    if (wanted.sheet.empty()) return;
    const int columns =
        wanted.columns != 0
            ? wanted.columns
            : static_cast<int>(std::ceil(std::sqrt(static_cast<double>(frameCount))));
    WriteRender(wanted.sheet, MakeContactSheet(sheetFrames, columns, sheetGap, {}));
}

std::vector<std::string> FrameSequence::Files() const {
    std::vector<std::string> files =
        isVideo ? std::vector<std::string>{wanted.destination} : FrameNames(frameCount);
    if (!wanted.sheet.empty()) files.push_back(wanted.sheet);
    return files;
}

void FrameSequence::PrintSummary() const {
    std::printf("wrote %s: %zu frames of %d x %d pixels\n",
                wanted.destination.c_str(),
                frameCount,
                options.width,
                options.height);
    if (!wanted.sheet.empty()) std::printf("wrote %s\n", wanted.sheet.c_str());
}

}  // namespace trovik
