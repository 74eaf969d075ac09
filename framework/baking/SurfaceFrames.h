// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/baking/LevelUvs.h"
#include "host/Vector.h"

#include <vector>

namespace trovik {

class JobControl;

/// Returns the positions of level `fine` that result from refining level `coarse` without the
/// detail of the levels above it. Cost: O(vertices of `fine`). \throw Cancelled, like all
/// operations in this file.
std::vector<Vector> SmoothPositions(const LevelGeometry& geometry,
                                    std::uint32_t coarse,
                                    std::uint32_t fine,
                                    JobControl* job = nullptr);

/// Returns the unit normals of a level's vertices for the given positions: for each vertex, the
/// normalised sum of its faces' normals (for a quad, the cross product of its diagonals), added in
/// face order. The result equals that of LevelMesh::ComputeNormals, except that it is not packed.
std::vector<Vector> VertexNormals(const LevelMesh& level,
                                  const std::vector<Vector>& positions,
                                  JobControl* job = nullptr);

/// Three orthonormal directions: along u, along v, and out of the surface.
struct SurfaceFrame {
    Vector tangent;
    Vector bitangent;
    Vector normal;

    Vector ToFrame(const Vector& v) const { return {v | tangent, v | bitangent, v | normal}; }
    Vector FromFrame(const Vector& v) const {
        return (tangent * v.x + bitangent * v.y) + normal * v.z;
    }
};

/// Frames at the corners of a level's faces.
///
/// At a corner, the derivative of the surface along u is computed from the two edges that meet
/// there. All corners of a vertex with the same UV and the same orientation (mirrored or not) share
/// one frame: their derivatives are projected onto the plane perpendicular to the vertex's normal,
/// normalised, and added in face order; the tangent is the normalised sum. The bitangent is normal
/// x tangent, negated if the texture is mirrored. If the UVs are degenerate, the tangent is an
/// arbitrary direction perpendicular to the normal. The sharing and the projection follow
/// Mikkelsen: "Simulation of Wrinkled Surfaces Revisited" (2008), but derivatives are not weighted
/// by the angle at the corner.
class SurfaceFrames {
public:
    /// \param positions  the positions of the level's vertices. \param uvs  the UVs of the same
    /// level.
    SurfaceFrames(const LevelMesh& level,
                  const LevelUvs& uvs,
                  const std::vector<Vector>& positions,
                  JobControl* job = nullptr);

    const Vector& Normal(std::uint32_t vertex) const { return normals[vertex]; }
    /// Returns the index of the frame at a corner of a face; `none` for a corner without UVs.
    std::uint32_t FrameOf(std::uint32_t face, std::uint32_t corner) const {
        return cornerFrames[face * corners + corner];
    }
    static constexpr std::uint32_t none = 0xffffffffu;
    std::uint32_t FrameCount() const { return static_cast<std::uint32_t>(frames.size()); }
    SurfaceFrame Frame(std::uint32_t number) const;
    std::uint32_t VertexOf(std::uint32_t number) const { return frames[number].vertex; }
    const std::array<float, 2>& UvOf(std::uint32_t number) const { return frames[number].uv; }
    /// FirstOf and After iterate over the frames of a vertex: they return the first frame and the
    /// frame after a given one, or `none` at the end.
    std::uint32_t FirstOf(std::uint32_t vertex) const { return firstFrames[vertex]; }
    std::uint32_t After(std::uint32_t number) const { return frames[number].next; }

private:
    struct Entry {
        std::uint32_t vertex;
        std::uint32_t next;
        std::array<float, 2> uv;
        Vector tangent;
        /// 1, or -1 if the texture is mirrored; 0 while all corners so far are degenerate.
        float sense;
    };
    std::uint32_t EntryFor(std::uint32_t vertex, const std::array<float, 2>& uv, float sense);

    std::uint32_t corners;
    std::vector<Vector> normals;
    std::vector<Entry> frames;
    std::vector<std::uint32_t> firstFrames;
    std::vector<std::uint32_t> cornerFrames;
};

}  // namespace trovik
