// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/images/ImageFile.h"

#include <string>
#include <vector>

/// The stamps that are installed with the tools. They are generated, with identical pixels in every
/// run and on every machine.
namespace trovik::stamps {

/// The values of a height stamp range from 0 (no effect) to 1; those of the knife range from -1 to
/// 1.
/// \return one channel, size x size, exactly 0 along the borders.
FloatImage PaintBrickTile();
FloatImage PaintReptileScale();
FloatImage PaintKnifeCut();
FloatImage PaintRubble();

/// The channels of a vector displacement map are the displacements towards the right of the image,
/// out of the surface, and towards the bottom of the image, in units of the stamp's side.
/// \return three channels, size x size, exactly 0 along the borders.
FloatImage PaintEarCurl();
FloatImage PaintHook();
FloatImage PaintPetalScale();

/// The number format of a stamp file.
enum class StampFile {
    Heights,        ///< 16 bits, 0 to 1
    SignedHeights,  ///< 16 bits, -1 to 1
    Vectors,        ///< 32-bit floats
};

struct ShippedStamp {
    /// Path relative to the stamp folder, with forward slashes.
    const char* path;
    StampFile file;
    FloatImage (*paint)();
};

/// Returns all installed stamps, in the order in which they are painted.
const std::vector<ShippedStamp>& ShippedStamps();

/// Paints one stamp and writes it to folder/path; creates missing folders.
/// \throw HostError naming the file and the reason.
void WriteStamp(const ShippedStamp& stamp, const std::string& folder);

}  // namespace trovik::stamps
