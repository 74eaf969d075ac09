// SPDX-License-Identifier: Apache-2.0
#include "framework/baking/DisplacementMap.h"

#include "framework/baking/MapTiles.h"
#include "framework/errors/HostError.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

/// The texels on either side of a position along one axis, and the weight of the second one.
struct Between {
    std::uint32_t first;
    std::uint32_t second;
    float weight;
};

/// \param position  in texels from the outer edge of the first texel. \param repeat  whether the
/// map repeats, so that the first texel follows the last one.
Between BetweenTexels(double position, std::uint32_t size, bool repeat) {
    const double centred = position - 0.5;
    const double below = std::floor(centred);
    const auto weight = static_cast<float>(centred - below);
    const auto last = static_cast<double>(size - 1);
    const auto texel = [last, repeat, size](double at) {
        if (repeat) at -= std::floor(at / size) * size;
        return static_cast<std::uint32_t>(std::clamp(at, 0.0, last));
    };
    return {texel(below), texel(below + 1.0), weight};
}

}  // namespace

DisplacementMap::DisplacementMap(const DisplacementOptions& given)
    : options(given), marked(HasTileMark(given.path)) {
    if (marked && options.repeat)
        throw HostError(options.path + ": a map with several tiles cannot repeat");
}

void DisplacementMap::Settle(const std::optional<MapText>& description,
                             const std::string& path,
                             const FloatImage& image) {
    MapText own = description.value_or(MapText());
    if (!description) own.mid = image.isFloat ? 0.0f : 0.5f;
    own.kind = options.kind.value_or(own.kind);
    own.space = options.space.value_or(own.space);
    own.mid = options.mid.value_or(own.mid);
    own.scale = options.scale.value_or(own.scale);
    if (own.kind == MapKind::Normal)
        throw HostError(path + ": a normal map contains no displacement");
    if (own.kind == MapKind::Vector && image.channels < 3)
        throw HostError(path + ": a vector map must have three channels; this image has " +
                        std::to_string(image.channels));
    if (settled && (own.kind != text.kind || own.space != text.space || own.mid != text.mid ||
                    own.scale != text.scale))
        throw HostError(
            path + ": its format (kind, space, mid, scale) differs from that of the other tiles");
    text = own;
    settled = true;
}

const FloatImage& DisplacementMap::Tile(std::uint32_t number) {
    const auto found = tiles.find(number);
    if (found != tiles.end()) return found->second;
    const std::string path = TilePath(options.path, number);
    FloatImage image = ReadImageFile(path);
    Settle(MapText::FromLine(ReadImageDescription(path)), path, image);
    return tiles[number] = std::move(image);
}

Vector DisplacementMap::At(const std::array<float, 2>& uv) {
    const std::uint32_t number = options.repeat ? 1001 : TileOf(uv, uv, "a vertex", marked);
    const FloatImage& image = Tile(number);
    const MapTile tile = MapTile::OfNumber(number);
    const double u = static_cast<double>(uv[0]) - tile.column;
    const double v = static_cast<double>(uv[1]) - tile.row;
    const Between column = BetweenTexels(u * image.width, image.width, options.repeat);
    const Between row = BetweenTexels((1.0 - v) * image.height, image.height, options.repeat);
    const std::size_t parts = text.kind == MapKind::Vector ? 3 : 1;
    float values[3] = {};
    const auto texel = [&image](std::uint32_t x, std::uint32_t y, std::size_t part) {
        return image.pixels[(std::size_t{y} * image.width + x) * image.channels + part];
    };
    for (std::size_t part = 0; part < parts; ++part) {
        const auto mixed = [&](std::uint32_t y) {
            return texel(column.first, y, part) * (1.0f - column.weight) +
                   texel(column.second, y, part) * column.weight;
        };
        const float value = mixed(row.first) * (1.0f - row.weight) + mixed(row.second) * row.weight;
        values[part] = (value - text.mid) * text.scale * options.strength;
    }
    return {values[0], values[1], values[2]};
}

}  // namespace trovik
