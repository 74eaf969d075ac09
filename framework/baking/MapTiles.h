// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/baking/LevelUvs.h"

#include <string>
#include <vector>

namespace trovik {

/// Tiles of the texture are numbered 1001 + column + 10 row, with columns 0 to 9 and rows from 0;
/// tile 1001 covers u and v from 0 to 1. A file name with `<UDIM>` names one file per tile.
struct MapTile {
    std::uint32_t column = 0;
    std::uint32_t row = 0;

    std::uint32_t Number() const { return 1001 + column + 10 * row; }
    static MapTile OfNumber(std::uint32_t number) {
        return {(number - 1001) % 10, (number - 1001) / 10};
    }
};

/// The number that means "no tile".
inline constexpr std::uint32_t noMapTile = 0;

bool HasTileMark(const std::string& path);
/// The path with `<UDIM>` replaced by the tile's number.
std::string TilePath(const std::string& path, std::uint32_t number);

/// For each face of level 0, the number of the tile that contains its UVs, or noMapTile for a face
/// without UVs. Corners may exceed the tile's border by 1/1000, as can result from rounding or
/// manual editing; the excess is clipped.
/// \throw HostError naming the face and its UVs if they cross the border of a tile or lie outside
/// all tiles, and if `path` has no mark but another tile than 1001 is needed. With `repeat` all
/// faces lie in tile 1001; a mark in the path and faces larger than the texture are rejected.
std::vector<std::uint32_t> TilesOfFaces(const LevelUvs& uvs, const std::string& path, bool repeat);

/// The tile that contains a UV range, which may touch the tile's border.
/// \throw HostError for the reasons given at TilesOfFaces. \param what  names the owner of the UVs
/// in the message.
std::uint32_t TileOf(const std::array<float, 2>& low,
                     const std::array<float, 2>& high,
                     const std::string& what,
                     bool marked);

}  // namespace trovik
