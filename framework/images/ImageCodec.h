// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/images/ImageFile.h"

namespace trovik {

enum class SampleType { UInt8, UInt16, Int16, Float };

/// Pixels to encode: rows from top to bottom, interleaved channels. `samples` is borrowed.
struct EncodedImage {
    SampleType type = SampleType::UInt8;
    const void* samples = nullptr;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t channels = 0;
    /// One line of text to store with the pixels; may be empty.
    std::string description;
};

/// Decodes and encodes image formats. It is implemented in the module `trovik-openimageio`, because
/// OpenImageIO and its hundreds of dependencies take most of a second to load. All functions are
/// thread-safe.
class ImageCodec {
public:
    /// See ReadImageFile. The file must exist.
    virtual FloatImage Read(const std::string& path, std::size_t maxBytes) const = 0;
    /// See ReadImageDescription. The file must exist.
    virtual std::string ReadDescription(const std::string& path) const = 0;
    /// Returns the bytes of an image file in the format that the extension of `path` selects. No
    /// file is written.
    /// \throw HostError with the path and the reason; Cancelled.
    virtual std::vector<unsigned char> Encode(const std::string& path,
                                              const EncodedImage& image,
                                              JobControl* job) const = 0;

protected:
    ~ImageCodec() = default;
};

/// Returns the codec; the first call loads the module.
/// \throw HostError with the module and the reason.
const ImageCodec& LoadedImageCodec();

}  // namespace trovik
