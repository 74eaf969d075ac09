// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"
#include "host/Vector.h"

#include <string>
#include <vector>

namespace trovik {

/// A material capture: the colours of a lit sphere, looked up by the normal in camera space. Each
/// sphere is generated from a short list of lights and reflection lobes.
///
/// The technique is from Sloan, Martin, Gooch, Gooch: "The Lit Sphere: A Model for Capturing NPR
/// Shading from Art" (2001).
class TROVIK_API Matcap {
public:
    /// \throw HostError for a name that is not in Names().
    explicit Matcap(const std::string& name);

    /// Returns the available names; the first is the default.
    static const std::vector<std::string>& Names();

    /// Returns the linear colour for a unit normal in camera space: x to the right, y up. Normals
    /// that face away from the camera get the colour at the rim of the sphere.
    Vector At(float x, float y) const;

private:
    static constexpr int size = 256;
    /// Rows of `size` colours, from the bottom of the sphere (y = -1) to its top.
    std::vector<Vector> image;
};

}  // namespace trovik
