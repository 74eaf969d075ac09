// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/PolygonMesh.h"

#include <cstdint>
#include <string>
#include <vector>

namespace trovik::studio {

/// Initial shapes, of size 2 around the origin, with y up. All except the plane are closed.
enum class Primitive { Sphere, Cube, Plane, Cylinder, Cone, Torus };

/// Makes a primitive that consists only of quads, which are counterclockwise when seen from
/// outside. The sphere is a cube whose points are spread evenly over the sphere, so that it has no
/// poles; the caps of the cylinder and the base of the cone are square grids mapped to discs. The
/// slope of the cone also ends in such a grid, so that the apex needs no triangles: it is a vertex
/// of four quads if the number of segments is even, and a small flat quad if it is odd. The torus
/// lies in the plane y = 0, and its tube has the radius 0.3.
///
/// Counts, with n segments: sphere, cube, cylinder and cone 6 n^2 faces and 6 n^2 + 2 vertices;
/// plane n^2 faces and (n + 1)^2 vertices; torus 4 n x 2 n faces, at least 3 around the tube, and
/// as many vertices. \param segments  n, clamped to the range from 1 to 1024.
PolygonMesh MakePrimitive(Primitive primitive, std::uint32_t segments);

/// The number of segments for approximately this many faces.
std::uint32_t SegmentsFor(Primitive primitive, std::uint64_t faces);

/// The number of faces that MakePrimitive creates.
std::uint64_t FacesOf(Primitive primitive, std::uint32_t segments);

/// English name for files: "sphere", "cube", "plane", "cylinder", "cone", "torus".
const char* NameOf(Primitive primitive);

/// Writes a primitive as an OBJ file to a folder, which is created if it is missing. The file name
/// contains its kind and number of segments; an existing file is used unchanged. \return the path.
/// \throw HostError that names the file and the reason.
std::string WritePrimitive(Primitive primitive, std::uint32_t segments, const std::string& folder);

/// Folders of the meshes supplied with the program: the colon-separated folders of the environment
/// variable TROVIK_MESH_PATH, or otherwise share/trovik/meshes of the installed tree and
/// examples/meshes of the source tree, if they exist.
std::vector<std::string> MeshFolders();

/// The path of a mesh supplied with the program, by its file name, such as "bust.obj"; empty if it
/// is missing.
std::string FindShippedMesh(const std::string& fileName);

}  // namespace trovik::studio
