// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/images/ImageFile.h"
#include "host/Api.h"

#include <cstddef>
#include <string>

/// \file
/// PNG files through libpng itself. OpenImageIO's reader lets libpng print its messages to standard
/// error, and loses memory when a file is damaged.
namespace trovik {

/// True if the file begins as PNG files do, whatever its name.
/// \throw HostError if it cannot be read.
TROVIK_API bool IsPngFile(const std::string& path);

/// As ReadImageFile. Palettes become colours, transparent colours alpha, and samples of fewer than
/// eight bits are scaled to eight.
FloatImage ReadPngFile(const std::string& path, std::size_t maxBytes);

/// As ReadImageDescription: the text "Description".
std::string ReadPngDescription(const std::string& path);

}  // namespace trovik
