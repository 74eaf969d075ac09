// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstddef>
#include <type_traits>

/// \file Mesh records that a brush reads and writes directly. Their layout is part of the
/// interface, because the vertex loops access the bytes directly.
namespace trovik {

/// One vertex of a level.
struct Vertex {
    float x, y, z;        ///< byte 0: position, mesh-local
    uint32_t changeLink;  ///< byte 12: index of its record in the open change, or its visit stamp
    uint8_t freeze;       ///< byte 16: low 7 bits: freeze amount, 0 to 127
    uint8_t reserved[3];  ///< byte 17: reserved for the host
};
static_assert(sizeof(Vertex) == 20 && alignof(Vertex) == 4 && std::is_trivial_v<Vertex>);
static_assert(offsetof(Vertex, x) == 0 && offsetof(Vertex, y) == 4 && offsetof(Vertex, z) == 8);
static_assert(offsetof(Vertex, changeLink) == 12 && offsetof(Vertex, freeze) == 16);

/// The bits of Vertex::freeze that contain the amount.
inline constexpr uint8_t freezeAmountMask = 0x7f;
/// 1/127, the factor that converts a freeze amount to a mask weight.
inline constexpr float freezeAmountToWeight = 0.007874016f;

/// A unit normal as three 16-bit integers; the fourth word is reserved for the host.
struct PackedNormal {
    int16_t x, y, z;
    int16_t reserved;
};
static_assert(sizeof(PackedNormal) == 8 && std::is_trivial_v<PackedNormal>);
static_assert(offsetof(PackedNormal, y) == 2 && offsetof(PackedNormal, z) == 4 &&
              offsetof(PackedNormal, reserved) == 6);

/// 1/32767, the factor that converts a component of a packed normal to float.
inline constexpr float packedNormalToFloat = 3.051851e-05f;

/// The undo record of one vertex in one MeshChange.
struct StoredVertexInfo {
    float originalPosition[3];    ///< byte 0: position when the record was created
    uint32_t visitStampWord;      ///< byte 12: the visit stamp of the vertex while the record
                                  ///< exists
    PackedNormal originalNormal;  ///< byte 16: normal when the record was created
    float buildUp;                ///< byte 24: build-up in this stroke, initially 0
    uint32_t vertexIndex;         ///< byte 28: the vertex of this record
    uint32_t reserved;            ///< byte 32: reserved for the host
    uint32_t layerSlot;           ///< byte 36: slot in the active layer
};
static_assert(sizeof(StoredVertexInfo) == 40 && std::is_trivial_v<StoredVertexInfo>);
static_assert(offsetof(StoredVertexInfo, visitStampWord) == 12);
static_assert(offsetof(StoredVertexInfo, originalNormal) == 16);
static_assert(offsetof(StoredVertexInfo, buildUp) == 24);
static_assert(offsetof(StoredVertexInfo, vertexIndex) == 28);
static_assert(offsetof(StoredVertexInfo, reserved) == 32);
static_assert(offsetof(StoredVertexInfo, layerSlot) == 36);

/// Opaque data that the host stores per vertex.
struct VertexAuxiliary {
    uint8_t bytes[8];
};
static_assert(sizeof(VertexAuxiliary) == 8);

}  // namespace trovik
