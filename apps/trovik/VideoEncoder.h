// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace trovik {

/// Returns whether videos can be encoded: whether the program ffmpeg is in PATH.
bool HasVideoEncoder();

/// Encodes the images frame_0001.png and so on of a folder as a video (H.264) with ffmpeg. The
/// video is written completely or not at all.
/// \throw HostError with the video and the message of ffmpeg; Cancelled.
void EncodeVideo(const std::string& folder, int framesPerSecond, const std::string& video);

}  // namespace trovik
