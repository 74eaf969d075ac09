// SPDX-License-Identifier: Apache-2.0
#include "VideoEncoder.h"

#include "ChildProcess.h"
#include "Interruption.h"
#include "framework/errors/HostError.h"
#include "framework/io/FilePath.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <thread>
#include <unistd.h>

namespace trovik {

namespace {

constexpr auto pollInterval = std::chrono::milliseconds(5);

/// Whether a program can be found in PATH.
bool IsInstalled(const std::string& name) {
    const char* path = std::getenv("PATH");
    std::istringstream folders(path == nullptr ? "" : path);
    for (std::string folder; std::getline(folders, folder, ':');)
        if (access((std::filesystem::path(folder) / name).c_str(), X_OK) == 0) return true;
    return false;
}

}  // namespace

bool HasVideoEncoder() { return IsInstalled("ffmpeg"); }

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

}  // namespace trovik
