// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace trovik {

class JobControl;

/// An image of floats: rows from top to bottom, pixels from left to right, interleaved channels.
struct FloatImage {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t channels = 0;
    /// width * height * channels values.
    std::vector<float> pixels;
    /// True if the file contains floats: the values are those in the file, with any magnitude and
    /// sign. False if it contains integers: values are divided by the largest value of their type,
    /// so unsigned values range from 0 to 1.
    bool isFloat = false;
};

/// The default size limit of ReadImageFile: 16384 x 16384 values.
inline constexpr std::size_t DefaultMaxImageBytes = std::size_t{1} << 30;

/// Reads an image file, such as TIFF, PNG, EXR or JPEG; its content determines the format.
///
/// An 8-bit value v becomes the float nearest to v / 255; 16-bit and 32-bit values are scaled
/// accordingly. There is no other conversion: colour spaces are not converted, and colours are not
/// premultiplied by alpha. If a file contains several images, the first one is read; from an EXR
/// file, the data window is read.
/// \param maxBytes  maximum size of the pixels as floats, in bytes.
/// \throw HostError with the file and the reason: the file is missing, damaged or too large (with
/// the size and the limit, before memory is allocated), or has a non-finite value (with its
/// location).
TROVIK_API FloatImage ReadImageFile(const std::string& path,
                                    std::size_t maxBytes = DefaultMaxImageBytes);

/// Writes 8-bit values unchanged; the extension selects the format (`.png`, `.tif`, `.jpg`, ...).
///
/// The file is written completely or not at all; see FileReplacement. Identical values produce
/// identical files.
/// \param pixels  width * height * channels values, rows from top to bottom; not null.
/// \param channels  1 grey, 2 grey and alpha, 3 colour, 4 colour and alpha.
/// \throw HostError with the file and the reason.
TROVIK_API void WriteImageFile(const std::string& path,
                               const std::uint8_t* pixels,
                               std::uint32_t width,
                               std::uint32_t height,
                               std::uint32_t channels);

/// Writes 16-bit values in the same way, in formats that support them (`.tif`, `.png`).
/// \param description  one line of text to store with the pixels; may be empty.
/// \throw Cancelled.
TROVIK_API void WriteImageFile(const std::string& path,
                               const std::uint16_t* pixels,
                               std::uint32_t width,
                               std::uint32_t height,
                               std::uint32_t channels,
                               const std::string& description = std::string(),
                               JobControl* job = nullptr);

/// Writes signed 16-bit values in the same way. Only `.tif` and `.tiff` support them; any other
/// extension is rejected. ReadImageFile returns value / 32767.
TROVIK_API void WriteImageFile(const std::string& path,
                               const std::int16_t* pixels,
                               std::uint32_t width,
                               std::uint32_t height,
                               std::uint32_t channels);

/// Writes floats bit-exactly; the extension must be `.exr`, `.tif` or `.tiff`. Identical values
/// produce identical files.
///
/// The file is written completely or not at all; see FileReplacement.
/// \param image  isFloat is ignored.
/// \param description  one line of text to store with the pixels; may be empty.
/// \throw HostError with the file and the reason, including if a value is non-finite; Cancelled.
TROVIK_API void WriteFloatImageFile(const std::string& path,
                                    const FloatImage& image,
                                    const std::string& description = std::string(),
                                    JobControl* job = nullptr);

/// Returns the text that was stored with the pixels, or an empty string if the file has none.
/// \throw HostError with the file and the reason.
TROVIK_API std::string ReadImageDescription(const std::string& path);

}  // namespace trovik
