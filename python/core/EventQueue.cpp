// SPDX-License-Identifier: Apache-2.0
#include "python/core/EventQueue.h"

#include <algorithm>
#include <utility>

namespace trovik::python {

EventQueue::Events EventQueue::Take() { return std::exchange(events, Events()); }

void EventQueue::SurfaceChanged(const SurfaceChange& change) {
    if (!collects) return;
    Surface& surface = events.surface[{change.level, change.what, change.patchLevel}];
    surface.all = surface.all || change.all;
    if (surface.all)
        surface.patches.clear();
    else
        surface.patches.insert(change.patches.begin(), change.patches.end());
}

void EventQueue::ModifiedChanged(bool modified) {
    events.modified = modified;
    Add("modified");
}

void EventQueue::Problem(const std::string& message) {
    Add("problem");
    if (collects) events.problems.push_back(message);
}

void EventQueue::Add(const char* name) {
    if (!collects) return;
    if (std::find(events.names.begin(), events.names.end(), name) == events.names.end())
        events.names.emplace_back(name);
}

}  // namespace trovik::python
