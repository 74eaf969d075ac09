// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/baking/MapBaker.h"

#include <optional>
#include <string>
#include <vector>

namespace trovik {

/// Specifies how the values of a map are stored.
///
/// In both formats, a normal n is stored as 0.5 + 0.5 n. Floats store displacements in mesh units,
/// with mid 0 and scale 1. 16-bit integers store a displacement d as 0.5 + d / scale, where scale
/// is twice the range; a value v from 0 to 1 becomes the integer nearest to 65535 v.
enum class MapBits { Sixteen, Float };

struct MapFileOptions {
    /// `.exr` (floats), `.png` (16 bits), `.tif` or `.tiff` (either); with `<UDIM>` in the name,
    /// one file per tile.
    std::string path;
    /// By default, .exr files store floats and all others store 16 bits.
    std::optional<MapBits> bits = {};
    /// For 16 bits: the displacements -range to +range are mapped to pixel values from 0 to 1. By
    /// default, the range is the largest displacement.
    std::optional<float> range = {};
};

/// The result of BakeToFile.
struct MapReport {
    std::vector<std::string> files;
    MapText text;
    MapBits bits = MapBits::Float;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    float range = 0.0f;
    std::uint64_t coveredTexels = 0;
    std::uint64_t paddedTexels = 0;
    std::uint64_t overlappingTexels = 0;
    /// A one-line warning for the user if the result is questionable; empty otherwise.
    std::string warning;
};

/// Returns the number format of a map file. \throw HostError if the file name or the range does not
/// support it.
TROVIK_API MapBits BitsFor(const MapFileOptions& file);

/// Bakes a map (BakeMap) and writes it to a file, with a line of text that describes its values
/// (MapText). Rows run from the top, v = 1, to the bottom. Channels of vectors and normals: in
/// tangent-space maps, red is along u (tangent), green along v (bitangent, +Y) and blue along the
/// normal; in mesh-local maps, they are x, y and z. Each file is either complete or absent.
/// Identical levels produce identical files.
/// \throw HostError for the same reasons as BakeMap, for a file name that cannot be written (before
/// baking starts), and if the displacement exceeds the requested range. Cancelled; tiles whose
/// files are already complete are kept.
TROVIK_API MapReport BakeToFile(LevelGeometry& geometry,
                                const BakeOptions& options,
                                const MapFileOptions& file,
                                JobControl* job = nullptr);

}  // namespace trovik
