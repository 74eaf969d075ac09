// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/files/GltfSink.h"
#include "framework/mesh/MeshSource.h"

#include <array>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace trovik {

/// A copy of a mesh vertex with a different texture coordinate.
struct GltfCopy {
    std::uint32_t vertex;
    std::array<float, 2> uv;
};

struct GltfBox {
    std::array<float, 3> low = {};
    std::array<float, 3> high = {};
};

/// The vertices of a glTF file: the mesh vertices in order, followed by one copy for each
/// additional texture coordinate of a vertex, in the order in which faces use them.
class GltfLayout {
public:
    /// \throw HostError with the path if the index type cannot address all vertices.
    /// \throw Cancelled.
    GltfLayout(const MeshSource& source, const std::string& path, JobControl* job = nullptr);

    std::uint64_t VertexCount() const { return source.VertexCount() + copies.size(); }
    std::uint64_t TriangleCount() const { return source.CornerCount() - 2 * source.FaceCount(); }
    bool HasCopies() const { return !copies.empty(); }
    const std::vector<GltfCopy>& Copies() const { return copies; }
    /// Returns the mesh vertex that a vertex of the file represents or copies.
    std::uint32_t Original(std::uint32_t vertex) const {
        return vertex < source.VertexCount() ? vertex
                                             : copies[vertex - source.VertexCount()].vertex;
    }
    /// Calls `take(index)` for each copy of a mesh vertex.
    template <class Take>
    void ForEachCopyOf(std::uint32_t vertex, Take take) const {
        const auto first = copiesOf.find(vertex);
        for (std::uint32_t copy = first == copiesOf.end() ? none : first->second; copy != none;
             copy = nextCopy[copy]) {
            take(std::size_t{copy});
        }
    }
    /// Returns the file vertex (original or copy) of a corner in a block that has UVs.
    std::uint32_t VertexOf(const FaceBlock& block, std::size_t corner) const;
    /// Writes the UVs of all vertices. In glTF files, v points down.
    void WriteUvs(GltfSink& sink, JobControl* job) const;

    GltfBox PositionBox(JobControl* job) const;
    /// Returns the file vertices that a morph target moves, in ascending order.
    const std::vector<std::uint32_t>& MorphVertices(std::size_t target) const {
        return morphVertices[target];
    }
    GltfBox MorphBox(std::size_t target) const;

private:
    static constexpr std::uint32_t none = SurfaceAttributes::none;

    void FindCopies(const std::string& path, JobControl* job);
    std::uint32_t CopyOf(std::uint32_t vertex, const std::array<float, 2>& uv) const;

    const MeshSource& source;
    /// For each vertex, the UV of the first face that uses it; empty if each vertex has a single
    /// UV.
    std::vector<std::array<float, 2>> firstUvs;
    std::vector<GltfCopy> copies;
    /// The copies of each vertex form a linked list: `copiesOf` contains the first copy of a
    /// vertex, and `nextCopy` the successor of each copy.
    std::unordered_map<std::uint32_t, std::uint32_t> copiesOf;
    std::vector<std::uint32_t> nextCopy;
    std::vector<std::vector<std::uint32_t>> morphVertices;
};

}  // namespace trovik
