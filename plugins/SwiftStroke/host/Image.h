// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Node.h"

namespace trovik {

/// The pixel format that Image::getTile must return.
struct PixelDescriptor {
    /// 1: one value per pixel (the mean of the colour channels); 3: red, green, blue.
    uint8_t channels;
    /// 3: floating point.
    uint32_t format;
    /// 5: 32 bits per channel.
    uint32_t depth;
    uint8_t flags;
};

/// An image in the scene.
class TROVIK_API Image : public Node {
public:
    virtual uint32_t Width() const = 0;
    virtual uint32_t Height() const = 0;
    /// 0 if the pixels are values; 1 if they are directions, which averaging tools cannot use.
    virtual int ImageKind() const = 0;
    /// Copies pixels, row by row from the top, with interleaved channels. The rectangle must be
    /// inside the image.
    virtual void getTile(
        int x, int y, int width, int height, void* buffer, const PixelDescriptor* descriptor) = 0;
};

}  // namespace trovik
