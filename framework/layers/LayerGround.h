// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/layers/SculptLayer.h"
#include "framework/math/SurfaceTurn.h"

#include <memory>
#include <vector>

namespace trovik {

/// What lies under the layers of one level: for each vertex that one of them touched the position
/// without any. The surface is the ground, plus strength x offset of each layer in the order of the
/// stack; layers that are hidden, of strength 0 or without an offset there add nothing. It is a
/// function of ground and layers alone, so whatever is turned off and on again, in whatever order,
/// gives the bits that were there.
///
/// Strokes write sums of another rounding, and normals of their own. A vertex's last position and
/// normal of that kind are noted here with what the function gave for them, and stand in for it
/// when it gives that again.
class TROVIK_API LayerGround {
public:
    using Layers = std::vector<std::shared_ptr<SculptLayer>>;

    /// A vertex under layers.
    struct Knot {
        uint32_t vertex = 0;
        Vector base;
        /// Where the sum is `sum`, the vertex lies at `place`.
        Vector sum;
        Vector place;
    };
    static bool SameKnot(const Knot& a, const Knot& b);
    /// What is known of a vertex at another time, which may be nothing.
    struct OtherKnot {
        Knot knot;
        bool isKnown = false;
    };
    /// Where the positions of the faces around a vertex are those of `ring` (a hash), its normal is
    /// this one rather than the one computed from them.
    struct NotedNormal {
        uint64_t ring = 0;
        uint32_t vertex = 0;
        int16_t words[3] = {0, 0, 0};
        /// Scenes hold these values byte by byte, which leaves no room for padding.
        int16_t unused[3] = {0, 0, 0};
    };

    /// Takes in what happened to the level since the last call. \param layers  those of the level,
    /// lowest first. Cost: O(touched vertices).
    void Settle(const LevelMesh& level, const Layers& layers);

    /// The positions and normals that Compose has replaced.
    struct Replaced {
        /// The vertices that moved and those around them, ascending.
        std::vector<uint32_t> vertices;
        std::vector<Vector> positions;
        std::vector<PackedNormal> normals;
    };
    /// Brings the level up to date with the layers, which may be others than at Settle or have
    /// other offsets: positions, normals around what moved, and what the layers know of each
    /// vertex.
    Replaced Compose(LevelMesh& level, const Layers& layers);
    /// For a change of the layers that leaves the surface as it is: notes that its present
    /// positions belong to them as they are now.
    void Keep(const LevelMesh& level, const Layers& layers);

    /// What layers hold of a vertex, and the ground under it.
    struct Held {
        /// A layer's entry; `layer` counts within the level's.
        struct Entry {
            uint32_t layer;
            uint32_t slot;
            SculptLayer::State state;
        };
        Knot knot;
        std::vector<Entry> entries;
    };
    /// What is held of one vertex, with what happened to it since the last call of Settle taken in;
    /// no entries where no layer touched it. Cost: O(layers + log(touched vertices)).
    Held HeldOf(const LevelMesh& level, const Layers& layers, uint32_t vertex) const;
    /// The same after the level's surface moved under the vertex and took it to `place`: the ground
    /// went along, and so did the offsets. Where something would be no number, nothing changes.
    static Held Carried(const Held& held,
                        const Layers& layers,
                        const Vector& present,
                        const Vector& place,
                        const SurfaceMove& move);

    /// Of each vertex of which `before` tells something else than what is known now, what it tells.
    /// In order of vertices.
    std::vector<OtherKnot> Otherwise(const std::vector<Knot>& before) const;
    /// Swaps what is known now of these vertices with what was known before. \param others  in
    /// order of vertices, each once.
    void Exchange(std::vector<OtherKnot>& others);

    /// Vertex v of the level has become vertex map[v]. Noted normals go: what they were noted for
    /// is a sum over faces in the order of the old numbers.
    void Renumber(const std::vector<uint32_t>& map);

    /// For scenes, in order of vertices.
    const std::vector<Knot>& Knots() const { return knots; }
    const std::vector<NotedNormal>& Normals() const { return normals; }
    void Restore(std::vector<Knot> newKnots, std::vector<NotedNormal> newNormals);
    uint64_t Bytes() const;

private:
    /// A vertex that a layer touched, and the first of its slots; `slots` lie in a row.
    struct Touched {
        uint32_t vertex;
        uint32_t layer;
        uint32_t slot;
    };
    static std::vector<Touched> TouchedBy(const Layers& layers);
    /// \param known  what was known of the vertex; null for nothing.
    static Knot Settled(const Knot* known,
                        const LevelMesh& level,
                        const Layers& layers,
                        const Touched* first,
                        const Touched* last);
    /// Takes a position into the knot that is not the one the knot tells.
    static void TakeMove(Knot& knot,
                         const Layers& layers,
                         const Touched* first,
                         const Touched* last,
                         const Vector& present,
                         const Vector& expected);
    void NoteNormals(LevelMesh& level, const std::vector<uint32_t>& around);
    void TakeNotedNormals(LevelMesh& level, const std::vector<uint32_t>& around) const;

    std::vector<Knot> knots;
    std::vector<NotedNormal> normals;
};

}  // namespace trovik
