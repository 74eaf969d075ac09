// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/MeshSource.h"
#include "framework/mesh/PolygonMesh.h"

#include <string>
#include <vector>

/// \file
/// Mesh files: OBJ, PLY, STL and glTF in and out, USD out. docs/mesh-files.md describes what each
/// format keeps. All functions may be called from any thread. Those that take a JobControl throw
/// Cancelled when it cancels; a file that was being written is then as it was.
namespace trovik {

/// Reads a mesh file, its format chosen by the extension in any case: `.obj`, `.ply`, `.stl`,
/// `.gltf`, `.glb`. What each format keeps is told in docs/mesh-files.md.
///
/// Vertices, also those that no face uses, faces and corners keep the order of the file. Faces that
/// name a vertex twice are left out and `notes` counts them. The result has passed
/// CheckPolygonMesh. \throw HostError for another extension, and whatever the format's reader
/// throws.
TROVIK_API PolygonMesh ReadMeshFile(const std::string& path, JobControl* job = nullptr);

/// Writes a mesh file, its format chosen by the extension in any case: `.obj`, `.ply` in binary
/// little endian, `.stl` in binary, `.gltf`, `.glb`, `.usda`.
/// \throw HostError for another extension, and naming the file and the system's reason.
TROVIK_API void WriteMeshFile(const std::string& path, const PolygonMesh& mesh);

/// How the numbers of a PLY file are stored.
enum class PlyEncoding { Text, BinaryLittleEndian, BinaryBigEndian };

/// Reads the polygons of an OBJ file.
///
/// All groups and objects make one mesh, in file order; `name` is that of the first object, or of
/// the first group where there is no object. Coordinates are the floats nearest to their text,
/// whatever the locale; a fourth coordinate is skipped. Corners may name vertices and texture
/// coordinates counted from the end, and those that come later in the file. Normals are taken
/// where the file has them per vertex: as many as positions, and each corner naming the same
/// number for both. Colours are taken where all vertices have three or four numbers behind their
/// coordinates. Group names are those of `g`, or of `o` where no `g` follows it; material names
/// those of `usemtl`, smoothing groups those of `s`. `materialFiles` are the files of `mtllib`,
/// relative to the folder of the OBJ file; they are not opened. Comments `# units mm` and
/// `# up z`, as WriteObj writes them, specify units and axis. Lines, points and curves are
/// skipped.
/// Memory: the result and a buffer as long as the longest line (at most 64 MiB).
/// \throw HostError naming the file, the line and the reason.
TROVIK_API PolygonMesh ReadObj(const std::string& path, JobControl* job = nullptr);

/// Writes an OBJ file. Each coordinate gets as many digits as bring its float back bit for bit
/// (never more than nine). The file is complete or not there: see OutputFile.
/// \throw HostError naming the file and the system's reason.
TROVIK_API void WriteObj(const std::string& path, const PolygonMesh& mesh);

/// Reads the polygons of a PLY file in any of its three encodings.
///
/// Wanted are the elements `vertex` (scalar x, y, z; nx, ny, nz where all three are there) and
/// `face` (list `vertex_indices` or `vertex_index`); they and their properties may come in any
/// order and number type. Taken as well are UVs (s and t, u and v, or texture_u and texture_v of
/// vertices; else the list `texcoord` of faces) and colours of vertices (red, green, blue, alpha:
/// whole numbers are 255ths, of 16 bits 65535ths). Everything else is skipped. `obj_info name`,
/// `obj_info units` and `obj_info up` are those that WritePly leaves in the header.
/// Equal UVs of the corners of a vertex become one entry of the list.
/// Memory: in proportion to the file's size, whatever its header promises.
/// \throw HostError naming the file, the line or byte, the element with its row, and the reason.
TROVIK_API PolygonMesh ReadPly(const std::string& path, JobControl* job = nullptr);

/// Writes a PLY file: positions and normals as floats, faces as lists; UVs as s and t of vertices
/// where the mesh has no seams, else as the list `texcoord` of faces; colours as bytes where bytes
/// hold them, else as floats. Binary encodings keep every
/// bit; text has as many digits as WriteObj. The file is complete or not there: see OutputFile.
/// \throw HostError naming the file and the system's reason.
TROVIK_API void WritePly(const std::string& path, const PolygonMesh& mesh, PlyEncoding encoding);

/// How the numbers of an STL file are stored.
enum class StlEncoding { Text, Binary };

/// Reads the triangles of an STL file, text or binary: what begins with `solid` and is not as long
/// as a binary file of its count is text.
///
/// Corners of the same position become one vertex: by exact bits, a zero counting as zero with
/// either sign. Triangles with two corners of one position are left out and counted in `notes`,
/// and their vertices are not added. Normals are not read;
/// several solids become groups.
/// Memory: in proportion to the file's size.
/// \throw HostError naming the file, the line or byte, and the reason.
TROVIK_API PolygonMesh ReadStl(const std::string& path, JobControl* job = nullptr);

/// Writes an STL file. Faces of more than three corners become fans around their first corner.
/// The file is complete or not there: see OutputFile.
/// \throw HostError naming the file and the system's reason.
TROVIK_API void WriteStl(const std::string& path, const PolygonMesh& mesh, StlEncoding encoding);

/// Reads the triangles of a glTF 2.0 file, text or binary.
///
/// Everything that the scene shows becomes one mesh in the order of its nodes: transformations are
/// applied, morph targets are blended by their weights, skins and animations are passed over.
/// Vertices of one mesh of the file that have the same position, by exact bits, become one vertex,
/// so that seams of a texture do not tear the surface. Taken are normals, TEXCOORD_0, COLOR_0 and
/// names of materials; several meshes become groups, and so do primitives that WriteMeshFile
/// marked with a group. Triangles with two corners of one position are left out and counted in
/// `notes`. Buffers that the document names are read if they lie in its folder or below; what a
/// buffer has behind its `byteLength` is ignored.
/// Memory: in proportion to the file's size, and to what its nodes show.
/// \throw HostError naming the file, the part of the document, and the reason.
TROVIK_API PolygonMesh ReadGltf(const std::string& path, JobControl* job = nullptr);

/// \throw HostError for a name whose extension is not that of a mesh format that can be written.
TROVIK_API void RequireWritableMesh(const std::string& path);

/// Writes a mesh in the format of the file's extension; see docs/mesh-files.md.
/// \return further files that were written: copies of material files, for OBJ.
/// \throw HostError for another extension, for numbers that are not finite, and naming the file and
/// the system's reason.
/// Memory: a few megabytes beside the source's own, whatever the size of the mesh; glTF files of
/// meshes with UV seams take 8 bytes a vertex more, and glTF and USD files of meshes with groups or
/// materials up to 64 MiB.
TROVIK_API std::vector<std::string> WriteMeshFile(const std::string& path,
                                                  const MeshSource& source,
                                                  JobControl* job = nullptr);

/// The space in which a file of this name is written when `asked` is asked for and the mesh is of
/// space `present`. \throw HostError where the format does not allow what is asked for.
TROVIK_API MeshSpace SpaceForFile(const std::string& path,
                                  const MeshSpace& present,
                                  const MeshSpace& asked);

}  // namespace trovik
