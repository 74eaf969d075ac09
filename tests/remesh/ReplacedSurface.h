// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/Document.h"
#include "framework/mesh/LevelPositions.h"
#include "framework/remesh/SourceSurface.h"
#include "framework/remesh/SurfaceReplacement.h"
#include "tests/document/SculptedDocument.h"
#include "tests/files/TemporaryFolder.h"
#include "tests/meshes/MeshZoo.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>

namespace trovik::test {

/// All data of a document that undo must restore, as the bytes of a scene.
inline std::string SceneOf(Document& document) {
    const TemporaryFolder folder;
    document.WriteScene(folder.Path("a.trovik"));
    return TemporaryFolder::Content(folder.Path("a.trovik"));
}

inline PolygonMesh MeshOf(Document& document) { return document.Geometry().ToPolygons(false); }

/// The number of edges with one face.
inline std::size_t BorderEdgesOf(const LevelMesh& level) {
    std::size_t count = 0;
    auto& mesh = const_cast<LevelMesh&>(level);
    for (uint32_t face = 0; face < level.faceCount; ++face)
        for (uint32_t side = 0; side < level.CornersPerFace(); ++side)
            if (mesh.QuadEdgeNeighbour(face, side) == openBorder) ++count;
    return count;
}

/// Expects that the mesh is an oriented manifold.
inline void ExpectManifold(const PolygonMesh& mesh) {
    PolygonMesh copy = mesh;
    CheckPolygonMesh(copy, "mesh");
    const ManifoldReport report = MakeOrientedManifold(copy);
    EXPECT_TRUE(report.Untouched()) << report.nonManifoldEdges << " non-manifold edges, "
                                    << report.splitVertices << " split vertices";
}

/// Points on the faces of a level: the vertices, and a grid of `n` points per side on each face.
inline std::vector<Vector> SamplesOf(const LevelMesh& level, int n = 3) {
    std::vector<Vector> points = PositionsOf(level);
    const std::vector<uint32_t> triangles = TrianglesOf(level);
    for (std::size_t i = 0; i < triangles.size(); i += 3) {
        const Vector a = level.Position(triangles[i]);
        const Vector b = level.Position(triangles[i + 1]);
        const Vector c = level.Position(triangles[i + 2]);
        for (int u = 0; u <= n; ++u)
            for (int v = 0; u + v <= n; ++v) {
                const float s = static_cast<float>(u) / static_cast<float>(n);
                const float t = static_cast<float>(v) / static_cast<float>(n);
                points.push_back(a + (b - a) * s + (c - a) * t);
            }
    }
    return points;
}

/// The Hausdorff distance between the current level of a document and a mesh, at sample points.
inline float HausdorffDistance(Document& document, const PolygonMesh& mesh) {
    PolygonMesh manifold = mesh;
    manifold.attributes = {};
    MakeOrientedManifold(manifold);
    LevelGeometry geometry(manifold);
    SourceSurface other(geometry);
    SourceSurface own(document.Geometry());
    return std::max(MaxDistance(other, SamplesOf(*document.Geometry().Bound())),
                    MaxDistance(own, SamplesOf(*geometry.Bound())));
}

/// An open cylinder with texture coordinates: u runs around it, so that there is a seam where it
/// jumps from 1 to 0, and v is the height.
inline PolygonMesh UnwrappedCylinder(unsigned n, unsigned m) {
    PolygonMesh cylinder = OpenCylinder(n, m);
    SurfaceAttributes& attributes = cylinder.attributes;
    for (std::size_t corner = 0; corner < cylinder.faceVertices.size(); ++corner) {
        const std::size_t first = corner - corner % 4;
        float low = 10.0f;
        float angles[4];
        for (std::size_t k = 0; k < 4; ++k) {
            const auto& p = cylinder.positions[cylinder.faceVertices[first + k]];
            angles[k] = std::atan2(p[1], p[0]) / 6.2831853f + 0.5f;
            low = std::min(low, angles[k]);
        }
        float u = angles[corner % 4];
        for (const float angle : angles)
            if (angle - low > 0.5f && u - low < 0.5f) {
                u += 1.0f;
                break;
            }
        const auto uv =
            std::array<float, 2>{u, cylinder.positions[cylinder.faceVertices[corner]][2]};
        const auto found = std::find(attributes.uvs.begin(), attributes.uvs.end(), uv);
        attributes.cornerUvs.push_back(static_cast<uint32_t>(found - attributes.uvs.begin()));
        if (found == attributes.uvs.end()) attributes.uvs.push_back(uv);
    }
    return cylinder;
}

/// The signed volume that the surface encloses.
inline double VolumeOf(const LevelMesh& level) {
    double volume = 0.0;
    const std::vector<uint32_t> triangles = TrianglesOf(level);
    for (std::size_t i = 0; i < triangles.size(); i += 3) {
        const Vector a = level.Position(triangles[i]);
        const Vector b = level.Position(triangles[i + 1]);
        const Vector c = level.Position(triangles[i + 2]);
        volume += static_cast<double>(a | (b & c)) / 6.0;
    }
    return volume;
}

}  // namespace trovik::test
