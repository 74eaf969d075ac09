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

/// Returns the components of a packed normal as floats, without normalisation.
TROVIK_FORCE_INLINE Vector UnpackNormal(const PackedNormal& normal) {
    return {static_cast<float>(normal.x) * packedNormalToFloat,
            static_cast<float>(normal.y) * packedNormalToFloat,
            static_cast<float>(normal.z) * packedNormalToFloat};
}

/// Returns the normal of a record as floats, with w 0; bit-identical to UnpackNormal.
TROVIK_FORCE_INLINE HWVector NormalOf(const StoredVertexInfo& record) {
    const __m128i words = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(&record.originalNormal));
    // Moves each word to the upper half of a lane, then sign-extends it with an arithmetic shift.
    const __m128i lanes = _mm_srai_epi32(_mm_unpacklo_epi16(words, words), 16);
    const __m128 numbers = _mm_mul_ps(_mm_cvtepi32_ps(lanes), _mm_set1_ps(packedNormalToFloat));
    return ReversedXyz(numbers);
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

/// Transforms a mesh-local point to world space. w is set to 0, because the 1 from the last row of
/// the matrix must not contribute to distances.
TROVIK_FORCE_INLINE HWVector ToWorld(const BrushSpace& space, const HWVector& local) {
    const HWVector* rows = space.meshToWorld;
    const HWVector world =
        ((rows[2] * local.Z() + rows[3] * 1.0f) + rows[1] * local.Y()) + rows[0] * local.X();
    return {world.X(), world.Y(), world.Z(), 0.0f};
}

}  // namespace trovik
