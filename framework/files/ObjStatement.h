// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/SurfaceAttributes.h"
#include "host/Api.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// \file
/// Parsers for parts of OBJ statements.
namespace trovik {

/// Removes and returns the first word of `text`; returns an empty word at the end.
std::string_view TakeWord(std::string_view& text);

/// Returns the text without leading and trailing blanks.
std::string Trimmed(std::string_view text);

/// A face corner as written in the file: indices count from 1; negative indices count back from the
/// last element defined so far; 0 means that the index is missing.
struct ObjCorner {
    std::int32_t vertex = 0;
    std::int32_t uv = 0;
    std::int32_t normal = 0;
};

/// Parses `v`, `v/t`, `v//n` or `v/t/n` with 32-bit integers, where v is not 0. The index after a
/// slash may be missing, because some exporters omit it.
/// \return nothing for any other text.
std::optional<ObjCorner> CornerOf(std::string_view word);

/// Returns the names in an `mtllib` statement. Names may contain blanks, so each name ends with a
/// word that ends in ".mtl", in upper or lower case; any text after the last such word is one more
/// name. Backslashes are converted to forward slashes.
TROVIK_API std::vector<std::string> MaterialFileNames(std::string_view text);

/// Returns the group number of an `s` statement: the given integer, 0 for `off`, or 1 for `on`.
/// \param otherwise  the result for any other text.
TROVIK_API std::uint32_t SmoothingGroupOf(std::string_view text, std::uint32_t otherwise);

/// Group or material names, numbered in the order in which faces first use them.
struct ObjNames {
    std::vector<std::string> names;
    std::unordered_map<std::string, std::uint32_t> numbers;
    std::string chosen;
    std::uint32_t number = SurfaceAttributes::none;

    void Choose(const std::string& name) {
        chosen = name;
        number = SurfaceAttributes::none;
    }
    /// Returns the number of the most recently chosen name.
    std::uint32_t Number();
};

}  // namespace trovik
