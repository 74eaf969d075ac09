// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/PolygonMesh.h"

#include <string>
#include <vector>

/// \file
/// Tiny meshes, one trouble each, for tests that check a property over all of them.
namespace trovik::test {

PolygonMesh SingleQuad();
/// n x m unit quads in the plane z = 0.
PolygonMesh GridMesh(unsigned n, unsigned m);
/// Closed, all corners of valence 3.
PolygonMesh Cube();
/// Closed, all of valence 4, n quads around the hole and m around the tube.
PolygonMesh Torus(unsigned n, unsigned m);
/// A tube of n quads around and m along, open at both ends.
PolygonMesh OpenCylinder(unsigned n, unsigned m);
/// Two quads glued on all four sides.
PolygonMesh Pillow();
/// k quads around vertex 0, open at the rim. k at least 3.
PolygonMesh ValenceFan(unsigned k);
/// A box with one face drawn out through a smaller one: poles of valence 3, 4 and 5, closed.
PolygonMesh SteppedBox();
/// Quads whose corner numbering turns from face to face, so that neighbours lie in all rotations.
PolygonMesh TurnedGrid(unsigned n);
/// A unit sphere of quads: a cube refined n times and put on the sphere.
PolygonMesh SphereQuads(unsigned n);
PolygonMesh Icosahedron();
/// 2 n triangles in a row, open.
PolygonMesh TriangleStrip(unsigned n);
/// A triangle, a quad and a pentagon side by side.
PolygonMesh NgonMix();

struct ZooMesh {
    std::string name;
    PolygonMesh mesh;
};
/// Meshes whose level 0 has quads: closed and open ones, poles of valence 3 to 8.
std::vector<ZooMesh> QuadMeshes();
std::vector<ZooMesh> OpenMeshes();
/// Meshes whose level 0 has triangles.
std::vector<ZooMesh> TriangleMeshes();
std::vector<ZooMesh> AllMeshes();

/// A mesh of the examples folder, such as "human.obj". \throw HostError.
PolygonMesh ExampleMesh(const std::string& file);

}  // namespace trovik::test
