// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/MeshSource.h"
#include "framework/mesh/PolygonMesh.h"

#include <string>
#include <vector>

/// \file
/// Mesh files: import and export. MeshFormat.h lists the formats; docs/mesh-files.md describes the
/// data that each format preserves. All functions are thread-safe. Functions with a JobControl
/// throw Cancelled when the job is cancelled; a file that was being written then keeps its old
/// content.
namespace trovik {

/// Reads a mesh file in the format that the extension selects.
///
/// Vertices (including those without faces), faces and corners keep the order of the file. Faces
/// that use a vertex twice are skipped and counted in `notes`. The result satisfies
/// CheckPolygonMesh.
/// \throw HostError for an unknown extension, or as the format's reader does.
TROVIK_API PolygonMesh ReadMeshFile(const std::string& path, JobControl* job = nullptr);

/// Writes a mesh file in the format that the extension selects. PLY files are binary little-endian,
/// STL files are binary.
/// \throw HostError for an unknown extension, or with the file and the reason given by the system.
TROVIK_API void WriteMeshFile(const std::string& path, const PolygonMesh& mesh);

/// The encoding of the numbers in a PLY file.
enum class PlyEncoding { Text, BinaryLittleEndian, BinaryBigEndian };

/// Reads the polygons of an OBJ file.
///
/// - All groups and objects form one mesh, in file order. `name` is the name of the first object,
///   or of the first group if there is no object.
/// - Coordinates are parsed to the nearest float, in any locale; a fourth coordinate is ignored.
/// - Corners may refer to vertices and texture coordinates by negative indices, and to ones defined
///   later in the file.
/// - Normals are read if the file has them per vertex: as many normals as positions, with equal
///   normal and position indices at each corner.
/// - Colours are read if all vertices have three or four numbers after their coordinates.
/// - Group names come from `g`, or from `o` if no `g` follows it; material names from `usemtl`,
///   smoothing groups from `s`.
/// - `materialFiles` lists the files named by `mtllib`, relative to the folder of the OBJ file;
///   they are not opened.
/// - The comments `# units mm` and `# up z`, which WriteObj writes, specify units and axis.
/// - Lines, points and curves are skipped.
///
/// Memory: the result and a buffer for the longest line (at most 64 MiB).
/// \throw HostError with the file, the line and the reason.
TROVIK_API PolygonMesh ReadObj(const std::string& path, JobControl* job = nullptr);

/// Writes an OBJ file. Each coordinate has enough digits to restore its float exactly (at most
/// nine). The file is written completely or not at all: see OutputFile.
/// \throw HostError with the file and the reason given by the system.
TROVIK_API void WriteObj(const std::string& path, const PolygonMesh& mesh);

/// Reads the polygons of a PLY file in any of its three encodings.
///
/// - The elements `vertex` (scalar x, y, z; nx, ny, nz if all three are present) and `face` (list
///   `vertex_indices` or `vertex_index`) are read. Elements and properties may have any order and
///   number type.
/// - UVs are read from the vertex properties (s and t, u and v, or texture_u and texture_v),
///   otherwise from the face list `texcoord`. Equal UVs at the corners of a vertex become one entry
///   of the mesh's UV list.
/// - Colours are read from the vertices (red, green, blue, alpha). Integers are in units of 1/255,
///   or of 1/65535 for 16-bit types.
/// - The header lines `obj_info name`, `obj_info units` and `obj_info up`, which WritePly writes,
///   are read.
/// - All other data is skipped.
///
/// Memory: proportional to the size of the file, regardless of the counts in its header.
/// \throw HostError with the file, the line or byte, the element and its row, and the reason.
TROVIK_API PolygonMesh ReadPly(const std::string& path, JobControl* job = nullptr);

/// Writes a PLY file: positions and normals as floats, faces as lists. UVs are stored as the vertex
/// properties s and t if the mesh has no seams, and otherwise as the face list `texcoord`. Colours
/// are bytes if bytes represent them exactly, otherwise floats. Binary encodings are bit-exact;
/// text has as many digits as WriteObj. The file is written completely or not at all: see
/// OutputFile.
/// \throw HostError with the file and the reason given by the system.
TROVIK_API void WritePly(const std::string& path, const PolygonMesh& mesh, PlyEncoding encoding);

/// The encoding of the numbers in an STL file.
enum class StlEncoding { Text, Binary };

/// Reads the triangles of an STL file, text or binary. A file is text if it begins with `solid` and
/// its length does not match the triangle count of a binary file.
///
/// Corners with the same position become one vertex; positions are compared bitwise, except that 0
/// equals -0. Triangles with two corners at the same position are skipped and counted in `notes`,
/// and their vertices are not added. Normals are not read; several solids become groups. Memory:
/// proportional to the size of the file.
/// \throw HostError with the file, the line or byte, and the reason.
TROVIK_API PolygonMesh ReadStl(const std::string& path, JobControl* job = nullptr);

/// Writes an STL file. Faces with more than three corners become fans around their first corner.
/// The file is written completely or not at all: see OutputFile.
/// \throw HostError with the file and the reason given by the system.
TROVIK_API void WriteStl(const std::string& path, const PolygonMesh& mesh, StlEncoding encoding);

/// Reads the triangles of a glTF 2.0 file, text or binary.
///
/// - All meshes of the scene form one mesh, in the order of the nodes. Transforms are applied,
///   morph targets are blended by their weights, and skins and animations are ignored.
/// - Vertices of the same mesh with bitwise equal positions become one vertex, so that texture
///   seams do not separate the surface.
/// - Normals, TEXCOORD_0, COLOR_0 and names of materials are read. Several meshes become groups,
///   and so do primitives that WriteMeshFile has marked with a group.
/// - Triangles with two corners at the same position are skipped and counted in `notes`.
/// - Referenced buffers are read if they are in the document's folder or a subfolder; bytes beyond
///   a buffer's `byteLength` are ignored.
///
/// Memory: proportional to the size of the file and to the meshes that its nodes contain.
/// \throw HostError with the file, the part of the document, and the reason.
TROVIK_API PolygonMesh ReadGltf(const std::string& path, JobControl* job = nullptr);

/// \throw HostError unless the extension is that of a writable mesh format.
TROVIK_API void RequireWritableMesh(const std::string& path);

/// Writes a mesh in the format that the extension selects; see docs/mesh-files.md.
/// \return additional files that were written: copies of material files, for OBJ.
/// \throw HostError for any other extension, for non-finite numbers, or with the file and the
/// reason given by the system.
/// Memory: a few megabytes in addition to the source's memory, regardless of the size of the mesh.
/// glTF files of meshes with UV seams need 8 more bytes per vertex; glTF and USD files of meshes
/// with groups or materials need up to 64 MiB.
TROVIK_API std::vector<std::string> WriteMeshFile(const std::string& path,
                                                  const MeshSource& source,
                                                  JobControl* job = nullptr);

/// Returns the space in which a file with this name is written.
/// \param present  the space of the mesh.
/// \param asked  the requested space.
/// \throw HostError if the format does not support the requested space.
TROVIK_API MeshSpace SpaceForFile(const std::string& path,
                                  const MeshSpace& present,
                                  const MeshSpace& asked);

}  // namespace trovik
