// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/PolygonMesh.h"
#include "host/Api.h"

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace trovik {

class JobControl;

/// Consecutive vertices, in order. A list is empty if it was not requested or if the mesh has no
/// such data.
struct TROVIK_API VertexBlock {
    std::vector<std::array<float, 3>> positions;
    std::vector<std::array<float, 3>> normals;
    std::vector<std::array<float, 2>> uvs;
    std::vector<std::array<float, 4>> colors;

    void Clear();
};

/// Consecutive faces, in order. A list is empty if it was not requested or if the mesh has no such
/// data.
struct TROVIK_API FaceBlock {
    std::vector<std::uint32_t> sizes;
    /// The vertex at each corner.
    std::vector<std::uint32_t> vertices;
    /// Per corner: the index into the UV list of the source, or SurfaceAttributes::none.
    std::vector<std::uint32_t> uvIndices;
    /// The UV of each corner; (0, 0) if the entry of uvIndices is `none`.
    std::vector<std::array<float, 2>> uvs;
    /// The group, material and smoothing group of each face.
    std::vector<std::uint32_t> groups;
    std::vector<std::uint32_t> materials;
    std::vector<std::uint32_t> smoothing;

    void Clear();
};

/// A morph target: the vertices that it moves, in ascending order, and their offsets at a weight of
/// 1.
struct MorphTarget {
    std::string name;
    float weight = 0.0f;
    std::vector<std::uint32_t> vertices;
    std::function<std::array<float, 3>(std::uint32_t vertex)> offset;
};

/// A mesh in the form that file writers consume: block by block, in order, so that a large mesh is
/// not copied in memory. Positions, offsets and normals are in the file's coordinate space.
///
/// A source borrows its data; the data must not change during the lifetime of the source.
class TROVIK_API MeshSource {
public:
    /// Maximum number of vertices or faces per block.
    static constexpr std::size_t blockSize = 4096;

    enum Parts : unsigned { Positions = 1, Normals = 2, Uvs = 4, Colors = 8 };

    virtual ~MeshSource();

    const std::string& Name() const { return name; }
    /// The unit and up axis of the coordinates that the source returns.
    const MeshSpace& Space() const { return space; }
    std::uint64_t VertexCount() const { return vertexCount; }
    std::uint64_t FaceCount() const { return faceCount; }
    std::uint64_t CornerCount() const { return cornerCount; }
    /// Number of corners of the largest face.
    std::uint32_t LargestFace() const { return largestFace; }
    /// The length of the UV list, or 0 if the mesh has no UVs.
    std::uint64_t UvCount() const { return uvCount; }
    /// Whether every corner has a UV and all corners of each vertex have the same UV. Vertex blocks
    /// have UVs only in this case.
    bool UvsFollowVertices() const { return uvsFollowVertices; }
    bool HasNormals() const { return hasNormals; }
    bool HasColors() const { return hasColors; }
    bool HasAlpha() const { return hasAlpha; }
    /// Whether every imported colour was a multiple of 1/255, so that bytes can represent the
    /// colours. In that case, refined colours are rounded to bytes.
    bool ColorsAreBytes() const { return colorsAreBytes; }
    const std::vector<std::string>& GroupNames() const { return *groupNames; }
    const std::vector<std::string>& MaterialNames() const { return *materialNames; }
    /// The files that define the materials.
    const std::vector<std::string>& MaterialFiles() const { return *materialFiles; }
    /// Morph targets. If there are any, BasePosition returns a vertex's position with all weights
    /// at 0; otherwise it equals Position.
    const std::vector<MorphTarget>& MorphTargets() const { return morphTargets; }

    virtual std::array<float, 3> Position(std::uint32_t vertex) const = 0;
    virtual std::array<float, 3> BasePosition(std::uint32_t vertex) const {
        return Position(vertex);
    }
    /// Calls `take` for each block in order.
    /// \param parts  the lists to fill, a combination of Parts.
    virtual void ReadVertices(unsigned parts,
                              const std::function<void(const VertexBlock&)>& take) const = 0;
    /// Calls `take` for each block in order.
    /// \param parts  If the Uvs bit is set, uvIndices and uvs are filled as well.
    virtual void ReadFaces(unsigned parts,
                           const std::function<void(const FaceBlock&)>& take) const = 0;
    /// Calls `take` with consecutive sections of the UV list.
    virtual void ReadUvs(
        const std::function<void(const std::vector<std::array<float, 2>>&)>& take) const = 0;

protected:
    MeshSource() = default;
    MeshSource(const MeshSource&) = delete;
    MeshSource& operator=(const MeshSource&) = delete;
    /// Copies the mesh-wide properties from the attributes of the lowest level: names, alpha, and
    /// whether colours are bytes.
    void Describe(const SurfaceAttributes& attributes);

    std::string name;
    MeshSpace space;
    std::uint64_t vertexCount = 0;
    std::uint64_t faceCount = 0;
    std::uint64_t cornerCount = 0;
    std::uint32_t largestFace = 0;
    std::uint64_t uvCount = 0;
    bool uvsFollowVertices = false;
    bool hasNormals = false;
    bool hasColors = false;
    bool hasAlpha = false;
    bool colorsAreBytes = false;
    const std::vector<std::string>* groupNames = nullptr;
    const std::vector<std::string>* materialNames = nullptr;
    const std::vector<std::string>* materialFiles = nullptr;
    std::vector<MorphTarget> morphTargets;
};

/// Provides a polygon mesh as a source. Borrows the mesh.
class TROVIK_API PolygonSource : public MeshSource {
public:
    /// \param wanted  the space of the returned coordinates; by default the space of the mesh.
    explicit PolygonSource(const PolygonMesh& mesh, const MeshSpace& wanted = {});

    std::array<float, 3> Position(std::uint32_t vertex) const override;
    void ReadVertices(unsigned parts,
                      const std::function<void(const VertexBlock&)>& take) const override;
    void ReadFaces(unsigned parts,
                   const std::function<void(const FaceBlock&)>& take) const override;
    void ReadUvs(
        const std::function<void(const std::vector<std::array<float, 2>>&)>& take) const override;

private:
    const PolygonMesh& mesh;
    SpaceConversion conversion;
    /// The UV index of each vertex, or `none` for a vertex without faces. The list is empty unless
    /// each vertex has a single UV.
    std::vector<std::uint32_t> vertexUvs;
};

/// Returns the UV index of each vertex if all corners of each vertex have the same value; otherwise
/// returns an empty list. A vertex without faces gets SurfaceAttributes::none. Values are compared,
/// not indices.
TROVIK_API std::vector<std::uint32_t> UvsByVertex(const SurfaceAttributes& attributes,
                                                  const std::uint32_t* cornerVertices,
                                                  std::size_t vertexCount);

/// Collects all data of a source in one mesh.
TROVIK_API PolygonMesh GatherPolygons(const MeshSource& source);

/// Reads a source as a phase of a job and reports progress after each block.
/// \param phase  a string literal.
/// \throw Cancelled.
TROVIK_API void ReadVertices(const MeshSource& source,
                             unsigned parts,
                             JobControl* job,
                             const char* phase,
                             const std::function<void(const VertexBlock&)>& take);
TROVIK_API void ReadFaces(const MeshSource& source,
                          unsigned parts,
                          JobControl* job,
                          const char* phase,
                          const std::function<void(const FaceBlock&)>& take);
TROVIK_API void ReadUvs(const MeshSource& source,
                        JobControl* job,
                        const char* phase,
                        const std::function<void(const std::vector<std::array<float, 2>>&)>& take);

}  // namespace trovik
