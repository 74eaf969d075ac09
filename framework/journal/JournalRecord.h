// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

/// \file
/// The bytes of a journal; docs/journal.md tells them one by one. A header of 16 bytes: "TROVIKJN",
/// the version (uint32) and the CRC-32 of both. Then records: length of the content (uint32), kind
/// (uint32), number of the record from 0 on (uint32), CRC-32 of these three and the content
/// (uint32), the content. Little-endian throughout. The number is what tells a record that is
/// missing from one that was never written.
namespace trovik {

inline constexpr std::string_view journalMagic = "TROVIKJN";
inline constexpr uint32_t journalVersion = 1;
inline constexpr std::size_t journalHeaderBytes = 16;
inline constexpr std::size_t recordHeaderBytes = 16;
/// More than any step of a script; a length beyond it is damage.
inline constexpr uint32_t longestRecordBytes = uint32_t{1} << 30;

enum class RecordKind : uint32_t {
    /// JSON: what the work started from.
    Base = 1,
    /// JSON: a step as of a stroke script, before it runs.
    Step = 2,
    /// DabMark: a dab of the step at hand is finished.
    Dab = 3,
    /// StepEnd: the step at hand is over.
    StepDone = 4,
    /// StrokeStart and the label of its step of undo: a stroke that no step makes.
    StrokeBegin = 5,
    /// StrokeInput: a finished dab of such a stroke, as it was given.
    StrokeDab = 6,
    /// WholeMeshInput: the tool was used on the whole mesh.
    StrokeWhole = 7,
    /// Nothing: the stroke was put back to its start and goes on.
    StrokePutBack = 8,
    /// StepEnd: the stroke is over.
    StrokeEnd = 9,
    /// JSON: a stamp's file, and what it holds.
    Stamp = 10,
    /// JSON: a scene file that is complete and about to take its place.
    Saved = 11,
    /// JSON: the steps that were done before this journal started, for those who list them.
    Past = 12,
    /// Nothing: the work ended in good order.
    Close = 13
};
inline constexpr uint32_t highestRecordKind = 13;

struct DabMark {
    /// Finished dabs of the step, this one included.
    uint32_t count;
};

struct StepEnd {
    uint32_t dabs;
    /// 1 where the step ended by an error, having done what it did until then. Of a stroke: it was
    /// broken off, see StrokeInputListener::OnStrokeEnded.
    uint32_t failed;
    uint64_t vertices;
    /// Of its step of undo; 0 where there is none.
    uint64_t undoBytes;
};

struct StrokeStart {
    uint64_t seed;
    /// SceneSettings::strokesBegun once the stroke has begun.
    uint64_t strokesBegun;
    uint32_t modifier;
    uint32_t reserved;
};

/// All that StrokeLoop::Dab is given.
struct StrokeInput {
    uint32_t face;
    /// Bit 0: the dab keeps its place; bit 1: it ended by an error.
    uint32_t flags;
    std::array<float, 3> hitPosition;
    std::array<float, 3> hitNormal;
    std::array<float, 3> position;
    std::array<float, 3> heading;
    std::array<float, 3> stampTop;
    float size;
    float pressure;
    float strength;

    static constexpr uint32_t keepsPlace = 1;
    static constexpr uint32_t failed = 2;
};

struct WholeMeshInput {
    float strength;
    uint32_t byFacing;
};

// Written as they lie in memory, so there may be no gaps in them.
static_assert(sizeof(DabMark) == 4 && sizeof(StepEnd) == 24 && sizeof(StrokeStart) == 24 &&
              sizeof(StrokeInput) == 80 && sizeof(WholeMeshInput) == 8);
static_assert(std::is_trivially_copyable_v<StrokeInput>);

}  // namespace trovik
