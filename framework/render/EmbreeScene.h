// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/render/RayCaster.h"
#include "framework/render/SurfaceSample.h"
#include "host/Api.h"

#include <memory>
#include <vector>

namespace trovik {

class JobControl;

/// A render's meshes as objects of the ray tracing library. Coordinates are scaled so that the
/// largest one is about 1; squares and products of lengths then stay within float range for meshes
/// of any size. The scale is a power of two, so it does not affect the result.
class TROVIK_API EmbreeScene {
public:
    /// Borrows the list and its meshes.
    /// \throw HostError if a vertex is beyond maxRenderCoordinate (RenderRange.h), if memory is
    /// insufficient, or if the module with the ray tracing library cannot be loaded.
    explicit EmbreeScene(const std::vector<RenderMesh>& meshes, JobControl* job = nullptr);
    explicit EmbreeScene(std::vector<RenderMesh>&& meshes, JobControl* job = nullptr) = delete;

    /// Finds the first hit of a ray. Rays with non-finite components hit nothing, and neither do
    /// rays that start more than RayCaster::maxCoordinate library units away; no mesh is visible
    /// from there.
    bool Hit(const Vector& origin, const Vector& direction, SurfaceSample& sample) const;
    /// Returns whether the ray hits anything within `distance`.
    bool IsBlocked(const Vector& origin, const Vector& direction, float distance) const;
    /// Returns the diagonal of the bounding box of all meshes; 0 if they are empty.
    float Extent() const;
    /// The smallest depth of a visible vertex along a unit direction, relative to a position; 0 if
    /// all meshes are empty.
    float NearestDepth(const Vector& position, const Vector& direction) const;
    const RenderMesh& Mesh(uint32_t number) const { return meshes[number]; }
    /// Returns the world-space position of a vertex.
    Vector WorldPosition(uint32_t mesh, uint32_t vertex) const {
        const float* p = positions[mesh].data() + vertex * std::size_t{3};
        return Vector(p[0], p[1], p[2]) * unit;
    }

private:
    SurfaceSample Describe(const Vector& origin, const Vector& direction, const RayHit& hit) const;

    const std::vector<RenderMesh>& meshes;
    /// Positions in library units, one array per mesh, each with four floats of padding at the end.
    std::vector<std::vector<float>> positions;
    /// Vertex indices of each mesh, in which all indices of hidden faces refer to the non-finite
    /// vertex in the padding; empty for a mesh without hidden faces.
    std::vector<std::vector<uint32_t>> visibleFaces;
    /// World units per library unit, a power of two, and its inverse.
    float unit = 1.0f;
    float perUnit = 1.0f;
    std::unique_ptr<RayCaster> caster;
};

}  // namespace trovik
