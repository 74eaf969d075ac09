// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/errors/Cancelled.h"
#include "framework/history/UndoHistory.h"
#include "python/core/Session.h"

#include <cstddef>
#include <vector>

namespace trovik::python {

/// The applied undo steps of a history at one moment. Steps are identified by their addresses,
/// which is safe because a new step is allocated before a push drops old ones.
class AppliedSteps {
public:
    explicit AppliedSteps(const UndoHistory& history);
    /// Returns the number of applied steps that were pushed since this object was constructed. The
    /// number is correct even if pushing them dropped old steps.
    std::size_t PushedSince(const UndoHistory& history) const;

private:
    std::vector<const UndoStep*> steps;
};

/// Undoes the applied steps that were pushed since `before`. The job does not report progress
/// during this time.
void UndoSince(Sculpture& sculpture, const AppliedSteps& before);

/// Runs a function. If it throws Cancelled, undoes the steps that it has pushed, and rethrows.
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
