// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <optional>
#include <string>

namespace trovik {

enum class MapKind { Displacement, Vector, Normal };
enum class MapSpace { Tangent, Object };

/// "displacement", "vector", "normal".
TROVIK_API const char* MapKindName(MapKind kind);
/// "tangent", "object".
TROVIK_API const char* MapSpaceName(MapSpace space);
/// None for another word.
TROVIK_API std::optional<MapKind> MapKindOf(const std::string& name);
TROVIK_API std::optional<MapSpace> MapSpaceOf(const std::string& name);

/// What the numbers of a map's file mean; it is stored beside its pixels as a line of text, such as
/// `trovik-map kind=vector space=tangent from=3 to=0 mid=0.5 scale=0.25`.
struct TROVIK_API MapText {
    MapKind kind = MapKind::Displacement;
    MapSpace space = MapSpace::Tangent;
    unsigned from = 0;
    unsigned to = 0;
    /// A number v in the file stands for (v - mid) * scale.
    float mid = 0.0f;
    float scale = 1.0f;

    std::string ToLine() const;
    /// None where the line is not of this kind.
    static std::optional<MapText> FromLine(const std::string& line);
};

}  // namespace trovik
