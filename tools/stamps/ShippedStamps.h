// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/images/ImageFile.h"

#include <string>
#include <vector>

/// The stamps that come with the tools. Painted by arithmetic alone: the same pixels on every run
/// and every machine.
namespace trovik::stamps {

/// A height stamp's values run from 0, nothing happens, to 1; those of the knife go down to -1.
/// \return one channel, size x size, exactly 0 along the borders.
FloatImage PaintBrickTile();
FloatImage PaintReptileScale();
FloatImage PaintKnifeCut();
FloatImage PaintRubble();

/// A vector displacement map's channels are the moves to the right of the image, out of the
/// surface, and towards the image's bottom, in sides of the stamp.
/// \return three channels, size x size, exactly 0 along the borders.
FloatImage PaintEarCurl();
FloatImage PaintHook();
FloatImage PaintPetalScale();

/// How a stamp's file keeps its values.
enum class StampFile {
    Heights,        ///< 16 bits, 0 to 1
    SignedHeights,  ///< 16 bits, -1 to 1
    Vectors,        ///< 32-bit floats
};

struct ShippedStamp {
    /// Below the stamps' folder, with forward slashes.
    const char* path;
    StampFile file;
    FloatImage (*paint)();
};

/// All of them, in the order of their making.
const std::vector<ShippedStamp>& ShippedStamps();

/// Paints one stamp and writes it to folder/path; the folder for it is made where it is missing.
/// \throw HostError naming the file and the reason.
void WriteStamp(const ShippedStamp& stamp, const std::string& folder);

}  // namespace trovik::stamps
