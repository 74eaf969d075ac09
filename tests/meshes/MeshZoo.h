// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/PolygonMesh.h"

#include <string>
#include <vector>

/// \file Tiny meshes with one difficult property each, for tests that check all of them.
namespace trovik::test {

PolygonMesh SingleQuad();
/// n x m unit quads in the plane z = 0.
PolygonMesh GridMesh(unsigned n, unsigned m);
/// Closed, all vertices of valence 3.
PolygonMesh Cube();
/// Closed, all vertices of valence 4, n quads around the hole and m around the tube.
PolygonMesh Torus(unsigned n, unsigned m);
/// A tube of n quads around and m along, open at both ends.
PolygonMesh OpenCylinder(unsigned n, unsigned m);
/// Two quads joined on all four sides.
PolygonMesh Pillow();
/// k quads around vertex 0, open at the rim; k is at least 3.
PolygonMesh ValenceFan(unsigned k);
/// A box with one face extruded through a smaller one: vertices of valence 3, 4 and 5, closed.
PolygonMesh SteppedBox();
/// Quads whose first corner changes from face to face, so that neighbours have all rotations.
PolygonMesh RotatedCornerGrid(unsigned n);
/// A unit sphere of quads: a cube with n subdivisions projected onto the sphere.
PolygonMesh SphereQuads(unsigned n);
PolygonMesh Icosahedron();
/// 2 n triangles in a row, open.
PolygonMesh TriangleStrip(unsigned n);
/// A triangle, a quad and a pentagon in a row.
PolygonMesh NgonMix();

struct ZooMesh {
    std::string name;
    PolygonMesh mesh;
};
/// Meshes whose level 0 has quads: closed and open ones, with vertices of valence 3 to 8.
std::vector<ZooMesh> QuadMeshes();
std::vector<ZooMesh> OpenMeshes();
/// Meshes whose level 0 has triangles.
std::vector<ZooMesh> TriangleMeshes();
std::vector<ZooMesh> AllMeshes();

/// A mesh of the examples folder, such as "human.obj". \throw HostError.
PolygonMesh ExampleMesh(const std::string& file);

}  // namespace trovik::test
