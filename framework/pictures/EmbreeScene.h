// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/pictures/Picture.h"
#include "framework/pictures/RayCaster.h"

#include <memory>
#include <vector>

namespace trovik {

/// What a ray met. World space.
struct SurfaceSample {
    Vector position;
    /// Of the face itself, turned towards the ray's origin.
    Vector faceNormal;
    /// By the vertex normals, turned to the side of faceNormal.
    Vector shadingNormal;
    float color[3];
    /// Distance to the face's nearest edge in world units, for the wireframe.
    float edgeDistance;
    float distance;
};

/// The meshes as a ray library holds them: in units of its own, such that their largest coordinate
/// is about 1. Squares and products of lengths then stay in the range of floats, whatever the size
/// of the meshes. The unit is a power of two, so it changes no bit of a result.
class EmbreeScene {
public:
    /// The meshes are borrowed. \throw HostError if a vertex is beyond maxRenderCoordinate
    /// (RenderRange.h), if memory is short, or if the module with the ray library cannot be loaded.
    explicit EmbreeScene(const std::vector<PictureMesh>& meshes);

    /// Rays of which not every number is finite hit nothing; nor do those that begin more than
    /// RayCaster::maxCoordinate units of the ray library away, where no mesh can be seen.
    bool Hit(const Vector& origin, const Vector& direction, SurfaceSample& sample) const;
    /// Whether something lies on the way, up to `distance`.
    bool IsBlocked(const Vector& origin, const Vector& direction, float distance) const;
    /// Diagonal of the box around everything; 0 for nothing.
    float Extent() const;

private:
    SurfaceSample Describe(const Vector& origin, const Vector& direction, const RayHit& hit) const;

    const std::vector<PictureMesh>& meshes;
    /// Positions in units of the ray library, one array per mesh, four floats of padding behind.
    std::vector<std::vector<float>> positions;
    /// World units per unit of the ray library, a power of two, and its inverse.
    float unit = 1.0f;
    float perUnit = 1.0f;
    std::unique_ptr<RayCaster> caster;
};

}  // namespace trovik
