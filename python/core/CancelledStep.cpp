// SPDX-License-Identifier: Apache-2.0
#include "python/core/CancelledStep.h"

#include <algorithm>

namespace trovik::python {

AppliedSteps::AppliedSteps(const UndoHistory& history) {
    for (std::size_t i = 0; i < history.Position(); ++i) steps.push_back(&history.Shell(i));
}

std::size_t AppliedSteps::PushedSince(const UndoHistory& history) const {
    const AppliedSteps now(history);
    if (now.steps.empty()) return 0;
    // Steps are dropped only from the front, so the remaining ones are consecutive in `steps`.
    auto old = std::find(steps.begin(), steps.end(), now.steps.front());
    std::size_t same = 0;
    while (same < now.steps.size() && old != steps.end() && *old == now.steps[same]) {
        ++same;
        ++old;
    }
    return now.steps.size() - same;
}

void UndoSince(Sculpture& sculpture, const AppliedSteps& before) {
    const PythonJob::Muting muting(sculpture.job);
    const std::size_t pushed = before.PushedSince(sculpture.Geometry().History());
    const std::size_t target = sculpture.Document().HistoryPosition() - pushed;
    while (sculpture.Document().HistoryPosition() > target)
        sculpture.runner->Runner().Do(nlohmann::json{{"undo", 1}});
}

}  // namespace trovik::python
