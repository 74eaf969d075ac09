// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/baking/MapDisplacement.h"
#include "framework/images/ImageFile.h"
#include "host/Vector.h"

#include <array>
#include <map>

namespace trovik {

/// The files of a displacement map, read tile by tile on demand.
class DisplacementMap {
public:
    /// Reads no file yet.
    explicit DisplacementMap(const DisplacementOptions& options);

    /// Returns the value of the map at a position: a scalar in x, or a vector.
    /// \throw HostError for a position outside the map or a file that cannot be read.
    Vector At(const std::array<float, 2>& uv);
    /// Returns the kind of the map; valid after a tile has been read.
    MapKind Kind() const { return text.kind; }
    MapSpace Space() const { return text.space; }

private:
    const FloatImage& Tile(std::uint32_t number);
    /// \param description  the description stored in the file; the options override its values.
    void Settle(const std::optional<MapText>& description,
                const std::string& path,
                const FloatImage& image);

    DisplacementOptions options;
    bool marked;
    bool settled = false;
    MapText text;
    std::map<std::uint32_t, FloatImage> tiles;
};

}  // namespace trovik
