// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/grab/Kelvinlet.h"
#include "framework/grab/MovedRegion.h"

#include <memory>
#include <optional>
#include <vector>

namespace trovik {

/// Identifies a side of a mirrored dab that holds the surface.
struct GrabSideKey {
    bool isMirrored = false;
    /// Mesh-local.
    Vector hit;
    /// The identity on the main side.
    Matrix pointMap;

    /// Compares hits by value and maps bit by bit.
    bool operator==(const GrabSideKey& other) const;
};

/// The elastic deformation around the hit of one side.
struct ElasticField {
    Kelvinlet kelvinlet;
    /// For each vertex of the region, the vector from the hit, in world space, and the
    /// coefficients.
    std::vector<Vector> arms;
    std::vector<Kelvinlet::Coefficients> coefficients;
    Kelvinlet::Load load;
};

/// One side of a grab.
struct GrabSide {
    /// \param vertexWeights  one for each vertex of the region.
    GrabSide(const GrabSideKey& sideKey,
             std::vector<float> vertexWeights,
             MovedRegion sideRegion,
             std::optional<ElasticField> field);

    GrabSideKey key;
    /// Without an elastic field, a vertex moves by its weight times the displacement. Otherwise,
    /// the weights exclude the coefficients of the field.
    std::vector<float> weights;
    MovedRegion region;
    /// Mesh-local, at weight 1.
    Vector displacement;
    std::optional<ElasticField> elastic;

    static constexpr uint32_t noVertex = 0xffffffffu;
    /// An earlier side that overlaps this one.
    struct Overlap {
        const GrabSide* side;
        /// For each vertex of this side, its index in the other side, or noVertex.
        std::vector<uint32_t> indices;
    };
    std::vector<Overlap> overlaps;
    /// Whether each vertex is also in the region of a later side, which moves it.
    std::vector<bool> isMovedLater;
    bool isShared = false;
    bool isMoved = false;
};

/// The sides of a grab. Where regions overlap, the displacement of a vertex is the sum of w d
/// divided by the sum of w over these sides, where w is the vertex's weight and d its displacement
/// on a side.
class GrabSides {
public:
    void Clear() { sides.clear(); }
    /// \return null if there is no side with this key.
    GrabSide* Find(const GrabSideKey& key);
    /// Appends a side. All sides of a grab are added before the first one moves. Cost: linear in
    /// the number of vertices of all sides.
    GrabSide& Add(std::unique_ptr<GrabSide> side);
    /// Moves the region of a side from its start by its current displacement. A vertex of several
    /// sides moves with the last of them, so a motion calls this for all sides, in the order in
    /// which they were added.
    /// \param toLocal  from world to mesh-local space, for elastic fields.
    /// \param threads  see MovedRegion::Move.
    void Drag(GrabSide& side, const Matrix& toLocal, unsigned threads);

private:
    std::vector<std::unique_ptr<GrabSide>> sides;
};

}  // namespace trovik
