// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/BrushOperation.h"

#include <map>
#include <string>
#include <vector>

namespace trovik {

/// The array files of a trace; the trace's lines refer to them by name. Equal content is written
/// only once.
class TROVIK_API TraceArrays {
public:
    /// \param folder  must exist.
    explicit TraceArrays(std::string folder);

    /// Writes a falloff table, float32 [n], and returns the name of its file.
    /// \throw HostError if it cannot be written.
    std::string Falloff(const Store<float>& samples);
    /// Writes a stamp's pixels as returned by Image::getTile, float32 [height, width, channels],
    /// and returns the name of the file. The pixels are read again only after ForgetPixels, or if
    /// the image object, its version, its size or `name` has changed since the last call.
    /// \throw HostError if the file cannot be written.
    std::string Pixels(Image& image, const QString& name, uint8_t channels);
    /// Forces the pixels to be read again. Called at the start of each stroke, because a new image
    /// may have the same address as a deleted one.
    void ForgetPixels() { lastRead = {}; }
    /// Returns the number of the image object; numbers are assigned in the order of first use,
    /// starting at 0.
    unsigned ImageNumber(const Image* image);

private:
    std::string Put(const char* kind, const std::vector<uint64_t>& shape, const float* values);

    struct PixelsRead {
        const Image* image = nullptr;
        QString name;
        uint32_t version = 0;
        uint32_t width = 0;
        uint32_t height = 0;
        uint8_t channels = 0;
        bool operator==(const PixelsRead&) const = default;
    };
    std::string folder;
    std::map<std::string, std::string> fileOfContent;
    std::map<std::string, unsigned> countOfKind;
    std::vector<const Image*> images;
    PixelsRead lastRead;
    std::string lastFile;
};

}  // namespace trovik
