// SPDX-License-Identifier: Apache-2.0

/// \file
/// Steps of a script that add, delete and choose levels.
#include "framework/errors/Cancelled.h"
#include "framework/errors/HostError.h"
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
    if (session->Geometry().LevelCount() == 1 && !triangleNoteGiven) {
        triangleNoteGiven = true;
        const std::string note = RefinementNote(session->Imported());
        if (!note.empty()) ReportNotes(session->MeshPath(), {note});
    }
    const uint64_t budget = std::min(subdivideBudget, AccountedRoom());
    try {
        // All of them first, so that a step that cannot be done leaves the mesh as it was.
        session->Geometry().CheckForecast(static_cast<uint32_t>(count), budget);
        int done = 0;
        try {
            for (; done < count; ++done)
                session->Subdivide(LevelGeometry::unlimitedBytes, progress.job);
        } catch (const Cancelled&) {
            while (done-- > 0) session->Undo();
            throw;
        }
    } catch (const HostError& error) {
        where.Fail(error.what());
    }
}

void ScriptRunner::RunSubdivide(const FieldReader& count) { Subdivide(count, count.Integer()); }

void ScriptRunner::RunLevel(const FieldReader& level) {
    if (!session->BindLevel(static_cast<uint32_t>(level.Integer()), progress.job)) {
        level.Fail("there is no level " + std::to_string(level.Integer()) + "; the highest is " +
                   std::to_string(session->Geometry().LevelCount() - 1));
    }
}

void ScriptRunner::RunDeleteLevels(const FieldReader& which) {
    const bool lower = which.Text() == "lower";
    if (session->DeleteLevels(lower, progress.job)) return;
    which.Fail("level " + std::to_string(session->Geometry().BoundIndex()) + " is the " +
               (lower ? "lowest" : "highest"));
}

void ScriptRunner::RunUnsubdivide(const FieldReader& count) {
    int done = 0;
    try {
        for (; done < count.Integer(); ++done) session->Unsubdivide(progress.job);
    } catch (const HostError& error) {
        count.Fail(error.what());
    } catch (const Cancelled&) {
        while (done-- > 0) session->Undo();
        throw;
    }
}

void ScriptRunner::RunApplyToBase(const FieldReader& flag) {
    if (session->Geometry().BoundIndex() == 0) flag.Fail("the level at hand is the base");
    session->ApplyToBase(progress.job);
}

}  // namespace trovik
