// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/PolygonMesh.h"

#include <string>
#include <vector>

/// \file Small sample meshes, each with one difficult property, for tests that run on all of them.
namespace trovik::test {

PolygonMesh SingleQuad();
/// Returns n x m unit quads in the plane z = 0.
PolygonMesh GridMesh(unsigned n, unsigned m);
/// Closed; all vertices have valence 3.
PolygonMesh Cube();
/// Closed; all vertices have valence 4. There are n quads around the hole and m around the tube.
PolygonMesh Torus(unsigned n, unsigned m);
/// A tube with n quads around and m along it, open at both ends.
PolygonMesh OpenCylinder(unsigned n, unsigned m);
/// Two quads joined on all four sides.
PolygonMesh Pillow();
/// k quads around vertex 0, with an open border; k is at least 3.
PolygonMesh ValenceFan(unsigned k);
/// A box with one face inset and extruded: closed, with vertices of valence 3, 4 and 5.
PolygonMesh SteppedBox();
/// A grid in which the first corner differs from face to face, so that neighbours occur in all
/// relative rotations.
PolygonMesh RotatedCornerGrid(unsigned n);
/// A unit sphere of quads: a cube subdivided n times and projected onto the sphere.
PolygonMesh SphereQuads(unsigned n);
PolygonMesh Icosahedron();
/// An open strip of 2 n triangles.
PolygonMesh TriangleStrip(unsigned n);
/// A triangle, a quad and a pentagon in a row.
PolygonMesh NgonMix();

struct ZooMesh {
    std::string name;
    PolygonMesh mesh;
};
/// Closed and open meshes whose level 0 has quads, with vertices of valence 3 to 8.
std::vector<ZooMesh> QuadMeshes();
std::vector<ZooMesh> OpenMeshes();
/// Meshes whose level 0 has triangles.
std::vector<ZooMesh> TriangleMeshes();
std::vector<ZooMesh> AllMeshes();

/// Reads a mesh from the examples folder, such as "human.obj". \throw HostError.
PolygonMesh ExampleMesh(const std::string& file);

}  // namespace trovik::test
