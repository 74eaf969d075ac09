// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/PolygonMesh.h"

#include <cstdint>
#include <string>
#include <vector>

namespace trovik::studio {

/// Shapes to begin with. All but the plane are closed, of size 2 around the origin, with y up.
enum class Primitive { Sphere, Cube, Plane, Cylinder };

/// Makes a primitive of quads only, with faces counterclockwise seen from outside. The sphere is a
/// cube whose points are spread evenly over the sphere, so that it has no poles; the cylinder is
/// closed by square grids bent to discs.
///
/// Counts, with n segments: sphere and cube 6 n^2 faces and 6 n^2 + 2 vertices; plane n^2 faces and
/// (n + 1)^2 vertices; cylinder, whose mantle has 4 n x n faces, 6 n^2 faces and 6 n^2 + 2
/// vertices. \param segments  n, 1 to 1024; values outside are limited to that.
PolygonMesh MakePrimitive(Primitive primitive, std::uint32_t segments);

/// The number of segments that gives about so many faces.
std::uint32_t SegmentsFor(Primitive primitive, std::uint64_t faces);

/// Faces that MakePrimitive makes.
std::uint64_t FacesOf(Primitive primitive, std::uint32_t segments);

/// English name for files: "sphere", "cube", "plane", "cylinder".
const char* NameOf(Primitive primitive);

/// Writes a primitive as OBJ into a folder, which is created if it is missing. The name of the file
/// states its kind and number of segments; a file that exists is used as it is.
/// \return the path. \throw HostError naming the file and the reason.
std::string WritePrimitive(Primitive primitive, std::uint32_t segments, const std::string& folder);

/// Folders of the meshes that come with the program: those of the environment variable
/// TROVIK_MESH_PATH, separated by colons, or else share/trovik/meshes of the installed tree and
/// examples/meshes of the source tree, as far as they exist.
std::vector<std::string> MeshFolders();

/// A mesh that comes with the program by its file name, such as "bust.obj"; empty if it is missing.
std::string FindShippedMesh(const std::string& fileName);

}  // namespace trovik::studio
