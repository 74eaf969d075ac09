// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "brush/SwiftStroke.h"
#include "brush/ToolCatalogue.h"
#include "host/BrushOperation.h"

namespace trovik {

/// Values that are constant for all vertices of a patch, and the bounds, which the loop extends.
/// They are collected before the loop, which then reads them from registers and the stack.
struct DabConstants {
    DabConstants(SwiftStroke& swiftStroke, bool mirroredStampRead)
        : brush(swiftStroke),
          mesh(*swiftStroke.mesh),
          change(*swiftStroke.CurrentChange()),
          space(*swiftStroke.brushSpace),
          vertices(mesh.vertices.array),
          normals(mesh.vertexNormals.array),
          positionGrid(swiftStroke.positionGrid),
          center(space.center),
          direction(space.direction),
          boundsMin(space.boundsMin),
          boundsMax(space.boundsMax),
          radiusSquared(swiftStroke.radiusSquared),
          falloffTable(swiftStroke.falloffTable),
          falloffLast(static_cast<uint32_t>(swiftStroke.falloffLast)),
          falloffScale(swiftStroke.falloffScale),
          buildUpRateCubed(swiftStroke.buildUpRateCubed),
          dabPressure(swiftStroke.dabPressure),
          dabStrength(swiftStroke.dabStrength),
          dabStamp(swiftStroke.dabStamp),
          facingActive(CheckableFloatArray::s_bActive),
          mirroredStamp(mirroredStampRead) {
        const BrushConfiguration* tool = swiftStroke.ActiveConfiguration();
        if (tool != nullptr && tool->ID() == static_cast<uint32_t>(Tool::Wax)) {
            const float bias = swiftStroke.BrushStrengthBias() * 0.01f;
            scaleAsWax = true;
            waxScale = (1.0f - bias) * dabPressure + bias;
        }
    }

    /// Stores the extended bounds in the brush.
    void StoreBounds() {
        space.boundsMin = boundsMin;
        space.boundsMax = boundsMax;
    }

    SwiftStroke& brush;
    Mesh& mesh;
    MeshChange& change;
    BrushSpace& space;
    Vertex* vertices;
    const PackedNormal* normals;
    HWVector* positionGrid;
    HWVector center;
    HWVector direction;
    HWVector boundsMin;
    HWVector boundsMax;
    float radiusSquared;
    const float* falloffTable;
    uint32_t falloffLast;
    float falloffScale;
    float buildUpRateCubed;
    float dabPressure;
    float dabStrength;
    uint32_t dabStamp;
    bool facingActive;
    /// Whether the stamp is read at the topological mirror image of the vertex.
    bool mirroredStamp;
    bool scaleAsWax = false;
    float waxScale = 1.0f;
};

/// The state of one vertex as it passes through the stages.
struct VertexState {
    uint32_t vertex;
    uint32_t face;
    uint32_t cell;
    Vertex* vertexRecord;
    StoredVertexInfo* record;
    /// Current position, from which the vertex moves.
    HWVector current;
    /// Position at first touch in the stroke, from which distances are measured.
    HWVector startPosition;
    /// The position at first touch, in the space in which distances are measured.
    HWVector measured;
    float weight;
    /// The weight per stamp channel, used by vector stamps.
    HWVector weightVector;
    HWVector displacement;
};

enum class StageResult { Continue, OutOfReach };

/// Converts x, y, z in memory order, followed by an arbitrary value, to a vector with w 0.
TROVIK_FORCE_INLINE HWVector ReversedXyz(__m128 plain) {
    const __m128 reversed = _mm_shuffle_ps(plain, plain, _MM_SHUFFLE(0, 1, 2, 3));
    return HWVector(_mm_and_ps(reversed, _mm_castsi128_ps(_mm_setr_epi32(0, -1, -1, -1))));
}

/// Returns the position of a vertex, with w 0. The position and the link are read as one vector,
/// and the link is masked out.
TROVIK_FORCE_INLINE HWVector PositionOf(const Vertex& v) {
    return ReversedXyz(_mm_loadu_ps(reinterpret_cast<const float*>(&v)));
}

/// Writes x, y and z with a single store that preserves the link.
TROVIK_FORCE_INLINE void StorePosition(Vertex& v, const HWVector& position) {
    auto* words = reinterpret_cast<float*>(&v);
    const __m128 linkOnly = _mm_castsi128_ps(_mm_setr_epi32(0, 0, 0, -1));
    const __m128 xyz = _mm_shuffle_ps(position.lanes, position.lanes, _MM_SHUFFLE(0, 1, 2, 3));
    _mm_storeu_ps(
        words, _mm_or_ps(_mm_andnot_ps(linkOnly, xyz), _mm_and_ps(linkOnly, _mm_loadu_ps(words))));
}

/// Returns 1 minus the mask weight of a vertex.
TROVIK_FORCE_INLINE float UnfrozenFraction(const Vertex& v) {
    return 1.0f - static_cast<float>(v.freeze & freezeAmountMask) * freezeAmountToWeight;
}

/// The factor of the weight of a planing tool.
inline constexpr float planingWeightScale = 0.01f;

}  // namespace trovik
