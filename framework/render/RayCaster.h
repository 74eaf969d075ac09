// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"

#include <memory>
#include <vector>

namespace trovik {

class JobControl;

/// The faces of one mesh. The arrays are borrowed as long as the RayCaster lives.
struct RayMesh {
    /// x, y, z of each vertex without gaps; at least 4 more bytes can be read after the last one.
    const float* positions = nullptr;
    uint32_t vertexCount = 0;
    const uint32_t* faceVertexIndices = nullptr;
    uint32_t faceCount = 0;
    /// 3 or 4.
    uint32_t cornersPerFace = 4;
};

struct RayHit {
    /// Index of the RayMesh.
    uint32_t mesh = 0;
    uint32_t face = 0;
    /// Position in the face: of a quad along its first and its last side; of a triangle the weights
    /// of its second and third corner.
    float u = 0.0f;
    float v = 0.0f;
    /// In units of the ray's direction.
    float distance = 0.0f;
    /// Normal of the face, of any length.
    Vector normal;
};

struct RayBounds {
    Vector low;
    Vector high;
};

/// Finds what rays hit. All functions may be called from several threads.
class RayCaster {
public:
    /// The largest component, positive or negative, of origins, directions and positions. Rays
    /// beyond it hit nothing, and faces with vertices beyond it are not hit; nor are those with
    /// components that are not finite.
    static constexpr float maxCoordinate = 1e18f;

    virtual ~RayCaster() = default;
    /// \return false if the ray hits nothing; `hit` is unchanged then.
    virtual bool Hit(const Vector& origin, const Vector& direction, RayHit& hit) const = 0;
    /// Whether the ray hits anything up to `distance`.
    virtual bool IsBlocked(const Vector& origin, const Vector& direction, float distance) const = 0;
    /// Box around all faces; `low` is above `high` if there are none.
    virtual RayBounds Bounds() const = 0;
};

/// Makes ray casters. The implementation is the module `trovik-embree`.
class RayLibrary {
public:
    /// \throw HostError if there is not enough memory; Cancelled.
    virtual std::unique_ptr<RayCaster> MakeCaster(const std::vector<RayMesh>& meshes,
                                                  JobControl* job) const = 0;

protected:
    ~RayLibrary() = default;
};

}  // namespace trovik
