// SPDX-License-Identifier: Apache-2.0
#include "framework/document/HistoryEntries.h"

#include "framework/history/UndoHistory.h"

#include <algorithm>
#include <limits>

namespace trovik {

// A new step is allocated before the steps that it replaces are freed, and Update runs after every
// change, so a step's address identifies it from one call to the next.
bool HistoryEntries::Update(const UndoHistory& history, const std::string& tool) {
    const std::size_t count = history.StepCount();
    // The oldest steps may have been dropped.
    std::size_t dropped = 0;
    if (count > 0) {
        const UndoStep* oldest = &history.Shell(0);
        while (dropped < known.size() && known[dropped].step != oldest) ++dropped;
    } else {
        dropped = known.size();
    }
    bool changed = position != history.Position() || count != known.size();
    if (dropped > 0 && dropped <= position) oldestState = known[dropped - 1].number;
    // Steps were undone and replaced; the state before the first replaced step remains valid.
    if (dropped > position) oldestState = StateNumber();
    known.erase(known.begin(), known.begin() + static_cast<std::ptrdiff_t>(dropped));
    std::size_t same = 0;
    while (same < std::min(count, known.size()) && known[same].step == &history.Shell(same)) ++same;
    if (same < known.size() || same < count) changed = true;
    known.resize(same);
    for (std::size_t i = same; i < count; ++i)
        known.push_back({&history.Shell(i), ++lastNumber, tool, std::chrono::system_clock::now()});
    position = history.Position();
    return changed || dropped > 0;
}

void HistoryEntries::Restart() {
    known.clear();
    // A history never has this position, so the next Update reports a change.
    position = std::numeric_limits<std::size_t>::max();
    oldestState = ++lastNumber;
}

std::vector<HistoryEntry> HistoryEntries::List(const UndoHistory& history) const {
    std::vector<HistoryEntry> entries;
    entries.reserve(known.size());
    // Code that changes the history directly may have dropped steps since the last update.
    for (std::size_t i = 0; i < std::min(known.size(), history.StepCount()); ++i) {
        const UndoStep& step = history.Shell(i);
        entries.push_back(
            {step.label, known[i].tool, known[i].time, history.StepBytes(i), step.joinPrevious});
    }
    return entries;
}

uint64_t HistoryEntries::StateNumber() const {
    return position == 0 ? oldestState : known[position - 1].number;
}

}  // namespace trovik
