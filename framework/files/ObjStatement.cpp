// SPDX-License-Identifier: Apache-2.0
#include "framework/files/ObjStatement.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace trovik {

namespace {

constexpr std::string_view Blanks = " \t";

bool EndsAsMaterialFile(std::string_view word) {
    constexpr std::string_view ending = ".mtl";
    return word.size() > ending.size() &&
           std::equal(ending.begin(),
                      ending.end(),
                      word.end() - static_cast<std::ptrdiff_t>(ending.size()),
                      [](char a, char b) {
                          return a == (b >= 'A' && b <= 'Z' ? static_cast<char>(b - 'A' + 'a') : b);
                      });
}

}  // namespace

std::string_view TakeWord(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(Blanks), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(Blanks));
    text.remove_prefix(word.size());
    return word;
}

std::string Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(Blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return std::string(text.substr(first, text.find_last_not_of(Blanks) - first + 1));
}

std::optional<ObjCorner> CornerOf(std::string_view word) {
    ObjCorner corner;
    for (std::int32_t* const part : {&corner.vertex, &corner.uv, &corner.normal}) {
        const std::string_view number = word.substr(0, word.find('/'));
        if (!number.empty() || part == &corner.vertex) {
            const char* const end = number.data() + number.size();
            const auto [used, error] = std::from_chars(number.data(), end, *part);
            if (used != end || error != std::errc() || corner.vertex == 0) {
                return std::nullopt;
            }
        }
        word.remove_prefix(number.size());
        if (word.empty()) {
            return corner;
        }
        word.remove_prefix(1);
    }
    return std::nullopt;
}

std::vector<std::string> MaterialFileNames(std::string_view text) {
    std::vector<std::string> names;
    for (;;) {
        text.remove_prefix(std::min(text.find_first_not_of(Blanks), text.size()));
        if (text.empty()) {
            return names;
        }
        const std::string_view start = text;
        std::string_view word;
        do {
            word = TakeWord(text);
        } while (!word.empty() && !EndsAsMaterialFile(word));
        std::string name = Trimmed(start.substr(0, start.size() - text.size()));
        std::replace(name.begin(), name.end(), '\\', '/');
        names.push_back(std::move(name));
    }
}

std::uint32_t SmoothingGroupOf(std::string_view text, std::uint32_t otherwise) {
    if (text == "off" || text == "on") {
        return text == "on" ? 1 : 0;
    }
    std::uint32_t group = 0;
    const char* const end = text.data() + text.size();
    const auto [used, error] = std::from_chars(text.data(), end, group);
    const bool isNumber = used == end && error == std::errc() && group != SurfaceAttributes::none;
    return isNumber ? group : otherwise;
}

std::uint32_t ObjNames::Number() {
    if (number == SurfaceAttributes::none && !chosen.empty()) {
        const auto [entry, isNew] =
            numbers.try_emplace(chosen, static_cast<std::uint32_t>(names.size()));
        if (isNew) {
            names.push_back(chosen);
        }
        number = entry->second;
    }
    return number;
}

}  // namespace trovik
