// SPDX-License-Identifier: Apache-2.0
#include "framework/history/TopologyStep.h"

namespace trovik {

TopologyStep::~TopologyStep() = default;

bool ChangesTopology(const UndoHistory& history, std::size_t count, bool redo) {
    const auto changes = [&](std::size_t index) {
        return dynamic_cast<const TopologyStep*>(&history.Shell(index)) != nullptr;
    };
    std::size_t position = history.Position();
    if (redo) {
        for (; count > 0 && position < history.StepCount(); --count) {
            // A group ends before the next step that does not join its predecessor.
            do {
                if (changes(position++)) return true;
            } while (position < history.StepCount() && history.Shell(position).joinPrevious);
        }
        return false;
    }
    for (; count > 0 && position > 0; --count) {
        do {
            if (changes(--position)) return true;
        } while (position > 0 && history.Shell(position).joinPrevious);
    }
    return false;
}

}  // namespace trovik
