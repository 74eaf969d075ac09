// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/baking/MapBaker.h"

#include <optional>
#include <string>
#include <vector>

namespace trovik {

/// How a map's numbers are stored.
///
/// Floats hold displacements in the units of the mesh, with mid 0 and scale 1, and normals as
/// 0.5 + 0.5 n. Whole numbers of 16 bits hold 0.5 + d / scale for displacements, where scale is
/// twice the range, and 0.5 + 0.5 n for normals: of v from 0 to 1 the number nearest to 65535 v.
enum class MapBits { Sixteen, Float };

struct MapFileOptions {
    /// `.exr` (floats), `.png` (16 bits), `.tif` or `.tiff` (both); `<UDIM>` in it gives one file
    /// for each tile.
    std::string path;
    /// Without: floats in .exr, 16 bits in the others.
    std::optional<MapBits> bits = {};
    /// Displacements of this size reach 0 and 1; without, the largest there is. For 16 bits.
    std::optional<float> range = {};
};

/// What was written.
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
    /// One line for the user where something is doubtful; empty otherwise.
    std::string warning;
};

/// How the numbers of a map are stored. \throw HostError for a file name or a range that cannot be
/// written so.
TROVIK_API MapBits BitsFor(const MapFileOptions& file);

/// Bakes a map (BakeMap) and writes it, with a line that tells what its numbers mean (MapText).
/// Numbers run from the top row, v = 1, to the bottom. Channels of vectors and normals: red along
/// u (tangent), green along v (bitangent: +Y), blue along the normal; mesh-local: x, y, z.
/// Each file is complete or not there. The same levels give the same bytes.
/// \throw HostError as BakeMap, before the work for a file name that cannot be written, and when
/// the displacement passes the range that was asked for; Cancelled. Files of tiles that were
/// complete before a cancellation stay.
TROVIK_API MapReport BakeToFile(LevelGeometry& geometry,
                                const BakeOptions& options,
                                const MapFileOptions& file,
                                JobControl* job = nullptr);

}  // namespace trovik
