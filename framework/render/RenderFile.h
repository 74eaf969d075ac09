// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/render/RenderImage.h"

namespace trovik {

/// Checks that a render can be written to a file with this name. Call it before rendering.
/// \param transparent  whether the render has alpha, which only .png, .tif and .tiff files store.
/// \throw HostError with the file and the accepted extensions.
TROVIK_API void CheckRenderPath(const std::string& path, bool transparent);

/// Writes a render, including its alpha channel if there is one. The file is written completely or
/// not at all.
/// \throw HostError with the file and the reason.
TROVIK_API void WriteRender(const std::string& path, const RenderImage& picture);

/// Maximum number of frames in a turntable: frame numbers have four digits.
inline constexpr int maxFrames = 9999;

/// Returns the file name of one frame: `spin.png` becomes `spin_0001.png` for frame 1.
TROVIK_API std::string FramePath(const std::string& path, int frame);

}  // namespace trovik
