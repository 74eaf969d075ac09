// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/MeshSource.h"
#include "framework/mesh/PolygonMesh.h"

#include <string>
#include <vector>

/// \file
/// Mesh files: import and export. MeshFormat.h declares the table of formats; docs/mesh-files.md
/// lists the data that each format preserves. All functions are thread-safe. Functions that take a
/// JobControl throw Cancelled when the job is cancelled; a file that was being written is then
/// unchanged.
namespace trovik {

/// Reads a mesh file. The extension, in upper or lower case, selects the format.
///
/// Vertices (including isolated ones), faces and corners keep their order in the file. Faces that
/// use a vertex twice are skipped and counted in `notes`. The result satisfies CheckPolygonMesh.
/// \throw HostError for any other extension, and whenever the format's reader throws one.
TROVIK_API PolygonMesh ReadMeshFile(const std::string& path, JobControl* job = nullptr);

/// Writes a mesh file. The extension, in upper or lower case, selects the format. PLY files are
/// binary little-endian; STL files are binary.
/// \throw HostError for any other extension, and if writing fails, with the file and the system's
/// reason.
TROVIK_API void WriteMeshFile(const std::string& path, const PolygonMesh& mesh);

/// The encoding of the numbers in a PLY file.
enum class PlyEncoding { Text, BinaryLittleEndian, BinaryBigEndian };

/// Reads the polygons of an OBJ file.
///
/// - All groups and objects form one mesh, in file order. `name` is the name of the first object,
///   or of the first group if there is no object.
/// - Coordinates are rounded to the nearest float, regardless of the locale; a fourth coordinate is
///   ignored.
/// - Corners may use negative indices for vertices and texture coordinates, and may refer to
///   elements that are defined later in the file.
/// - Normals are read only if they are per vertex: as many normals as positions, with equal normal
///   and position indices at each corner.
/// - Colours are read if every vertex has three or four additional numbers after its coordinates.
/// - Group names come from `g`, or from `o` if no `g` follows; material names come from `usemtl`
///   and smoothing groups from `s`.
/// - `materialFiles` lists the files named by `mtllib`, relative to the OBJ file's folder; they are
///   not opened.
/// - The comments `# units mm` and `# up z`, which WriteObj writes, specify the units and the up
///   axis.
/// - Lines, points and curves are skipped.
///
/// Memory: the result, and a buffer for the longest line (at most 64 MiB).
/// \throw HostError with the file, the line and the reason.
TROVIK_API PolygonMesh ReadObj(const std::string& path, JobControl* job = nullptr);

/// Writes an OBJ file. Each coordinate has enough digits to round-trip to the same float (at most
/// nine). The file is written completely or not at all; see OutputFile.
/// \throw HostError with the file and the system's reason.
TROVIK_API void WriteObj(const std::string& path, const PolygonMesh& mesh);

/// Reads the polygons of a PLY file in any of its three encodings.
///
/// - The elements `vertex` (scalar x, y, z; nx, ny, nz if all three are present) and `face` (list
///   `vertex_indices` or `vertex_index`) are read. Elements and properties may have any order and
///   any number type.
/// - UVs are read from the vertex properties (s and t, u and v, or texture_u and texture_v),
///   otherwise from the face list `texcoord`. Equal UVs at the corners of a vertex become one entry
///   in the mesh's UV list.
/// - Colours are read from the vertices (red, green, blue, alpha). Integer colours are in units of
///   1/255, or 1/65535 for 16-bit types.
/// - The header lines `obj_info name`, `obj_info units` and `obj_info up`, which WritePly writes,
///   are read.
/// - All other data is skipped.
///
/// Memory: proportional to the size of the file, regardless of the counts in its header.
/// \throw HostError with the file, the line or byte, the element and its row, and the reason.
TROVIK_API PolygonMesh ReadPly(const std::string& path, JobControl* job = nullptr);

/// Writes a PLY file: positions and normals as floats, faces as lists. UVs are stored as the vertex
/// properties s and t if the mesh has no seams, and otherwise as the face list `texcoord`. Colours
/// are stored as bytes if that is exact, otherwise as floats. Binary encodings are bit-exact; text
/// has as many digits as WriteObj writes. The file is written completely or not at all; see
/// OutputFile.
/// \throw HostError with the file and the system's reason.
TROVIK_API void WritePly(const std::string& path, const PolygonMesh& mesh, PlyEncoding encoding);

/// The encoding of the numbers in an STL file.
enum class StlEncoding { Text, Binary };

/// Reads the triangles of an STL file, text or binary. A file is text if it begins with `solid` and
/// its length does not match the triangle count of a binary file.
///
/// Corners with the same position are welded; positions are compared bitwise, except that 0 equals
/// -0. Triangles with two corners at the same position are skipped and counted in `notes`, and
/// their vertices are not added. Normals are not read. If there are several solids, each becomes a
/// group. Memory: proportional to the size of the file.
/// \throw HostError with the file, the line or byte, and the reason.
TROVIK_API PolygonMesh ReadStl(const std::string& path, JobControl* job = nullptr);

/// Writes an STL file. Faces with more than three corners become triangle fans around their first
/// corner. The file is written completely or not at all; see OutputFile.
/// \throw HostError with the file and the system's reason.
TROVIK_API void WriteStl(const std::string& path, const PolygonMesh& mesh, StlEncoding encoding);

/// Reads the triangles of a glTF 2.0 file, text or binary.
///
/// - All meshes of the scene form one mesh, in node order. Transforms are applied, morph targets
///   are blended by their weights, and skins and animations are ignored.
/// - Vertices of the same mesh with bitwise equal positions are welded, so that texture seams do
///   not split the surface.
/// - Normals, TEXCOORD_0, COLOR_0 and material names are read. If there are several meshes, each
///   becomes a group. Primitives that WriteMeshFile marked with a group keep that group.
/// - Triangles with two corners at the same position are skipped and counted in `notes`.
/// - Referenced buffers are read if they are in the document's folder or a subfolder; bytes beyond
///   a buffer's `byteLength` are ignored.
///
/// Memory: proportional to the file size plus the size of all mesh instances.
/// \throw HostError with the file, the part of the document, and the reason.
TROVIK_API PolygonMesh ReadGltf(const std::string& path, JobControl* job = nullptr);

/// Checks that the extension belongs to a mesh format that can be written.
/// \throw HostError if it does not.
TROVIK_API void RequireWritableMesh(const std::string& path);

/// Writes a mesh in the format that the extension selects; see docs/mesh-files.md.
///
/// Memory: a few megabytes in addition to the source's memory, regardless of the size of the mesh.
/// glTF files of meshes with UV seams need 8 more bytes per vertex; glTF and USD files of meshes
/// with groups or materials need up to 64 MiB.
/// \return the additional files that were written: for OBJ, copies of material files.
/// \throw HostError for any other extension, for non-finite numbers, and if writing fails, with the
/// file and the system's reason.
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
