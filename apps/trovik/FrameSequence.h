// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/render/RenderImage.h"

#include <CLI/CLI.hpp>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace trovik {

/// The arguments of commands that write a sequence of renders.
struct FrameSequenceArguments {
    /// A folder, or a video (*.mp4).
    std::string destination;
    int framesPerSecond = 24;
    /// Image file of the contact sheet; empty for none.
    std::string sheet;
    /// 0 for a nearly square sheet.
    int columns = 0;
};

/// Adds the options for all members except `destination`.
/// \param arguments  must outlive the parsing.
/// \return the options, for further conditions.
std::vector<CLI::Option*> AddFrameSequenceArguments(CLI::App& command,
                                                    FrameSequenceArguments& arguments);

/// Writes renders as numbered images in a folder or as a video, and optionally as a contact sheet.
/// Existing files of the same names are replaced.
class FrameSequence {
public:
    /// Checks the destination and the contact sheet before any work is done; writes nothing.
    /// \param wanted  borrowed.
    /// \param options  the options of the renders.
    /// \param kind  names the sequence in messages, for example "a turntable".
    /// \throw HostError if a file cannot be written, or if ffmpeg is missing for a video.
    FrameSequence(const FrameSequenceArguments& wanted,
                  const RenderOptions& options,
                  const std::string& kind);
    ~FrameSequence();
    FrameSequence(const FrameSequence&) = delete;
    FrameSequence& operator=(const FrameSequence&) = delete;

    /// Returns the names of the first `count` images; for a video, they are in a temporary folder.
    std::vector<std::string> FrameNames(std::size_t count) const;
    /// Writes the next frame. A missing folder is created with the first frame, so that nothing is
    /// left behind if there are no frames. \throw HostError.
    void Add(const RenderImage& frame);
    /// Encodes the video and writes the contact sheet. \throw HostError; Cancelled.
    void Finish();
    /// Returns the files that were written: the frames or the video, then the contact sheet.
    std::vector<std::string> Files() const;
    /// Prints the written files and the size of the frames on standard output.
    void PrintSummary() const;

private:
    class TemporaryFolder;

    void CheckDestination(const std::string& kind) const;

    const FrameSequenceArguments& wanted;
    RenderOptions options;
    bool isVideo;
    std::unique_ptr<TemporaryFolder> temporary;
    /// The folder of the images.
    std::string folder;
    std::size_t frameCount = 0;
    /// Reduced frames for the contact sheet.
    std::vector<RenderImage> sheetFrames;
};

}  // namespace trovik
