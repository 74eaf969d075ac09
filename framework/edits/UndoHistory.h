// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Mesh.h"

#include <deque>
#include <memory>
#include <string>

namespace trovik {

class LevelGeometry;

/// One thing that can be taken back. Apply swaps the step's content with the mesh's, so that the
/// same call serves undo and redo.
class TROVIK_API UndoStep {
public:
    virtual ~UndoStep();
    virtual void Apply(LevelGeometry& geometry) = 0;
    virtual uint64_t Bytes() const = 0;

    std::string label;
    /// Taken back and brought again together with the step before it.
    bool joinPrevious = false;
};

/// Steps of one geometry within a budget of bytes; the oldest are dropped first, but the newest
/// always stays. A new step drops what was undone. Steps that are joined form a group, which is
/// undone, redone and dropped as a whole.
class TROVIK_API UndoHistory {
public:
    explicit UndoHistory(uint64_t budgetBytes = uint64_t{1} << 30);
    /// Takes a step that is already done. A step that asks to be joined stands for itself when no
    /// done step precedes it.
    void Push(std::unique_ptr<UndoStep> step);
    /// Takes the step of one mesh of a stroke. It is joined to the newest step exactly when that
    /// came from the same stroke and nothing happened to the history in between, whatever
    /// `joinPrevious` of the step says.
    /// \param strokeNumber  tells strokes apart; not 0.
    void PushOfStroke(std::unique_ptr<UndoStep> step, uint64_t strokeNumber);
    bool CanUndo() const;
    bool CanRedo() const;
    /// \return false when there is nothing to undo. When a step throws, those of its group that
    /// were taken back before stay so, and the position is that of the mesh.
    bool Undo(LevelGeometry& geometry);
    bool Redo(LevelGeometry& geometry);
    void Clear();
    void SetBudget(uint64_t bytes);
    uint64_t Bytes() const { return bytes; }
    std::size_t StepCount() const { return steps.size(); }
    /// Number of steps that are done now; steps behind it can be redone.
    std::size_t Position() const { return done; }
    const std::string& Label(std::size_t index) const { return steps[index]->label; }
    const UndoStep& Step(std::size_t index) const { return *steps[index]; }

    /// Label for the steps of strokes that finish from now on.
    void SetNextLabel(const std::string& label) { nextLabel = label; }
    const std::string& NextLabel() const { return nextLabel; }

private:
    void ApplyStep(std::size_t index, LevelGeometry& geometry);
    void DropLast();
    void DropOldest();
    std::deque<std::unique_ptr<UndoStep>> steps;
    std::size_t done = 0;
    uint64_t bytes = 0;
    uint64_t budget;
    /// Stroke of the newest step; 0 when it is of no stroke or the position has moved since.
    uint64_t lastStroke = 0;
    std::string nextLabel = "Stroke";
};

}  // namespace trovik
