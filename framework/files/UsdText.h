// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/io/OutputFile.h"
#include "host/Api.h"

#include <array>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>

/// \file
/// Names and arrays in USD text.
namespace trovik {

/// Converts a name to a valid prim name: ASCII letters, digits and underscores, not starting with a
/// digit. An empty name becomes "mesh".
std::string UsdPrimName(const std::string& name);

/// Returns the text in quotation marks.
TROVIK_API std::string UsdQuoted(const std::string& text);

/// Generates unique names for the children of a prim.
class UsdNames {
public:
    /// Returns the prim name of `name`, with a number appended if it is already used.
    std::string Unique(const std::string& name);

private:
    std::set<std::string> taken;
};

/// Writes the elements of an array, separated by commas.
class UsdList {
public:
    UsdList(OutputFile& target, std::string_view declaration) : file(target) {
        file.Write("    ");
        file.Write(declaration);
        file.Write(" = [");
    }
    void Whole(std::uint32_t number) {
        Separate();
        file.Number(std::uint64_t{number});
    }
    void Number(float number) {
        Separate();
        file.Number(number);
    }
    template <std::size_t count>
    void Tuple(const std::array<float, count>& numbers, std::size_t wanted = count) {
        Separate();
        file.Put('(');
        for (std::size_t i = 0; i < wanted; ++i) {
            file.Write(i == 0 ? "" : ", ");
            file.Number(numbers[i]);
        }
        file.Put(')');
    }
    /// Ends the array.
    /// \param interpolation  empty if the attribute has none.
    void End(std::string_view interpolation = {}) {
        file.Put(']');
        if (!interpolation.empty()) {
            file.Write(" (\n        interpolation = \"");
            file.Write(interpolation);
            file.Write("\"\n    )");
        }
        file.Put('\n');
    }

private:
    void Separate() {
        if (!isFirst) {
            file.Write(", ");
        }
        isFirst = false;
    }

    OutputFile& file;
    bool isFirst = true;
};

}  // namespace trovik
