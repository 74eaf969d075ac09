// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/baking/LevelUvs.h"

#include <string>
#include <vector>

namespace trovik {

/// Tiles of the texture are numbered 1001 + column + 10 row, with columns 0 to 9 and rows from 0;
/// tile 1001 covers u and v from 0 to 1. A file name with `<UDIM>` stands for one file a tile.
struct MapTile {
    std::uint32_t column = 0;
    std::uint32_t row = 0;

    std::uint32_t Number() const { return 1001 + column + 10 * row; }
    static MapTile OfNumber(std::uint32_t number) {
        return {(number - 1001) % 10, (number - 1001) / 10};
    }
};

/// The number of no tile.
inline constexpr std::uint32_t noMapTile = 0;

bool HasTileMark(const std::string& path);
/// The path with the tile's number in place of `<UDIM>`.
std::string TilePath(const std::string& path, std::uint32_t number);

/// Per face of level 0 the number of the tile that its UVs lie in, or noMapTile for a face without
/// UVs. Corners may lie beyond the tile's border by 1/1000, as rounding and hand leave them; what
/// lies there is cut off.
/// \throw HostError naming the face and its UVs where they cross the border of a tile, or lie where
/// no tile is; and where `path` has no mark, but another tile than 1001 is needed. With `repeat`
/// all lie in tile 1001; refused are a mark, and faces larger than the texture.
std::vector<std::uint32_t> TilesOfFaces(const LevelUvs& uvs, const std::string& path, bool repeat);

/// The same for one place; it may lie on the border of the tile.
/// \throw HostError as above. \param what  whose UVs they are, for the message.
std::uint32_t TileOf(const std::array<float, 2>& low,
                     const std::array<float, 2>& high,
                     const std::string& what,
                     bool marked);

}  // namespace trovik
