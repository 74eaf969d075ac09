// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/render/RayCaster.h"
#include "framework/render/SurfaceSample.h"
#include "host/Api.h"

#include <memory>
#include <vector>

namespace trovik {

class JobControl;

/// The meshes as a ray library holds them: in units of its own, such that their largest coordinate
/// is about 1. Squares and products of lengths then stay in the range of floats, whatever the size
/// of the meshes. The unit is a power of two, so it changes no bit of a result.
class TROVIK_API EmbreeScene {
public:
    /// The list and its meshes are borrowed. \throw HostError if a vertex is beyond
    /// maxRenderCoordinate (RenderRange.h), if memory is short, or if the module with the ray
    /// library cannot be loaded.
    explicit EmbreeScene(const std::vector<PictureMesh>& meshes, JobControl* job = nullptr);
    explicit EmbreeScene(std::vector<PictureMesh>&& meshes, JobControl* job = nullptr) = delete;

    /// Rays of which not every number is finite hit nothing; nor do those that begin more than
    /// RayCaster::maxCoordinate units of the ray library away, where no mesh can be seen.
    bool Hit(const Vector& origin, const Vector& direction, SurfaceSample& sample) const;
    /// Whether something lies on the way, up to `distance`.
    bool IsBlocked(const Vector& origin, const Vector& direction, float distance) const;
    /// Diagonal of the box around everything; 0 for nothing.
    float Extent() const;
    const PictureMesh& Mesh(uint32_t number) const { return meshes[number]; }
    /// A vertex in world space.
    Vector WorldPosition(uint32_t mesh, uint32_t vertex) const {
        const float* p = positions[mesh].data() + vertex * std::size_t{3};
        return Vector(p[0], p[1], p[2]) * unit;
    }

private:
    SurfaceSample Describe(const Vector& origin, const Vector& direction, const RayHit& hit) const;

    const std::vector<PictureMesh>& meshes;
    /// Positions in units of the ray library, one array per mesh, four floats of padding behind.
    std::vector<std::vector<float>> positions;
    /// Corners of faces without the hidden ones; empty for a mesh without any.
    std::vector<std::vector<uint32_t>> visibleFaces;
    /// World units per unit of the ray library, a power of two, and its inverse.
    float unit = 1.0f;
    float perUnit = 1.0f;
    std::unique_ptr<RayCaster> caster;
};

}  // namespace trovik
