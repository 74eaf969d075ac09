// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/images/ImageFile.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace trovik {

/// Always throws. If the reason is empty, the file is reported as damaged.
/// \throw HostError with the message "cannot <doing> image <path>: <reason>", in which the reason
/// is reduced to one line.
[[noreturn]] TROVIK_API void ThrowImageError(const char* doing,
                                             const std::string& path,
                                             std::string reason);

/// Checks the size of an image before its pixels are allocated.
/// \param maxBytes  maximum size of the pixels as floats, in bytes.
/// \throw HostError with the path and the size, if a dimension is not positive or the limit is
/// exceeded.
TROVIK_API void CheckImageSize(const std::string& path,
                               std::int64_t width,
                               std::int64_t height,
                               std::int64_t channels,
                               std::size_t maxBytes);

/// Checks that all values of an image are finite.
/// \throw HostError with the path and the first pixel and channel that has a non-finite value.
TROVIK_API void CheckImageFinite(const char* doing,
                                 const std::string& path,
                                 const FloatImage& image);

}  // namespace trovik
