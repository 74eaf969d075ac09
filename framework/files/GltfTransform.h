// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/files/GltfDocument.h"

#include <array>

namespace trovik {

/// A matrix column by column, as in the files: columns are the images of the axes, and the
/// translation.
using GltfTransform = std::array<double, 16>;

inline constexpr GltfTransform gltfIdentity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

GltfTransform Product(const GltfTransform& a, const GltfTransform& b);
double Determinant(const GltfTransform& m);
std::array<float, 3> Moved(const GltfTransform& m, const std::array<float, 3>& p);

/// Normals go by the cofactors, which are the inverse, transposed, but for the length and the sign.
std::array<float, 3> Turned(const GltfTransform& m, double sign, const std::array<float, 3>& n);

/// The transform of a node relative to its parent. \throw HostError if it is not finite.
GltfTransform LocalTransform(const tinygltf::Node& node, const GltfPlace& place);

}  // namespace trovik
