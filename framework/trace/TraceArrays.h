// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/BrushOperation.h"

#include <map>
#include <string>
#include <vector>

namespace trovik {

/// The arrays of a trace that its lines refer to by name. The same content is written once,
/// whatever asks for it.
class TROVIK_API TraceArrays {
public:
    /// \param folder  exists already.
    explicit TraceArrays(std::string folder);

    /// File of a falloff table: float32 [n]. \throw HostError of the file.
    std::string Falloff(const Store<float>& samples);
    /// File of a stamp's pixels as Image::getTile gives them: float32 [height, width, channels].
    /// They are read again only when the image object, its version, its size or `name` is another
    /// than the last time, or after ForgetPixels. \throw HostError of the file.
    std::string Pixels(Image& image, const QString& name, uint8_t channels);
    /// An image that is gone may leave its address to another; a stroke begins with pixels read
    /// anew.
    void ForgetPixels() { lastRead = {}; }
    /// A number for the image object: 0 for the first one that is asked for, and so on.
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
