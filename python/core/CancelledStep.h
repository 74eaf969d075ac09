// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/errors/Cancelled.h"
#include "framework/history/UndoHistory.h"
#include "python/core/Session.h"

#include <cstddef>
#include <vector>

namespace trovik::python {

/// The applied undo steps of a history at one moment. Steps are identified by their addresses: a
/// new step is allocated before a push drops old ones.
class AppliedSteps {
public:
    explicit AppliedSteps(const UndoHistory& history);
    /// The number of applied steps that were pushed since then. Correct even if pushing them has
    /// dropped old steps.
    std::size_t PushedSince(const UndoHistory& history) const;

private:
    std::vector<const UndoStep*> steps;
};

/// Undoes the applied steps that were pushed since `before`. The job does not report meanwhile.
void UndoSince(Sculpture& sculpture, const AppliedSteps& before);

/// Runs a function. If it is cancelled, undoes what it has pushed, and rethrows.
template <typename Work>
void UndoIfCancelled(Sculpture& sculpture, const Work& work) {
    const AppliedSteps before(sculpture.Geometry().History());
    try {
        work();
    } catch (const Cancelled&) {
        UndoSince(sculpture, before);
        throw;
    }
}

}  // namespace trovik::python
