// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/baking/MapBaker.h"

#include <optional>
#include <string>
#include <vector>

namespace trovik {

/// How the values of a map are stored.
///
/// Floats contain displacements in the units of the mesh, with mid 0 and scale 1, and normals as
/// 0.5 + 0.5 n. 16-bit integers contain 0.5 + d / scale for displacements, where scale is twice the
/// range, and 0.5 + 0.5 n for normals: a value v from 0 to 1 is stored as the integer nearest to
/// 65535 v.
enum class MapBits { Sixteen, Float };

struct MapFileOptions {
    /// `.exr` (floats), `.png` (16 bits), `.tif` or `.tiff` (both); with `<UDIM>` in the name, one
    /// file per tile.
    std::string path;
    /// By default floats in .exr files, 16 bits in the others.
    std::optional<MapBits> bits = {};
    /// For 16 bits: displacements of this size map to 0 and 1; by default the largest displacement.
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

/// The number format of a map file. \throw HostError if the file name or the range does not support
/// it.
TROVIK_API MapBits BitsFor(const MapFileOptions& file);

/// Bakes a map (BakeMap) and writes it, with a line that describes the meaning of its values
/// (MapText). Rows run from the top, v = 1, to the bottom. Channels of vectors and normals: red
/// along u (tangent), green along v (bitangent: +Y), blue along the normal; mesh-local: x, y, z.
/// Each file is either complete or absent. Equal levels give equal bytes.
/// \throw HostError like BakeMap; before baking, for a file name that cannot be written; and if the
/// displacement exceeds the requested range. Cancelled; files of tiles that were complete before a
/// cancellation remain.
TROVIK_API MapReport BakeToFile(LevelGeometry& geometry,
                                const BakeOptions& options,
                                const MapFileOptions& file,
                                JobControl* job = nullptr);

}  // namespace trovik
