// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace trovik {

class JobControl;

/// An image in floats: rows from top to bottom, pixels from left to right, channels interleaved.
struct FloatImage {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t channels = 0;
    /// width * height * channels values.
    std::vector<float> pixels;
    /// True where the file holds floats: the values are the file's own, of any size and sign.
    /// False where it holds whole numbers: unsigned ones are mapped to 0 .. 1, signed ones divided
    /// by their type's largest.
    bool isFloat = false;
};

/// The largest image that ReadImageFile takes unless told otherwise: 16384 x 16384 values.
inline constexpr std::size_t DefaultMaxImageBytes = std::size_t{1} << 30;

/// Reads an image file, such as TIFF, PNG, EXR or JPEG; the content decides the format.
///
/// Numbers are taken as they stand: an 8-bit value v becomes the float nearest to v / 255, 16 and
/// 32 bits alike; no colour space is converted, and colours are not multiplied by alpha. Of
/// several images in a file the first is read, of an EXR's windows the data window.
/// \param maxBytes  most memory that the pixels may take as floats.
/// \throw HostError naming the file and the reason: not there, damaged, too large (with size and
/// limit, before anything is allocated), values that are not finite (with their place).
TROVIK_API FloatImage ReadImageFile(const std::string& path,
                                    std::size_t maxBytes = DefaultMaxImageBytes);

/// Writes 8-bit values as they stand; the extension names the format (`.png`, `.tif`, `.jpg`, ...).
///
/// The file is complete or not there: see FileReplacement. The same values give the same bytes.
/// \param pixels  width * height * channels values, rows from top to bottom; not null.
/// \param channels  1 grey, 2 grey and alpha, 3 colour, 4 colour and alpha.
/// \throw HostError naming the file and the reason.
TROVIK_API void WriteImageFile(const std::string& path,
                               const std::uint8_t* pixels,
                               std::uint32_t width,
                               std::uint32_t height,
                               std::uint32_t channels);

/// The same for 16-bit values, into formats that hold them (`.tif`, `.png`).
/// \param description  one line of text to store beside the pixels; empty for none.
/// \throw Cancelled.
TROVIK_API void WriteImageFile(const std::string& path,
                               const std::uint16_t* pixels,
                               std::uint32_t width,
                               std::uint32_t height,
                               std::uint32_t channels,
                               const std::string& description = std::string(),
                               JobControl* job = nullptr);

/// The same for signed 16-bit values, which `.tif` and `.tiff` alone hold: any other extension is
/// refused. ReadImageFile gives value / 32767.
TROVIK_API void WriteImageFile(const std::string& path,
                               const std::int16_t* pixels,
                               std::uint32_t width,
                               std::uint32_t height,
                               std::uint32_t channels);

/// Writes floats bit for bit; the extension is one of `.exr`, `.tif`, `.tiff`. The same values give
/// the same bytes.
///
/// The file is complete or not there: see FileReplacement.
/// \param image  isFloat is not used.
/// \param description  one line of text to store beside the pixels; empty for none.
/// \throw HostError naming the file and the reason; also for a value that is not finite. Cancelled.
TROVIK_API void WriteFloatImageFile(const std::string& path,
                                    const FloatImage& image,
                                    const std::string& description = std::string(),
                                    JobControl* job = nullptr);

/// The text that was stored beside the pixels; empty where the file holds none.
/// \throw HostError naming the file and the reason.
TROVIK_API std::string ReadImageDescription(const std::string& path);

}  // namespace trovik
