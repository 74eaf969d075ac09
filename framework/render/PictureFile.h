// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/render/Picture.h"

namespace trovik {

/// Refuses names of files that cannot hold a picture, before the work of rendering it.
/// \param transparent  whether the picture has alpha, which .png, .tif and .tiff alone store.
/// \throw HostError naming the file and what is accepted.
TROVIK_API void CheckPicturePath(const std::string& path, bool transparent);

/// Writes a picture with its alpha, if it has any. The file is complete or not there.
/// \throw HostError naming the file and the reason.
TROVIK_API void WritePicture(const std::string& path, const Picture& picture);

/// Most frames of a turntable: their numbers have four digits.
inline constexpr int maxFrames = 9999;

/// The file of one frame: `spin.png` becomes `spin_0001.png` for frame 1.
TROVIK_API std::string FramePath(const std::string& path, int frame);

}  // namespace trovik
