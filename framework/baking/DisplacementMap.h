// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/baking/MapDisplacement.h"
#include "framework/images/ImageFile.h"
#include "host/Vector.h"

#include <array>
#include <map>

namespace trovik {

/// The files of a displacement map, read tile by tile as they are asked for.
class DisplacementMap {
public:
    /// Reads nothing yet.
    explicit DisplacementMap(const DisplacementOptions& options);

    /// What the map says at a place: a scalar in x, or a vector.
    /// \throw HostError for a place outside the map, and for files that cannot be read.
    Vector At(const std::array<float, 2>& uv);
    /// Known once a tile was read.
    MapKind Kind() const { return text.kind; }
    MapSpace Space() const { return text.space; }

private:
    const FloatImage& Tile(std::uint32_t number);
    /// \param said  by the file; takes part in nothing where options say otherwise.
    void Settle(const std::optional<MapText>& said,
                const std::string& path,
                const FloatImage& image);

    DisplacementOptions options;
    bool marked;
    bool settled = false;
    MapText text;
    std::map<std::uint32_t, FloatImage> tiles;
};

}  // namespace trovik
