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

/// Provides a level of a geometry as a source for file writers. The source reads directly from the
/// arrays of the level, and refines the attributes of level 0 to it (AttributeRefinement.h).
/// Borrows the geometry and the layers.
///
/// The UV list of a level above 0 has one entry for each grid point of each quad of the lowest quad
/// level, row by row. The lowest quad level is level 0, or level 1 if level 0 has triangles.
/// Memory: proportional to the size of level 0, plus 4 bytes per vertex that a layer touches.
class TROVIK_API LevelSource : public MeshSource {
public:
    struct Options {
        /// Whether to apply the geometry's transform; otherwise, coordinates are mesh-local.
        bool world = false;
        /// The space to which coordinates are converted if the space of the mesh is known.
        MeshSpace space;
        /// The level to export; the bound level if not set.
        std::optional<std::uint32_t> level = {};
    };

    /// Each layer of the level becomes a morph target. Its weight is the layer's strength, or 0 for
    /// a hidden layer.
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
    /// Number of attribute values: u, v, red, green, blue and alpha.
    static constexpr std::size_t valueCount = 6;
    using Values = std::array<float, valueCount>;

    std::array<float, 3> Placed(const Vector& position) const;
    std::array<float, 3> PlacedNormal(std::uint32_t vertex) const;
    void AddLayers();
    Values BaseValues(std::uint32_t vertex) const;
    /// Calls `take(values)` with the attribute values of each vertex of the level, in order.
    template <typename Take>
    void ForEachValue(Take take) const;
    /// Reads the UVs of a face of level 0.
    /// \return false if a corner has none.
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
