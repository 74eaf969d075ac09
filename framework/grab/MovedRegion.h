// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/layers/SculptLayer.h"
#include "framework/mesh/RegionNormals.h"
#include "framework/multires/LevelChange.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace trovik {

/// Vertices that a stroke moves together, as displacements from the positions that they have when
/// the region is created. Displacements do not accumulate: each move replaces the previous one, and
/// Restore makes the region bit-identical to its state at creation.
///
/// All vertices, and those whose normals depend on them, get records in the stroke's change. If a
/// layer is active, the moves are recorded in it. Moves are reported to the geometry's observers.
class TROVIK_API MovedRegion {
public:
    /// Borrows the level, on which `change` must be open during all calls.
    /// \param moved  in ascending order.
    /// \throw Error* if an allocation fails; in that case, the surface is unchanged.
    MovedRegion(LevelMesh& ofLevel, LevelChange& change, std::vector<uint32_t> moved);

    const std::vector<uint32_t>& Vertices() const { return vertices; }
    /// Position of a vertex at creation, mesh-local. \param index  into Vertices.
    const Vector& Start(std::size_t index) const { return starts[index]; }

    /// Moves each vertex by `displacement(index)`, which is mesh-local, from its start. Results do
    /// not depend on the number of threads.
    /// \param displacement  called on several threads, with indices into Vertices. Returns a Vector
    /// or a std::optional<Vector>; if it is empty, the vertex keeps its current position.
    template <typename Displacement>
    void Move(const Displacement& displacement, unsigned threads = allWorkerThreads) {
        if (layer != nullptr) {
            for (std::size_t i = 0; i < vertices.size(); ++i)
                if (const std::optional<Vector> by = displacement(i)) MoveInLayer(i, *by);
        } else {
            const auto blocks = static_cast<uint32_t>((vertices.size() + block - 1) / block);
            RunInParallel(
                blocks,
                1,
                [&](uint32_t number) {
                    const std::size_t begin = number * block;
                    const std::size_t end = std::min(begin + block, vertices.size());
                    for (std::size_t i = begin; i < end; ++i)
                        if (const std::optional<Vector> by = displacement(i))
                            level.StorePosition(vertices[i], starts[i] + *by);
                },
                threads);
        }
        Finish(threads);
    }
    /// Restores the positions, the layer offsets and the normals at creation.
    void Restore();

private:
    static constexpr std::size_t block = 16384;

    void MoveInLayer(std::size_t index, const Vector& displacement);
    /// Recomputes the normals and reports the region.
    void Finish(unsigned threads);

    LevelMesh& level;
    /// Null if the moves are not recorded in a layer.
    SculptLayer* layer;
    std::vector<uint32_t> vertices;
    std::vector<Vector> starts;
    /// With a layer only: the slot of each vertex, and its state at creation.
    std::vector<uint32_t> slots;
    std::vector<SculptLayer::State> states;
    RegionNormals normals;
    /// The patches that contain a vertex of the region or of its normals.
    std::vector<uint32_t> patches;
};

}  // namespace trovik
