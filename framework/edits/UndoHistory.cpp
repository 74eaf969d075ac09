// SPDX-License-Identifier: Apache-2.0
#include "framework/edits/UndoHistory.h"

#include <utility>

namespace trovik {

UndoStep::~UndoStep() = default;

UndoHistory::UndoHistory(uint64_t budgetBytes) : budget(budgetBytes) {}

void UndoHistory::Push(std::unique_ptr<UndoStep> step) {
    while (steps.size() > done) DropLast();
    if (done == 0) step->joinPrevious = false;
    const uint64_t stepBytes = step->Bytes();
    steps.push_back(std::move(step));
    bytes += stepBytes;
    ++done;
    lastStroke = 0;
    DropOldest();
}

void UndoHistory::PushOfStroke(std::unique_ptr<UndoStep> step, uint64_t strokeNumber) {
    step->joinPrevious = strokeNumber == lastStroke;
    Push(std::move(step));
    lastStroke = strokeNumber;
}

bool UndoHistory::CanUndo() const { return done > 0; }

bool UndoHistory::CanRedo() const { return done < steps.size(); }

void UndoHistory::ApplyStep(std::size_t index, LevelGeometry& geometry) {
    const uint64_t before = steps[index]->Bytes();
    steps[index]->Apply(geometry);
    bytes += steps[index]->Bytes();
    bytes -= before;
}

bool UndoHistory::Undo(LevelGeometry& geometry) {
    if (!CanUndo()) return false;
    lastStroke = 0;
    do {
        ApplyStep(done - 1, geometry);
        --done;
    } while (done > 0 && steps[done]->joinPrevious);
    return true;
}

bool UndoHistory::Redo(LevelGeometry& geometry) {
    if (!CanRedo()) return false;
    lastStroke = 0;
    do {
        ApplyStep(done, geometry);
        ++done;
    } while (done < steps.size() && steps[done]->joinPrevious);
    return true;
}

void UndoHistory::Clear() {
    steps.clear();
    done = 0;
    bytes = 0;
    lastStroke = 0;
}

void UndoHistory::SetBudget(uint64_t newBudget) {
    budget = newBudget;
    DropOldest();
}

void UndoHistory::DropLast() {
    bytes -= steps.back()->Bytes();
    steps.pop_back();
}

void UndoHistory::DropOldest() {
    while (bytes > budget) {
        std::size_t groupEnd = 1;
        while (groupEnd < steps.size() && steps[groupEnd]->joinPrevious) ++groupEnd;
        if (groupEnd >= steps.size()) return;
        if (done > 0) {
            for (std::size_t i = 0; i < groupEnd; ++i) {
                bytes -= steps.front()->Bytes();
                steps.pop_front();
                --done;
            }
        } else {
            // Everything is undone: the first step is the next to be redone and must stay, so what
            // lies farthest ahead goes.
            while (steps.back()->joinPrevious) DropLast();
            DropLast();
        }
    }
}

}  // namespace trovik
