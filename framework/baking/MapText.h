// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <optional>
#include <string>

namespace trovik {

enum class MapKind { Displacement, Vector, Normal };
enum class MapSpace { Tangent, Object };

/// \return "displacement", "vector" or "normal".
TROVIK_API const char* MapKindName(MapKind kind);
/// \return "tangent" or "object".
TROVIK_API const char* MapSpaceName(MapSpace space);
/// \return nothing for an unknown name.
TROVIK_API std::optional<MapKind> MapKindOf(const std::string& name);
TROVIK_API std::optional<MapSpace> MapSpaceOf(const std::string& name);

/// The meaning of the values in a map file. It is stored with the pixels as a line of text, such as
/// `trovik-map kind=vector space=tangent from=3 to=0 mid=0.5 scale=0.25`.
struct TROVIK_API MapText {
    MapKind kind = MapKind::Displacement;
    MapSpace space = MapSpace::Tangent;
    unsigned from = 0;
    unsigned to = 0;
    /// A value v in the file represents (v - mid) * scale.
    float mid = 0.0f;
    float scale = 1.0f;

    std::string ToLine() const;
    /// \return nothing if the line does not have this format.
    static std::optional<MapText> FromLine(const std::string& line);
};

}  // namespace trovik
