// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/pictures/Picture.h"

#include <embree3/rtcore.h>

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
    explicit EmbreeScene(const std::vector<PictureMesh>& meshes);
    ~EmbreeScene();
    EmbreeScene(const EmbreeScene&) = delete;
    EmbreeScene& operator=(const EmbreeScene&) = delete;

    bool Hit(const Vector& origin, const Vector& direction, SurfaceSample& sample) const;
    /// Whether something lies on the way, up to `distance`.
    bool IsBlocked(const Vector& origin, const Vector& direction, float distance) const;
    /// Diagonal of the box around everything; 0 for nothing.
    float Extent() const;

private:
    SurfaceSample Describe(const RTCRayHit& hit) const;

    const std::vector<PictureMesh>& meshes;
    /// World positions, one array per mesh, four floats of padding behind.
    std::vector<std::vector<float>> positions;
    RTCDevice device;
    RTCScene scene;
};

}  // namespace trovik
