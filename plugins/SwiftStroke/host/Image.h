// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Node.h"

namespace trovik {

/// What Image::getTile is to deliver.
struct PixelDescriptor {
    /// 1: one value per pixel (the mean of the colour channels); 3: red, green, blue.
    uint8_t channels;
    /// 3: floating point.
    uint32_t format;
    /// 5: 32 bits a channel.
    uint32_t depth;
    uint8_t flags;
};

/// A picture in the scene.
class TROVIK_API Image : public Node {
public:
    virtual uint32_t Width() const = 0;
    virtual uint32_t Height() const = 0;
    /// 0: an image of values; 1: an image of directions, which an averaging tool cannot use.
    virtual int ImageKind() const = 0;
    /// Copies pixels out, row by row from the top, the channels of a pixel together. The rectangle
    /// must lie inside the image.
    virtual void getTile(
        int x, int y, int width, int height, void* buffer, const PixelDescriptor* descriptor) = 0;
};

}  // namespace trovik
