// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/StrokeResources.h"

#include "framework/mesh/LevelMesh.h"
#include "host/BrushOperation.h"
#include "host/Error.h"

#include <algorithm>
#include <memory>

namespace trovik {

namespace {

/// Runs an action and ignores its errors, because a destructor cannot report them to a caller.
template <class Action>
void IgnoreErrorsOf(Action action) {
    try {
        action();
    } catch (Error* error) {
        Error::Dispose(error);
    } catch (...) {
        // Other exceptions need no explicit disposal.
    }
}

}  // namespace

StrokeResources::~StrokeResources() {
    bool joinPrevious = false;
    while (!changes.empty()) {
        // The change's destructor removes it from the list.
        const std::unique_ptr<EndableChange> change(changes.front());
        if (change->IsFinished()) continue;
        IgnoreErrorsOf([&] { change->Finish(true, joinPrevious); });
        joinPrevious = true;
    }
    while (!lockedMeshes.empty()) {
        LevelMesh& mesh = *lockedMeshes.back();
        mesh.Unlock();
        mesh.ContentChanged();
    }
}

void StrokeResources::EndStroke() {
    IgnoreErrorsOf([this] { brush.EndStroke(); });
}

void StrokeResources::RemoveLock(const LevelMesh& mesh) { std::erase(lockedMeshes, &mesh); }
void StrokeResources::RemoveChange(const EndableChange& change) { std::erase(changes, &change); }

}  // namespace trovik
