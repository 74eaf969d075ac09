// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/baking/LevelUvs.h"

#include <string>
#include <vector>

namespace trovik {

/// Texture tiles are numbered 1001 + column + 10 * row (UDIM), with columns 0 to 9 and rows from 0;
/// tile 1001 covers u and v from 0 to 1. A file name that contains `<UDIM>` refers to one file per
/// tile.
struct MapTile {
    std::uint32_t column = 0;
    std::uint32_t row = 0;

    std::uint32_t Number() const { return 1001 + column + 10 * row; }
    static MapTile OfNumber(std::uint32_t number) {
        return {(number - 1001) % 10, (number - 1001) / 10};
    }
};

/// The value for "no tile".
inline constexpr std::uint32_t noMapTile = 0;

bool HasTileMark(const std::string& path);
/// Returns the path with `<UDIM>` replaced by the tile number.
std::string TilePath(const std::string& path, std::uint32_t number);

/// Returns, for each face of level 0, the number of the tile that contains its UVs, or noMapTile
/// for a face without UVs. Corners may lie up to 1/1000 outside the tile, because rounding or
/// manual editing can cause small deviations; the excess is clipped.
/// \throw HostError naming the face and its UVs if they cross a tile border or lie outside all
/// tiles, and if a tile other than 1001 is needed but `path` does not contain `<UDIM>`. With
/// `repeat`, all faces lie in tile 1001; paths with `<UDIM>` are rejected, and so are faces larger
/// than the texture.
std::vector<std::uint32_t> TilesOfFaces(const LevelUvs& uvs, const std::string& path, bool repeat);

/// Returns the tile that contains a UV range. The range may touch the tile's border.
/// \throw HostError for the same reasons as TilesOfFaces. \param what  the owner of the UVs, for
/// the message.
std::uint32_t TileOf(const std::array<float, 2>& low,
                     const std::array<float, 2>& high,
                     const std::string& what,
                     bool marked);

}  // namespace trovik
