// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/files/PlyHeader.h"

#include <cstddef>
#include <string>
#include <vector>

namespace trovik {

/// The numbers that are read from a vertex row: position, normal, UV, colour, alpha. Each constant
/// is the index of the first number of its kind.
inline constexpr std::size_t plyFirstNormal = 3;
inline constexpr std::size_t plyFirstUv = 6;
inline constexpr std::size_t plyFirstColor = 8;
inline constexpr std::size_t plyAlpha = 11;
inline constexpr std::size_t plyVertexNumbers = 12;

struct PlyVertexTargets {
    /// For each property, its index among the numbers that are read, or -1 if it is skipped.
    std::vector<int> slots;
    bool hasNormals = false;
    bool hasUvs = false;
    bool hasColors = false;
    bool hasAlpha = false;
};

/// Assigns the properties of a vertex element to these numbers by name.
/// \throw HostError with the file if a coordinate is missing.
PlyVertexTargets FindPlyVertexTargets(const std::string& path, const PlyElement& element);

}  // namespace trovik
