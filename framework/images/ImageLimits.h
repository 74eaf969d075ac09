// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/images/ImageFile.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace trovik {

/// \throw HostError always: "cannot <doing> image <path>: <reason>", the reason in one line. An
/// empty reason stands for a damaged file.
[[noreturn]] TROVIK_API void ThrowImageError(const char* doing,
                                             const std::string& path,
                                             std::string reason);

/// Checks the size of an image before its pixels take memory.
/// \param maxBytes  most memory that the pixels may take as floats.
/// \throw HostError naming the path and the size, if a number is not above 0 or the limit is
/// passed.
TROVIK_API void CheckImageSize(const std::string& path,
                               std::int64_t width,
                               std::int64_t height,
                               std::int64_t channels,
                               std::size_t maxBytes);

/// \throw HostError naming the path and the first pixel and channel whose value is not finite.
TROVIK_API void CheckImageFinite(const char* doing,
                                 const std::string& path,
                                 const FloatImage& image);

}  // namespace trovik
