// SPDX-License-Identifier: Apache-2.0

/// \file
/// Steps of a script that add, delete and choose levels.
#include "framework/errors/HostError.h"
#include "framework/errors/WorkStopped.h"
#include "framework/memory/MemoryAccount.h"
#include "framework/mesh/BaseLevel.h"
#include "framework/script/ScriptRunner.h"

#include <algorithm>

namespace trovik {

namespace {

/// What the account of memory still gives.
uint64_t AccountedRoom() {
    const int64_t limit = MemoryAccount::Limit();
    if (limit <= 0) return std::numeric_limits<uint64_t>::max();
    return static_cast<uint64_t>(std::max<int64_t>(limit - MemoryAccount::Total(), 0));
}

}  // namespace

void ScriptRunner::Subdivide(const FieldReader& where, int count) {
    if (count <= 0) return;
    if (document->Geometry().LevelCount() == 1 && !triangleNoteGiven) {
        triangleNoteGiven = true;
        const std::string note = RefinementNote(document->Imported());
        if (!note.empty()) ReportNotes(document->MeshPath(), {note});
    }
    const uint64_t budget = std::min(subdivideBudget, AccountedRoom());
    try {
        // All of them first, so that a step that cannot be done leaves the mesh as it was.
        document->Geometry().CheckForecast(static_cast<uint32_t>(count), budget);
        SubdivideOptions options;
        options.stop = progress.stop;
        for (int i = 0; i < count; ++i) {
            if (document->Subdivide(options)) continue;
            while (i-- > 0) document->Undo();
            throw WorkStopped();
        }
    } catch (const HostError& error) {
        where.Fail(error.what());
    }
}

void ScriptRunner::RunSubdivide(const FieldReader& count) { Subdivide(count, count.Integer()); }

void ScriptRunner::RunLevel(const FieldReader& level) {
    if (!document->BindLevel(static_cast<uint32_t>(level.Integer()))) {
        level.Fail("there is no level " + std::to_string(level.Integer()) + "; the highest is " +
                   std::to_string(document->Geometry().LevelCount() - 1));
    }
}

void ScriptRunner::RunDeleteLevels(const FieldReader& which) {
    const bool lower = which.Text() == "lower";
    if (document->DeleteLevels(lower)) return;
    which.Fail("level " + std::to_string(document->Geometry().BoundIndex()) + " is the " +
               (lower ? "lowest" : "highest"));
}

void ScriptRunner::RunUnsubdivide(const FieldReader& count) {
    for (int i = 0; i < count.Integer(); ++i) {
        try {
            document->Unsubdivide();
        } catch (const HostError& error) {
            count.Fail(error.what());
        }
    }
}

void ScriptRunner::RunApplyToBase(const FieldReader& flag) {
    if (document->Geometry().BoundIndex() == 0) flag.Fail("the level at hand is the base");
    document->ApplyToBase();
}

}  // namespace trovik
