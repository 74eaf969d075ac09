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
/// Parts of the statements of an OBJ file.
namespace trovik {

/// Takes the next word off the front of `text`; empty at its end.
std::string_view TakeWord(std::string_view& text);

/// The text without the blanks around it.
std::string Trimmed(std::string_view text);

/// A corner of a face as it is written: numbers count from 1, or back from the last element that is
/// defined so far where they are negative; 0: missing.
struct ObjCorner {
    std::int32_t vertex = 0;
    std::int32_t uv = 0;
    std::int32_t normal = 0;
};

/// Reads `v`, `v/t`, `v//n` or `v/t/n` of whole numbers of 32 bits, with v other than 0. A number
/// after a slash may be missing, as some exporters write it.
/// \return nothing for any other text.
std::optional<ObjCorner> CornerOf(std::string_view word);

/// The names in a statement `mtllib`. A name ends at a word that ends in ".mtl" in any case, since
/// names may contain blanks; what follows the last such word is one name. Backslashes become
/// slashes.
TROVIK_API std::vector<std::string> MaterialFileNames(std::string_view text);

/// The number of a statement `s`: a whole number, 0 for `off`, 1 for `on`.
/// \param otherwise  the result for any other text.
TROVIK_API std::uint32_t SmoothingGroupOf(std::string_view text, std::uint32_t otherwise);

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
    /// Of the name that was chosen last.
    std::uint32_t Number();
};

}  // namespace trovik
