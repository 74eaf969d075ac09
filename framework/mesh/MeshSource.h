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

/// A run of vertices, in order. Lists of what was not asked for, or is not there, are empty.
struct TROVIK_API VertexBlock {
    std::vector<std::array<float, 3>> positions;
    std::vector<std::array<float, 3>> normals;
    std::vector<std::array<float, 2>> uvs;
    std::vector<std::array<float, 4>> colors;

    void Clear();
};

/// A run of faces, in order. Lists of what was not asked for, or is not there, are empty.
struct TROVIK_API FaceBlock {
    std::vector<std::uint32_t> sizes;
    /// Corner by corner.
    std::vector<std::uint32_t> vertices;
    /// Corner by corner: the number in the source's list of UVs, or SurfaceAttributes::none.
    std::vector<std::uint32_t> uvIndices;
    /// Corner by corner; zeros where uvIndices has none.
    std::vector<std::array<float, 2>> uvs;
    /// Face by face.
    std::vector<std::uint32_t> groups;
    std::vector<std::uint32_t> materials;
    std::vector<std::uint32_t> smoothing;

    void Clear();
};

/// A shape that can be blended onto the mesh: the vertices that it moves, rising, and by how much
/// at a weight of 1.
struct MorphTarget {
    std::string name;
    float weight = 0.0f;
    std::vector<std::uint32_t> vertices;
    std::function<std::array<float, 3>(std::uint32_t vertex)> offset;
};

/// A mesh as writers of files take it: block after block, in order, so that no second copy of a
/// large mesh has to lie in memory. Positions, offsets and normals are in the space of the file.
///
/// A source borrows what it reads from; that must stay as it is while the source lives.
class TROVIK_API MeshSource {
public:
    /// Vertices or faces a block at most.
    static constexpr std::size_t blockSize = 4096;

    enum Parts : unsigned { Positions = 1, Normals = 2, Uvs = 4, Colors = 8 };

    virtual ~MeshSource();

    const std::string& Name() const { return name; }
    /// What the numbers mean that the source hands out.
    const MeshSpace& Space() const { return space; }
    std::uint64_t VertexCount() const { return vertexCount; }
    std::uint64_t FaceCount() const { return faceCount; }
    std::uint64_t CornerCount() const { return cornerCount; }
    /// Corners of the largest face.
    std::uint32_t LargestFace() const { return largestFace; }
    /// Length of the list of UVs; 0 where the mesh has none.
    std::uint64_t UvCount() const { return uvCount; }
    /// Whether all corners of a vertex have the same UV and none lacks it. Only then do vertex
    /// blocks have UVs.
    bool UvsFollowVertices() const { return uvsFollowVertices; }
    bool HasNormals() const { return hasNormals; }
    bool HasColors() const { return hasColors; }
    bool HasAlpha() const { return hasAlpha; }
    /// Whether every colour was a whole number of 255ths as it came in, so that bytes hold colours;
    /// refined ones are then rounded.
    bool ColorsAreBytes() const { return colorsAreBytes; }
    const std::vector<std::string>& GroupNames() const { return *groupNames; }
    const std::vector<std::string>& MaterialNames() const { return *materialNames; }
    /// Files that define the materials.
    const std::vector<std::string>& MaterialFiles() const { return *materialFiles; }
    /// Shapes to be blended; without any, positions are all there is. With them, BasePosition tells
    /// where a vertex lies when all weights are 0.
    const std::vector<MorphTarget>& MorphTargets() const { return morphTargets; }

    virtual std::array<float, 3> Position(std::uint32_t vertex) const = 0;
    virtual std::array<float, 3> BasePosition(std::uint32_t vertex) const {
        return Position(vertex);
    }
    /// Calls `take` for block after block. \param parts  which lists to fill, a sum of Parts.
    virtual void ReadVertices(unsigned parts,
                              const std::function<void(const VertexBlock&)>& take) const = 0;
    /// \param parts  Uvs: uvIndices and uvs are filled too.
    virtual void ReadFaces(unsigned parts,
                           const std::function<void(const FaceBlock&)>& take) const = 0;
    /// The list of UVs in runs.
    virtual void ReadUvs(
        const std::function<void(const std::vector<std::array<float, 2>>&)>& take) const = 0;

protected:
    MeshSource() = default;
    MeshSource(const MeshSource&) = delete;
    MeshSource& operator=(const MeshSource&) = delete;
    /// Takes over what attributes of the lowest level say of the whole: names, alpha, byte colours.
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

/// Polygons as a source. Borrows the mesh.
class TROVIK_API PolygonSource : public MeshSource {
public:
    /// \param wanted  the space to hand numbers out in; by default that of the mesh.
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
    /// Where UVs follow vertices: the UV of each, or `none` for one that no face uses.
    std::vector<std::uint32_t> vertexUvs;
};

/// The UV number of each vertex, where all its corners have the same value; empty where one has
/// not. A vertex of no face has SurfaceAttributes::none. Values count, not numbers.
TROVIK_API std::vector<std::uint32_t> UvsByVertex(const SurfaceAttributes& attributes,
                                                  const std::uint32_t* cornerVertices,
                                                  std::size_t vertexCount);

/// Everything a source hands out, in one piece.
TROVIK_API PolygonMesh GatherPolygons(const MeshSource& source);

/// Reading a source as a phase of a job, reported after each block. \throw Cancelled.
/// \param phase  a string literal.
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
