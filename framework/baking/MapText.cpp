// SPDX-License-Identifier: Apache-2.0
#include "framework/baking/MapText.h"

#include "framework/io/NumberText.h"

#include <charconv>
#include <cmath>
#include <sstream>

namespace trovik {

namespace {

constexpr const char* head = "trovik-map";

std::string NumberLine(float value) {
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    return std::string(text, end);
}

bool ReadWhole(const std::string& text, unsigned& value) {
    const char* end = text.data() + text.size();
    const auto [used, error] = std::from_chars(text.data(), end, value);
    return used == end && error == std::errc();
}

}  // namespace

const char* MapKindName(MapKind kind) {
    return kind == MapKind::Displacement ? "displacement"
           : kind == MapKind::Vector     ? "vector"
                                         : "normal";
}

const char* MapSpaceName(MapSpace space) {
    return space == MapSpace::Tangent ? "tangent" : "object";
}

std::optional<MapKind> MapKindOf(const std::string& name) {
    for (const MapKind kind : {MapKind::Displacement, MapKind::Vector, MapKind::Normal})
        if (name == MapKindName(kind)) return kind;
    return std::nullopt;
}

std::optional<MapSpace> MapSpaceOf(const std::string& name) {
    for (const MapSpace space : {MapSpace::Tangent, MapSpace::Object})
        if (name == MapSpaceName(space)) return space;
    return std::nullopt;
}

std::string MapText::ToLine() const {
    std::ostringstream line;
    line << head << " kind=" << MapKindName(kind) << " space=" << MapSpaceName(space)
         << " from=" << from << " to=" << to << " mid=" << NumberLine(mid)
         << " scale=" << NumberLine(scale);
    return line.str();
}

std::optional<MapText> MapText::FromLine(const std::string& line) {
    std::istringstream words(line);
    std::string word;
    if (!(words >> word) || word != head) return std::nullopt;
    MapText text;
    while (words >> word) {
        const std::size_t equals = word.find('=');
        if (equals == std::string::npos) return std::nullopt;
        const std::string key = word.substr(0, equals);
        const std::string value = word.substr(equals + 1);
        bool understood = true;
        if (key == "kind") {
            const auto kind = MapKindOf(value);
            understood = kind.has_value();
            text.kind = kind.value_or(text.kind);
        } else if (key == "space") {
            const auto space = MapSpaceOf(value);
            understood = space.has_value();
            text.space = space.value_or(text.space);
        } else if (key == "from") {
            understood = ReadWhole(value, text.from);
        } else if (key == "to") {
            understood = ReadWhole(value, text.to);
        } else if (key == "mid") {
            understood = ParseFloat(value, text.mid) && std::isfinite(text.mid);
        } else if (key == "scale") {
            understood = ParseFloat(value, text.scale) && std::isfinite(text.scale);
        }
        if (!understood) return std::nullopt;
    }
    return text;
}

}  // namespace trovik
