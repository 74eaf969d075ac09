// SPDX-License-Identifier: Apache-2.0

/// \file Commands that add, delete and select levels, and "reset", which rebuilds them.
#include "framework/memory/MemoryAccount.h"
#include "framework/mesh/BaseLevel.h"
#include "framework/script/Command.h"

#include <algorithm>

namespace trovik {

enum class LevelSide { Higher, Lower };
template <>
struct EnumNames<LevelSide> {
    static constexpr std::pair<const char*, LevelSide> names[] = {{"higher", LevelSide::Higher},
                                                                  {"lower", LevelSide::Lower}};
};

namespace {

/// Whether the user has been informed of the effect of refinement on triangles.
struct TriangleNote {
    bool isGiven = false;
};

/// Returns the number of bytes left under the memory accounting limit.
uint64_t AccountedRoom() {
    const int64_t limit = MemoryAccount::Limit();
    if (limit <= 0) return std::numeric_limits<uint64_t>::max();
    return static_cast<uint64_t>(std::max<int64_t>(limit - MemoryAccount::Total(), 0));
}

/// Reports the effect of refinement on triangles, once. Call this before the first level is added.
void ReportTriangles(CommandContext& context) {
    bool& noteGiven = context.Kept<TriangleNote>().isGiven;
    if (noteGiven) return;
    noteGiven = true;
    const std::string note = RefinementNote(context.document.Imported());
    if (!note.empty()) context.ReportNotes(context.document.MeshPath(), {note});
}

void Subdivide(CommandContext& context, const int& count) {
    if (count <= 0) return;
    Document& document = context.document;
    if (document.Geometry().LevelCount() == 1) ReportTriangles(context);
    const uint64_t budget = std::min(context.subdivideBudget, AccountedRoom());
    AtField("", [&] { document.Subdivide(budget, context.Job(), static_cast<uint32_t>(count)); });
}

void Unsubdivide(CommandContext& context, const int& count) {
    if (count <= 0) return;
    AtField("", [&] { context.document.Unsubdivide(context.Job(), static_cast<uint32_t>(count)); });
}

void DeleteLevels(CommandContext& context, const LevelSide& side) {
    const bool lower = side == LevelSide::Lower;
    if (context.document.DeleteLevels(lower, context.Job())) return;
    throw FieldFault("",
                     "level " + std::to_string(context.document.Geometry().BoundIndex()) +
                         " is the " + (lower ? "lowest" : "highest"));
}

void ApplyToBase(CommandContext& context, const Yes&) {
    if (context.document.Geometry().BoundIndex() == 0)
        throw FieldFault("", "the current level is level 0, the base");
    context.document.ApplyToBase(context.Job());
}

void BindLevel(CommandContext& context, const int& level) {
    if (context.document.BindLevel(static_cast<uint32_t>(level), context.Job())) return;
    throw FieldFault("",
                     "there is no level " + std::to_string(level) + "; the highest is " +
                         std::to_string(context.document.Geometry().LevelCount() - 1));
}

void Reset(CommandContext& context, const Yes&) {
    const uint32_t levels = context.document.Geometry().LevelCount() - 1;
    if (levels > 0) ReportTriangles(context);
    const uint64_t budget = std::min(context.subdivideBudget, AccountedRoom());
    AtField("", [&] { context.document.Reset(levels, budget, context.Job()); });
}

const CommandRegistration<int> subdivide({.name = "subdivide"}, Subdivide);
const CommandRegistration<int> unsubdivide({.name = "unsubdivide"}, Unsubdivide);
const CommandRegistration<LevelSide> deleteLevels({.name = "deleteLevels"}, DeleteLevels);
const CommandRegistration<Yes> applyToBase({.name = "applyToBase"}, ApplyToBase);
const CommandRegistration<int> level({.name = "level"}, BindLevel);
const CommandRegistration<Yes> reset({.name = "reset"}, Reset);

}  // namespace

}  // namespace trovik
