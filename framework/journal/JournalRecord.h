// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

/// \file The byte format of a journal; docs/journal.md is the complete description. A 16-byte
/// header contains "TROVIKJN", the version (uint32) and the CRC-32 of both. It is followed by
/// records. Each contains the length of its content (uint32), its kind (uint32), its number counted
/// from 0 (uint32), the CRC-32 of these three fields and the content (uint32), and the content.
/// Everything is little-endian. The numbers show whether a record is missing from the sequence.
namespace trovik {

inline constexpr std::string_view journalMagic = "TROVIKJN";
inline constexpr uint32_t journalVersion = 1;
inline constexpr std::size_t journalHeaderBytes = 16;
inline constexpr std::size_t recordHeaderBytes = 16;
/// More than any step of a script needs; a greater length is treated as damage.
inline constexpr uint32_t maxRecordBytes = uint32_t{1} << 30;

enum class RecordKind : uint32_t {
    /// JSON: the state from which the steps start.
    Base = 1,
    /// JSON: a step of a stroke script, before it runs.
    Step = 2,
    /// DabMark: a dab of the current step is complete.
    Dab = 3,
    /// StepEnd: the current step has ended.
    StepDone = 4,
    /// StrokeStart and the label of the undo step: a stroke that is not part of a step begins.
    StrokeBegin = 5,
    /// StrokeInput: a completed dab of such a stroke, with the arguments that were passed.
    StrokeDab = 6,
    /// WholeMeshInput: the tool was applied to the whole mesh.
    StrokeWhole = 7,
    /// No content: the stroke was reverted to its start and continues.
    StrokeRevert = 8,
    /// StepEnd: the stroke has ended.
    StrokeEnd = 9,
    /// JSON: path and content hash of a stamp file.
    Stamp = 10,
    /// JSON: a scene file that is complete and about to replace the old one.
    Saved = 11,
    /// JSON: summaries of the steps before this journal started.
    Past = 12,
    /// No content: the work ended normally.
    Close = 13
};
inline constexpr uint32_t highestRecordKind = 13;

struct DabMark {
    /// Number of completed dabs of the step, including this one.
    uint32_t count;
};

struct StepEnd {
    uint32_t dabs;
    /// 1 if the step ended with an error after doing some of its work; 2 if it was cancelled and
    /// its completed dabs are its only effect. For a stroke, 1 if it was cancelled or failed; see
    /// StrokeInputListener::OnStrokeEnded.
    uint32_t failed;
    uint64_t vertices;
    /// Size of the undo step; 0 if there is none.
    uint64_t undoBytes;

    static constexpr uint32_t cancelled = 2;
};

struct StrokeStart {
    uint64_t seed;
    /// SceneSettings::strokesBegun after the stroke has begun.
    uint64_t strokesBegun;
    uint32_t modifier;
    uint32_t reserved;
};

/// The arguments of StrokeLoop::Dab.
struct StrokeInput {
    uint32_t face;
    /// Bit 0: stamp settings do not move the dab; bit 1: the dab ended with an error.
    uint32_t flags;
    std::array<float, 3> hitPosition;
    std::array<float, 3> hitNormal;
    std::array<float, 3> position;
    std::array<float, 3> heading;
    std::array<float, 3> stampTop;
    float size;
    float pressure;
    float strength;

    static constexpr uint32_t keepsPosition = 1;
    static constexpr uint32_t failed = 2;
};

struct WholeMeshInput {
    float strength;
    uint32_t byFacing;
};

// These structures are written as they are laid out in memory, so they must not contain padding.
static_assert(sizeof(DabMark) == 4 && sizeof(StepEnd) == 24 && sizeof(StrokeStart) == 24 &&
              sizeof(StrokeInput) == 80 && sizeof(WholeMeshInput) == 8);
static_assert(std::is_trivially_copyable_v<StrokeInput>);

}  // namespace trovik
