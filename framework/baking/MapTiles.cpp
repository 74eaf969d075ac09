// SPDX-License-Identifier: Apache-2.0
#include "framework/baking/MapTiles.h"

#include "framework/errors/HostError.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace trovik {

namespace {

constexpr const char* mark = "<UDIM>";
constexpr double slack = 1e-3;
constexpr double columnCount = 10.0;
constexpr double rowCount = 900.0;

std::string Range(const std::array<float, 2>& low, const std::array<float, 2>& high) {
    char text[128];
    std::snprintf(text,
                  sizeof text,
                  "(%g, %g) to (%g, %g)",
                  static_cast<double>(low[0]),
                  static_cast<double>(low[1]),
                  static_cast<double>(high[0]),
                  static_cast<double>(high[1]));
    return text;
}

/// Returns the integer cell that contains a range; -1 if the range extends over more than one cell.
/// The range may touch the neighbouring cells.
double CellOf(double low, double high) {
    double cell = std::floor((low + high) * 0.5);
    // An empty range on a border belongs to the cell before the border.
    if (cell > 0.0 && low == cell && high == cell) cell -= 1.0;
    return low < cell - slack || high > cell + 1.0 + slack ? -1.0 : cell;
}

/// Texel coordinates are exact for UVs up to this value.
constexpr float farthest = 1000.0f;

std::uint32_t RepeatedTile(const std::array<float, 2>& low,
                           const std::array<float, 2>& high,
                           const std::string& what) {
    for (std::size_t i = 0; i < 2; ++i)
        if (high[i] - low[i] > 1.0f || low[i] < -farthest || high[i] > farthest)
            throw HostError("the UVs of " + what + ", " + Range(low, high) +
                            ", span more than one texture or are too far away from it");
    return MapTile().Number();
}

}  // namespace

bool HasTileMark(const std::string& path) { return path.find(mark) != std::string::npos; }

std::string TilePath(const std::string& path, std::uint32_t number) {
    std::string named = path;
    const std::size_t at = named.find(mark);
    if (at != std::string::npos)
        named.replace(at, std::string(mark).size(), std::to_string(number));
    return named;
}

std::uint32_t TileOf(const std::array<float, 2>& low,
                     const std::array<float, 2>& high,
                     const std::string& what,
                     bool marked) {
    const double column = CellOf(static_cast<double>(low[0]), static_cast<double>(high[0]));
    const double row = CellOf(static_cast<double>(low[1]), static_cast<double>(high[1]));
    const bool isFirst = column == 0.0 && row == 0.0;
    if (!marked && !isFirst)
        throw HostError("the UVs of " + what + ", " + Range(low, high) +
                        ", are outside 0 to 1; use <UDIM> in the file name for one map per tile of "
                        "the texture, or \"repeat\" for a texture that repeats");
    if (column < 0.0 || column >= columnCount || row < 0.0 || row >= rowCount)
        throw HostError("the UVs of " + what + ", " + Range(low, high) +
                        ", are not within one tile of the texture");
    return MapTile{static_cast<std::uint32_t>(column), static_cast<std::uint32_t>(row)}.Number();
}

std::vector<std::uint32_t> TilesOfFaces(const LevelUvs& uvs, const std::string& path, bool repeat) {
    const bool marked = HasTileMark(path);
    if (marked && repeat) throw HostError(path + ": a map with several tiles cannot repeat");
    std::vector<std::uint32_t> tiles(uvs.BaseFaceCount(), noMapTile);
    for (std::uint32_t face = 0; face < uvs.BaseFaceCount(); ++face) {
        CornerValues<2> corners = {};
        if (!uvs.OfBase(face, corners)) continue;
        std::array<float, 2> low = corners[0];
        std::array<float, 2> high = corners[0];
        for (std::uint32_t k = 1; k < uvs.BaseCorners(); ++k) {
            for (std::size_t i = 0; i < 2; ++i) {
                low[i] = std::min(low[i], corners[k][i]);
                high[i] = std::max(high[i], corners[k][i]);
            }
        }
        const std::string what = "face " + std::to_string(face) + " of level 0";
        tiles[face] = repeat ? RepeatedTile(low, high, what) : TileOf(low, high, what, marked);
    }
    return tiles;
}

}  // namespace trovik
