// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/StrokeResources.h"

#include "framework/mesh/LevelMesh.h"
#include "host/BrushOperation.h"
#include "host/Error.h"

#include <algorithm>
#include <memory>

namespace trovik {

namespace {

/// Runs an action of a destructor, which has no caller to report errors to.
template <class Action>
void DropErrorsOf(Action action) {
    try {
        action();
    } catch (Error* error) {
        Error::Dispose(error);
    } catch (...) {
        // Of unknown type, and nothing to free.
    }
}

}  // namespace

StrokeResources::~StrokeResources() {
    bool joinPrevious = false;
    while (!changes.empty()) {
        // Its destructor takes it from the list.
        const std::unique_ptr<EndableChange> change(changes.front());
        if (change->IsFinished()) continue;
        DropErrorsOf([&] { change->Finish(true, joinPrevious); });
        joinPrevious = true;
    }
    while (!lockedMeshes.empty()) {
        LevelMesh& mesh = *lockedMeshes.back();
        mesh.Unlock();
        mesh.ContentChanged();
    }
}

void StrokeResources::EndStroke() {
    DropErrorsOf([this] { brush.EndStroke(); });
}

void StrokeResources::RemoveLock(const LevelMesh& mesh) { std::erase(lockedMeshes, &mesh); }
void StrokeResources::RemoveChange(const EndableChange& change) { std::erase(changes, &change); }

}  // namespace trovik
