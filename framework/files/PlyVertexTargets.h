// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/files/PlyHeader.h"

#include <cstddef>
#include <string>
#include <vector>

namespace trovik {

/// Numbers of a vertex row that are taken, in this order.
inline constexpr std::size_t plyFirstNormal = 3;
inline constexpr std::size_t plyFirstUv = 6;
inline constexpr std::size_t plyFirstColor = 8;
inline constexpr std::size_t plyAlpha = 11;
inline constexpr std::size_t plyVertexNumbers = 12;

struct PlyVertexTargets {
    /// Per property the index of its target value; -1 if the property is not read.
    std::vector<int> places;
    bool hasNormals = false;
    bool hasUvs = false;
    bool hasColors = false;
    bool hasAlpha = false;
};

/// Finds the numbers by the names of the properties.
/// \throw HostError naming the file if a coordinate is missing.
PlyVertexTargets FindPlyVertexTargets(const std::string& path, const PlyElement& element);

}  // namespace trovik
