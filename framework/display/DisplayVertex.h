// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace trovik {

/// One vertex of a patch, in the format that a viewport uploads. All members are bit-exact copies
/// of the level's data; nothing is converted or rounded.
///
/// `flags` belongs to a face, not to the vertex. Each triangle in the index lists of PatchLayout
/// begins with the vertex that stores the flags of its face. No vertex stores the flags of two
/// faces. A shader reads them with flat interpolation and the first-vertex convention.
struct DisplayVertex {
    /// Mesh-local position.
    float x, y, z;
    /// Mesh-local normal; the value 32767 represents 1.
    int16_t normalX, normalY, normalZ;
    /// Freeze amount, 0 to 127.
    uint8_t freeze;
    /// Bit 0: the face is hidden. Bits 1 to 7: DisplayGroup of the face. 0 if no triangle starts at
    /// the vertex.
    uint8_t flags;

    bool operator==(const DisplayVertex&) const = default;
};
static_assert(sizeof(DisplayVertex) == 20 && alignof(DisplayVertex) == 4);
static_assert(std::is_trivial_v<DisplayVertex>);
static_assert(offsetof(DisplayVertex, normalX) == 12 && offsetof(DisplayVertex, freeze) == 18 &&
              offsetof(DisplayVertex, flags) == 19);

/// Bit of DisplayVertex::flags: the face is hidden and must not be drawn.
inline constexpr uint8_t displayFaceIsHidden = 1;
/// DisplayVertex::flags >> displayGroupShift is the face's DisplayGroup.
inline constexpr unsigned displayGroupShift = 1;
/// Face groups with index 0 to displayGroupCount - 1 get different DisplayGroup values.
inline constexpr uint32_t displayGroupCount = 127;

/// Returns the number that represents a face group in DisplayVertex::flags: 0 for faces without a
/// group, otherwise 1 to 127. The numbers repeat from the 128th group on, so a number is sufficient
/// to choose a colour but does not identify the group.
/// \param faceGroup  index into SurfaceAttributes::groupNames.
constexpr uint8_t DisplayGroup(uint32_t faceGroup) {
    return static_cast<uint8_t>(1 + faceGroup % displayGroupCount);
}

}  // namespace trovik
