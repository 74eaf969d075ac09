// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/SurfaceAttributes.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// \file
/// Parsing of parts of OBJ statements.
namespace trovik {

/// Removes and returns the first word of `text`; returns an empty word at the end.
std::string_view TakeWord(std::string_view& text);

/// Returns the text without surrounding blanks.
std::string Trimmed(std::string_view text);

/// Returns whether the word is `v`, `v/t`, `v//n` or `v/t/n` with integers that fit the int of
/// tinyobjloader, and v is not 0. A number after a slash may be missing, because some exporters
/// omit it.
/// \param uv  receives t, or 0 if it is missing; tinyobjloader would use the number of the next
/// corner in that case.
bool IsCorner(std::string_view word, std::int32_t& uv);

/// Returns the names in an `mtllib` statement. Names may contain blanks, so a name ends at a word
/// that ends in ".mtl" in any case; the rest after the last such word is one name. Backslashes
/// become slashes.
std::vector<std::string> MaterialFileNames(std::string_view text);

/// Returns the number of an `s` statement: an integer, 0 for `off`, 1 for `on`.
/// \param otherwise  the result for any other text.
std::uint32_t SmoothingGroupOf(std::string_view text, std::uint32_t otherwise);

/// Names of groups or materials, numbered in the order in which faces first use them.
struct ObjNames {
    std::vector<std::string> names;
    std::unordered_map<std::string, std::uint32_t> numbers;
    std::string chosen;
    std::uint32_t number = SurfaceAttributes::none;

    void Choose(const std::string& name) {
        chosen = name;
        number = SurfaceAttributes::none;
    }
    /// Returns the number of the name that was chosen last.
    std::uint32_t Number();
};

}  // namespace trovik
