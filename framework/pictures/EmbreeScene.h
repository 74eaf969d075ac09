// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/pictures/Picture.h"
#include "framework/pictures/RayCaster.h"

#include <tbb/global_control.h>

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

/// The meshes as a ray library holds them.
class EmbreeScene {
public:
    /// The meshes are borrowed. \throw HostError if memory is short, or the module with the ray
    /// library cannot be loaded.
    explicit EmbreeScene(const std::vector<PictureMesh>& meshes);

    bool Hit(const Vector& origin, const Vector& direction, SurfaceSample& sample) const;
    /// Whether something lies on the way, up to `distance`.
    bool IsBlocked(const Vector& origin, const Vector& direction, float distance) const;
    /// Diagonal of the box around everything; 0 for nothing.
    float Extent() const;

private:
    SurfaceSample Describe(const Vector& origin, const Vector& direction, const RayHit& hit) const;

    const std::vector<PictureMesh>& meshes;
    /// World positions, one array per mesh, four floats of padding behind.
    std::vector<std::vector<float>> positions;
    /// Limits the parallelism of the process as long as the scene exists: for building it and for
    /// casting rays.
    tbb::global_control threads;
    std::unique_ptr<RayCaster> caster;
};

}  // namespace trovik
