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
/// always stays. A new step drops what was undone.
class TROVIK_API UndoHistory {
public:
    explicit UndoHistory(uint64_t budgetBytes = uint64_t{1} << 30);
    void Push(std::unique_ptr<UndoStep> step);
    bool CanUndo() const;
    bool CanRedo() const;
    /// \return false when there is nothing to undo.
    bool Undo(LevelGeometry& geometry);
    bool Redo(LevelGeometry& geometry);
    void Clear();
    void SetBudget(uint64_t bytes);
    uint64_t Bytes() const { return bytes; }
    std::size_t StepCount() const { return steps.size(); }
    /// Number of steps that are done now; steps behind it can be redone.
    std::size_t Position() const { return done; }
    const std::string& Label(std::size_t index) const { return steps[index]->label; }

    /// Label for the steps of strokes that finish from now on.
    void SetNextLabel(const std::string& label) { nextLabel = label; }
    const std::string& NextLabel() const { return nextLabel; }

private:
    void DropOldest();
    std::deque<std::unique_ptr<UndoStep>> steps;
    std::size_t done = 0;
    uint64_t bytes = 0;
    uint64_t budget;
    std::string nextLabel = "Stroke";
};

}  // namespace trovik
