// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/images/ImageFile.h"
#include "host/Api.h"

#include <cstddef>
#include <string>

/// \file
/// PNG files, read directly with libpng. OpenImageIO's reader lets libpng print messages to
/// standard error, and it leaks memory if a file is damaged.
namespace trovik {

/// Returns whether the file starts with the PNG signature, regardless of its name.
/// \throw HostError if it cannot be read.
TROVIK_API bool IsPngFile(const std::string& path);

/// See ReadImageFile. Palette indices are converted to colours, transparent colours are converted
/// to alpha, and samples with fewer than eight bits are scaled to eight.
FloatImage ReadPngFile(const std::string& path, std::size_t maxBytes);

/// Returns the text with the keyword "Description"; see ReadImageDescription.
std::string ReadPngDescription(const std::string& path);

}  // namespace trovik
