// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/layers/SculptLayer.h"
#include "framework/math/FrameRotation.h"

#include <memory>
#include <vector>

namespace trovik {

/// The layer base of one level: for each vertex that a layer touches, the position without layers.
/// The surface is the base plus strength * offset of each layer, in stack order. A layer
/// contributes nothing if it is hidden, has strength 0, or has no offset at the vertex. The surface
/// depends only on the base and the layers, so hiding and showing layers in any order restores
/// bit-identical positions.
///
/// Strokes, however, round the sums differently and write their own normals. For each vertex, this
/// class stores the last position and normal that a stroke wrote, along with the result computed
/// from the layers. Whenever the computation gives that result again, it is replaced by the stored
/// position and normal.
class TROVIK_API LayerBase {
public:
    using Layers = std::vector<std::shared_ptr<SculptLayer>>;

    /// A vertex that layers touch.
    struct LayeredVertex {
        uint32_t vertex = 0;
        Vector base;
        /// If the computed sum equals `sum`, the vertex is at `position` instead of at the sum.
        Vector sum;
        Vector position;
    };
    static bool SameLayeredVertex(const LayeredVertex& a, const LayeredVertex& b);
    /// The data of a vertex in another state of the level; `isKnown` is false if the vertex has no
    /// data in that state.
    struct OtherLayeredVertex {
        LayeredVertex layeredVertex;
        bool isKnown = false;
    };
    /// This normal replaces the computed one while the hash of the positions around the vertex
    /// equals `ring`.
    struct StoredNormal {
        uint64_t ring = 0;
        uint32_t vertex = 0;
        int16_t words[3] = {0, 0, 0};
        /// Scene files store these values byte by byte, so there must be no padding.
        int16_t unused[3] = {0, 0, 0};
    };

    /// Updates the stored data to reflect changes to the level since the last call. Cost: O(touched
    /// vertices).
    /// \param layers  layers of the level, lowest first.
    void Settle(const LevelMesh& level, const Layers& layers);

    /// The positions and normals from before a call to Compose.
    struct Replaced {
        /// The vertices that moved and their neighbours, in ascending order.
        std::vector<uint32_t> vertices;
        std::vector<Vector> positions;
        std::vector<PackedNormal> normals;
    };
    /// Updates the level after its layers or their offsets have changed since the last call to
    /// Settle. This affects positions, the normals around moved vertices, and the vertex states
    /// that the layers store.
    Replaced Compose(LevelMesh& level, const Layers& layers);
    /// Called after a layer change that leaves the surface unchanged: records that the current
    /// positions belong to the new layers.
    void Keep(const LevelMesh& level, const Layers& layers);

    /// A vertex's base data and its entries in the layers.
    struct VertexLayers {
        /// An entry of a layer; `layer` is an index into the layers of the level.
        struct Entry {
            uint32_t layer;
            uint32_t slot;
            SculptLayer::State state;
        };
        LayeredVertex layeredVertex;
        std::vector<Entry> entries;
    };
    /// Returns the data of one vertex, including changes since the last call to Settle. There are
    /// no entries if no layer touches the vertex. Cost: O(layers + log(touched vertices)).
    VertexLayers VertexLayersOf(const LevelMesh& level,
                                const Layers& layers,
                                uint32_t vertex) const;
    /// Returns the data after the underlying surface has moved the vertex to `place`: the base
    /// moves with the surface, and the offsets rotate with it. If any result is not finite, the
    /// data is returned unchanged.
    static VertexLayers Carried(const VertexLayers& held,
                                const Layers& layers,
                                const Vector& present,
                                const Vector& position,
                                const SurfaceMove& move);

    /// Returns the data in `before` of each vertex whose current data differs from it, in ascending
    /// vertex order.
    std::vector<OtherLayeredVertex> DifferencesTo(const std::vector<LayeredVertex>& before) const;
    /// Exchanges the current data of these vertices with the data in `others`.
    /// \param others  ordered by vertex, without duplicates.
    void Exchange(std::vector<OtherLayeredVertex>& others);

    /// Renumbers the vertices: vertex v of the level becomes vertex map[v]. Stored normals are
    /// dropped, because they depend on the order of the old face numbers.
    void Renumber(const std::vector<uint32_t>& map);

    /// The data of all vertices that layers touch, in ascending vertex order. Used to save scenes.
    const std::vector<LayeredVertex>& LayeredVertices() const { return layeredVertices; }
    const std::vector<StoredNormal>& Normals() const { return normals; }
    void Restore(std::vector<LayeredVertex> newLayeredVertices,
                 std::vector<StoredNormal> newNormals);
    uint64_t Bytes() const;

private:
    /// A vertex that a layer touches, and its slot in the layer.
    struct Touched {
        uint32_t vertex;
        uint32_t layer;
        uint32_t slot;
    };
    static std::vector<Touched> TouchedBy(const Layers& layers);
    /// \param known  the existing data of the vertex; null if there is none.
    static LayeredVertex Settled(const LayeredVertex* known,
                                 const LevelMesh& level,
                                 const Layers& layers,
                                 const Touched* first,
                                 const Touched* last);
    /// Updates the data of a vertex whose position differs from the expected one.
    static void AbsorbMove(LayeredVertex& layeredVertex,
                           const Layers& layers,
                           const Touched* first,
                           const Touched* last,
                           const Vector& present,
                           const Vector& expected);
    void StoreNormals(LevelMesh& level, const std::vector<uint32_t>& around);
    void ApplyStoredNormals(LevelMesh& level, const std::vector<uint32_t>& around) const;

    std::vector<LayeredVertex> layeredVertices;
    std::vector<StoredNormal> normals;
};

}  // namespace trovik
