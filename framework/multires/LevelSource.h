// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/layers/SculptLayer.h"
#include "framework/mesh/AttributeRefinement.h"
#include "framework/mesh/MeshSource.h"
#include "framework/multires/LevelGeometry.h"

#include <memory>
#include <optional>
#include <vector>

namespace trovik {

/// A level of a geometry as a source for files, straight from the level's arrays, with what
/// level 0 carries refined to it (AttributeRefinement.h). Borrows the geometry and the layers.
///
/// The list of UVs of a level above 0 has, for each quad of the lowest quad level (level 0, or
/// level 1 above triangles), one entry a point of its grid, row by row. Memory: by the size of
/// level 0, and 4 bytes for each vertex that a layer touches.
class TROVIK_API LevelSource : public MeshSource {
public:
    struct Options {
        /// Through the geometry's transformation; otherwise mesh-local.
        bool world = false;
        /// The space to hand numbers out in, where the mesh knows its own.
        MeshSpace space;
        /// Which level; without, the bound one.
        std::optional<std::uint32_t> level = {};
    };

    /// The layers of the level become morph targets, with their strengths as weights, 0 while
    /// they are hidden.
    LevelSource(const LevelGeometry& geometry, const Options& options);

    std::array<float, 3> Position(std::uint32_t vertex) const override;
    std::array<float, 3> BasePosition(std::uint32_t vertex) const override;
    void ReadVertices(unsigned parts,
                      const std::function<void(const VertexBlock&)>& take) const override;
    void ReadFaces(unsigned parts,
                   const std::function<void(const FaceBlock&)>& take) const override;
    void ReadUvs(
        const std::function<void(const std::vector<std::array<float, 2>>&)>& take) const override;

private:
    /// u, v, red, green, blue, alpha.
    static constexpr std::size_t valueCount = 6;
    using Values = std::array<float, valueCount>;

    std::array<float, 3> Placed(const Vector& position) const;
    std::array<float, 3> PlacedNormal(std::uint32_t vertex) const;
    void AddLayers();
    Values BaseValues(std::uint32_t vertex) const;
    /// Calls `take(values)` for each vertex of the level, in order.
    template <typename Take>
    void ForEachValue(Take take) const;
    /// UVs of a face of level 0. \return false where a corner has none.
    bool BaseUvs(std::uint32_t baseFace, CornerValues<2>& uvs) const;

    const LevelGeometry& geometry;
    const LevelMesh& level;
    const std::uint32_t number;
    const std::uint32_t baseCorners;
    const bool world;
    SpaceConversion conversion;
    std::vector<const SculptLayer*> blended;
    std::vector<std::uint32_t> vertexUvs;
};

}  // namespace trovik
