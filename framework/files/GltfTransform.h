// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/files/GltfDocument.h"

#include <array>

namespace trovik {

/// A column-major matrix, as in glTF files: the columns are the images of the three axes, followed
/// by the translation.
using GltfTransform = std::array<double, 16>;

inline constexpr GltfTransform gltfIdentity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

GltfTransform Product(const GltfTransform& a, const GltfTransform& b);
double Determinant(const GltfTransform& m);
std::array<float, 3> Moved(const GltfTransform& m, const std::array<float, 3>& p);

/// Transforms a normal by the cofactor matrix, which equals the inverse transpose up to length and
/// sign; see Turkowski: "Properties of Surface-Normal Transformations" (1990).
std::array<float, 3> Turned(const GltfTransform& m, double sign, const std::array<float, 3>& n);

/// Returns the transform of a node relative to its parent. A rotation is a unit quaternion; for its
/// matrix, see Shoemake: "Animating Rotation with Quaternion Curves" (1985).
/// \throw HostError if the transform is not finite.
GltfTransform LocalTransform(const tinygltf::Node& node, const GltfLocation& location);

}  // namespace trovik
