// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"

#include <memory>
#include <vector>

namespace trovik {

class JobControl;

/// The faces of one mesh. The arrays are borrowed for the lifetime of the RayCaster.
struct RayMesh {
    /// x, y, z of each vertex, tightly packed; at least 4 more bytes must be readable after the
    /// last vertex.
    const float* positions = nullptr;
    uint32_t vertexCount = 0;
    const uint32_t* faceVertexIndices = nullptr;
    uint32_t faceCount = 0;
    /// The number of corners per face: 3 or 4.
    uint32_t cornersPerFace = 4;
};

struct RayHit {
    /// Index of the RayMesh.
    uint32_t mesh = 0;
    uint32_t face = 0;
    /// Position within the face: for a quad, the coordinates along its first and last sides; for a
    /// triangle, the weights of its second and third corners.
    float u = 0.0f;
    float v = 0.0f;
    /// Distance from the origin, in units of the length of the ray direction.
    float distance = 0.0f;
    /// Normal of the face, not normalised.
    Vector normal;
};

struct RayBounds {
    Vector low;
    Vector high;
};

/// Intersects rays with meshes. All functions are thread-safe.
class RayCaster {
public:
    /// The largest absolute value of the components of origins, directions and positions. Rays
    /// beyond it hit nothing, and faces with vertices beyond it are never hit. The same applies to
    /// non-finite values.
    static constexpr float maxCoordinate = 1e18f;

    virtual ~RayCaster() = default;
    /// Finds the first hit of a ray. \return false if the ray hits nothing; `hit` is then
    /// unchanged.
    virtual bool Hit(const Vector& origin, const Vector& direction, RayHit& hit) const = 0;
    /// Returns whether the ray hits anything within `distance`.
    virtual bool IsBlocked(const Vector& origin, const Vector& direction, float distance) const = 0;
    /// Returns the bounding box of all faces; `low` is above `high` if there are no faces.
    virtual RayBounds Bounds() const = 0;
};

/// Creates ray casters. It is implemented in the module `trovik-embree`.
class RayLibrary {
public:
    /// \throw HostError if memory is insufficient; Cancelled.
    virtual std::unique_ptr<RayCaster> MakeCaster(const std::vector<RayMesh>& meshes,
                                                  JobControl* job) const = 0;

protected:
    ~RayLibrary() = default;
};

}  // namespace trovik
