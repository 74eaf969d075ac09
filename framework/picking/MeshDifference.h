// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/picking/PatchTree.h"

#include <cstdint>
#include <vector>

/// \file
/// Geometric comparison of two meshes. Meshes with the same faces are compared vertex by vertex,
/// other meshes by the distance between their surfaces. Results are independent of the number of
/// threads.
namespace trovik {

/// Distances from the samples of one mesh to another mesh, in mesh-local units.
struct DistanceSummary {
    uint64_t samples = 0;
    /// Number of samples whose distance exceeds the tolerance.
    uint64_t beyond = 0;
    double max = 0.0;
    double mean = 0.0;
    /// Root of the mean square.
    double rms = 0.0;
    /// The sample with the largest distance (the first one if there are several), and the point of
    /// the other mesh to which the distance was measured.
    Vector position;
    Vector other;
};

/// Returns whether both meshes have the same number of vertices and the same faces with the same
/// corners in the same order.
TROVIK_API bool HasSameFaces(const PolygonMesh& a, const PolygonMesh& b);

/// Measures the distance between vertices with the same number. Each vertex is one sample, all with
/// the same weight.
/// \param a, b  meshes with the same number of vertices.
/// \param tolerance  non-negative.
/// \param distances  receives the distance of each vertex; may be null.
TROVIK_API DistanceSummary CompareVertices(const PolygonMesh& a,
                                           const PolygonMesh& b,
                                           double tolerance,
                                           std::vector<float>* distances = nullptr);

/// Replaces each face by triangles (a fan around its first corner) if the faces do not all have
/// three or all have four corners. A LevelGeometry would otherwise subdivide the mesh, which moves
/// its surface. The attributes of faces and corners are removed.
TROVIK_API void SplitMixedFaces(PolygonMesh& mesh);

/// Returns the distance from each vertex of a level to the nearest point of another level; 0 for a
/// vertex without faces.
/// \throw Cancelled.
TROVIK_API std::vector<float> VertexDistances(const LevelMesh& from,
                                              const PatchTree& to,
                                              JobControl* job = nullptr);

/// Measures the distance from points of one level to the nearest points of another. The larger one
/// of the maxima of both directions approximates the Hausdorff distance.
///
/// Each triangle of the level (see PatchTree) is divided into k * k congruent triangles, with the
/// smallest k for which their edges are at most as long as `spacing`. Their centres are the
/// samples, weighted by area; mean and rms are therefore independent of the density of the mesh.
/// The vertices are samples with weight 0, so they count towards all other results. See Cignoni,
/// Rocchini, Scopigno: "Metro: Measuring Error on Simplified Surfaces" (1998).
/// \param vertexDistances  the result of VertexDistances for the same levels.
/// \param spacing  above 0.
/// \throw HostError if the spacing results in more than 10^9 samples; Cancelled.
TROVIK_API DistanceSummary DistanceToSurface(const LevelMesh& from,
                                             const PatchTree& to,
                                             const std::vector<float>& vertexDistances,
                                             double spacing,
                                             double tolerance,
                                             JobControl* job = nullptr);

}  // namespace trovik
