// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace trovik {

class UndoHistory;
class UndoStep;

/// One undo step, as shown in a history panel.
struct HistoryEntry {
    std::string label;
    /// The tool that was active when the step was made.
    std::string tool;
    std::chrono::system_clock::time_point time;
    /// Current size, which depends on whether the step is uncompressed, compressed or on disk.
    uint64_t bytes = 0;
    /// Whether the step is undone and redone together with the previous one.
    bool joinsPrevious = false;
};

/// Records the tool and time of each step of an UndoHistory, and numbers the states of the history.
/// Update must be called after every change to the history; it costs O(steps), a few nanoseconds
/// per step.
class TROVIK_API HistoryEntries {
public:
    /// Assigns this tool and the current time to the steps that were added since the last call.
    /// \return whether the steps or the position have changed since the last call.
    bool Update(const UndoHistory& history, const std::string& tool);
    /// Must be called when the sculpture has been replaced without an undo step. Assigns a new
    /// number to the state and removes all entries.
    void Restart();
    /// One entry per step, oldest first.
    std::vector<HistoryEntry> List(const UndoHistory& history) const;
    /// The number of the current state of the sculpture: equal numbers mean the same state, even if
    /// steps were undone and redone in between.
    uint64_t StateNumber() const;

private:
    struct Known {
        const UndoStep* step;
        uint64_t number;
        std::string tool;
        std::chrono::system_clock::time_point time;
    };
    std::vector<Known> known;
    std::size_t position = 0;
    /// Number of the state before the oldest step.
    uint64_t oldestState = 0;
    uint64_t lastNumber = 0;
};

}  // namespace trovik
