// SPDX-License-Identifier: Apache-2.0
#include "framework/history/UndoHistory.h"

#include "framework/history/StepKeeper.h"

#include <utility>

namespace trovik {

namespace {

/// Maximum size of the file as a multiple of the budget.
constexpr uint64_t maxFileRatio = 8;

}  // namespace

UndoStep::~UndoStep() = default;

UndoHistory::UndoHistory(uint64_t budgetBytes)
    : keeper(std::make_unique<StepKeeper>()), budget(budgetBytes) {}

UndoHistory::~UndoHistory() = default;

void UndoHistory::Push(std::unique_ptr<UndoStep> step) {
    DropUndone();
    if (std::exchange(joinNext, false)) step->joinPrevious = true;
    if (done == 0) step->joinPrevious = false;
    steps.push_back({keeper->Add(std::move(step)), false});
    ++done;
    lastStroke = 0;
    Fit();
    opened.push_back(steps.size() - 1);
    PackOpened();
}

void UndoHistory::PushOfStroke(std::unique_ptr<UndoStep> step, uint64_t strokeNumber) {
    step->joinPrevious = strokeNumber == lastStroke;
    Push(std::move(step));
    lastStroke = strokeNumber;
}

bool UndoHistory::CanUndo() const { return done > 0; }

bool UndoHistory::CanRedo() const { return done < steps.size(); }

void UndoHistory::ApplyStep(std::size_t index, LevelGeometry& geometry) {
    const StepKeeper::Handle record = steps[index].record;
    steps[index].aged = false;
    opened.push_back(index);
    keeper->Open(record).Apply(geometry);
    keeper->Remeasure(record);
    if (keeper->Bytes() <= budget) return;
    // When many steps are undone, the thread may not repack them as fast as they are unpacked, and
    // they may stay less tightly packed than before.
    keeper->PackNow(record, keeping.minPackedBytes);
    if (!keeper->CanSpill() || keeper->Bytes() <= budget) return;
    SpillFarthest();
    keeper->Settle();
}

bool UndoHistory::Undo(LevelGeometry& geometry) {
    if (guard) guard("undo");
    if (!CanUndo()) return false;
    lastStroke = 0;
    do {
        ApplyStep(done - 1, geometry);
        --done;
    } while (done > 0 && Shell(done).joinPrevious);
    PackOpened();
    return true;
}

bool UndoHistory::Redo(LevelGeometry& geometry) {
    if (guard) guard("redo");
    if (!CanRedo()) return false;
    lastStroke = 0;
    do {
        ApplyStep(done, geometry);
        ++done;
    } while (done < steps.size() && Shell(done).joinPrevious);
    PackOpened();
    return true;
}

void UndoHistory::Clear() {
    while (!steps.empty()) DropLast();
    opened.clear();
    done = 0;
    lastStroke = 0;
}

void UndoHistory::SetBudget(uint64_t newBudget) {
    budget = newBudget;
    Fit();
}

void UndoHistory::SetSpillFolder(const std::string& folder) {
    keeper->SetSpillFolder(folder);
    Fit();
}

std::string UndoHistory::TakeProblem() { return keeper->TakeProblem(); }
uint64_t UndoHistory::SpilledBytes() const { return keeper->SpilledBytes(); }
std::string UndoHistory::SpillPath() const { return keeper->SpillPath(); }
uint64_t UndoHistory::Bytes() const { return keeper->Bytes(); }
uint64_t UndoHistory::PeakBytes() const { return keeper->PeakBytes(); }
void UndoHistory::Settle() const { keeper->Settle(); }

uint64_t UndoHistory::StepBytes(std::size_t index) const {
    return keeper->BytesOf(steps[index].record);
}

const UndoStep& UndoHistory::Step(std::size_t index) const {
    opened.push_back(index);
    return keeper->Open(steps[index].record);
}

const UndoStep& UndoHistory::Shell(std::size_t index) const {
    return StepKeeper::Shell(steps[index].record);
}

void UndoHistory::DropLast() {
    keeper->Drop(steps.back().record);
    steps.pop_back();
}

void UndoHistory::DropUndone() {
    while (steps.size() > done) DropLast();
    std::erase_if(opened, [this](std::size_t index) { return index >= done; });
}

void UndoHistory::DropFirst() {
    keeper->Drop(steps.front().record);
    steps.pop_front();
    for (std::size_t& index : opened) --index;
    std::erase(opened, ~std::size_t{0});
    --done;
}

bool UndoHistory::DropGroup() {
    std::size_t groupEnd = 1;
    while (groupEnd < steps.size() && Shell(groupEnd).joinPrevious) ++groupEnd;
    if (groupEnd >= steps.size()) return false;
    if (done > 0) {
        for (std::size_t i = 0; i < groupEnd; ++i) DropFirst();
    } else {
        // All steps are undone. The first step is the next one to be redone and must remain, so the
        // farthest steps are dropped.
        while (Shell(steps.size() - 1).joinPrevious) DropLast();
        DropLast();
    }
    return true;
}

void UndoHistory::DropOldest(uint64_t most) {
    while (keeper->Bytes() > most && DropGroup()) {
    }
}

uint64_t UndoHistory::NewestGroupBytes() const {
    uint64_t bytes = 0;
    for (std::size_t i = steps.size(); i-- > 0;) {
        bytes += keeper->BytesOf(steps[i].record);
        if (!Shell(i).joinPrevious) break;
    }
    return bytes;
}

void UndoHistory::Fit() {
    if (steps.empty() || keeper->Bytes() <= budget) return;
    // The selection of steps to drop must not depend on the progress of the keeper's thread.
    keeper->Settle();
    if (keeper->CanSpill()) {
        SpillFarthest();
        keeper->Settle();
    }
    if (!keeper->CanSpill()) {
        DropOldest(budget);
        return;
    }
    // All steps that can be moved to the file are now in it. The newest group may exceed the
    // budget, and dropping steps from the file would not free memory for it.
    DropOldest(budget + NewestGroupBytes());
    while (keeper->SpilledBytes() > maxFileRatio * budget && DropGroup()) {
    }
}

void UndoHistory::SpillFarthest() {
    // Frees slightly more than necessary, so that not every step has to wait for the file.
    const uint64_t most = budget - budget / 8;
    uint64_t bytes = keeper->Bytes();
    std::size_t first = 0;
    std::size_t last = steps.size();
    while (bytes > most && first < last) {
        const std::size_t behind = done > first ? done - first : 0;
        const std::size_t ahead = last > done ? last - done : 0;
        const std::size_t index = behind >= ahead ? first++ : --last;
        const uint64_t packed = keeper->PackedBytes(steps[index].record);
        if (packed == 0) continue;
        keeper->Spill(steps[index].record);
        bytes -= packed;
    }
}

void UndoHistory::PackOpened() {
    for (const std::size_t index : opened) {
        if (index >= steps.size()) continue;
        steps[index].aged = false;
        keeper->Pack(steps[index].record, keeping.minPackedBytes);
    }
    opened.clear();
    // All steps farther away have already been marked as aged, because the position changes by one
    // step at a time.
    const std::size_t distance = keeping.tightenBeyond;
    for (std::size_t i = done > distance ? done - distance : 0; i-- > 0 && !steps[i].aged;) {
        steps[i].aged = true;
        keeper->Tighten(steps[i].record);
    }
    for (std::size_t i = done + distance; i < steps.size() && !steps[i].aged; ++i) {
        steps[i].aged = true;
        keeper->Tighten(steps[i].record);
    }
}

}  // namespace trovik
