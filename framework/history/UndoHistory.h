// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/history/StepArray.h"
#include "host/Mesh.h"

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace trovik {

class LevelGeometry;

/// One thing that can be taken back. Apply swaps the step's content with the mesh's, so that the
/// same call serves undo and redo.
class TROVIK_API UndoStep {
public:
    virtual ~UndoStep();
    virtual void Apply(LevelGeometry& geometry) = 0;
    /// All that the step holds, arrays included.
    virtual uint64_t Bytes() const = 0;
    /// The step's large arrays, always in the same order. A history may keep their content
    /// elsewhere in compressed form and leave them empty meanwhile; it brings it back before Apply
    /// and for UndoHistory::Step. Not called while another thread compresses. A step without is
    /// kept as it is.
    virtual std::vector<StepArray> Arrays() { return {}; }

    std::string label;
    /// Taken back and brought again together with the step before it.
    bool joinPrevious = false;
};

/// How a history keeps its steps beyond the newest.
struct UndoKeeping {
    /// Steps whose arrays hold fewer bytes stay as they are.
    uint64_t leastPackedBytes = 4096;
    /// Steps so far from the position, counted in steps, are packed tightly.
    std::size_t tightenBeyond = 16;
};

class StepKeeper;
class StepRecord;

/// Steps of one geometry within a budget of bytes; the oldest are dropped first, but the newest
/// always stays. A new step drops what was undone. Steps that are joined form a group, which is
/// undone, redone and dropped as a whole.
///
/// A finished step is compressed by a thread of the history's own, quickly at first, and tightly
/// when enough newer ones lie on it. What is dropped does not depend on how far that thread has
/// come: where the budget is passed, it is waited for first. Undo and redo wait only for the step
/// at hand; a long way back through the file waits now and then for what goes into it instead.
///
/// Memory: within the budget, but for the newest step if that alone is larger. While a step is
/// taken or applied it counts beside the budget, and so does one that changes from one form to
/// another.
///
/// For one thread. Undo and redo are refused during a stroke.
class TROVIK_API UndoHistory {
public:
    explicit UndoHistory(uint64_t budgetBytes = uint64_t{1} << 30);
    ~UndoHistory();
    UndoHistory(const UndoHistory&) = delete;
    UndoHistory& operator=(const UndoHistory&) = delete;

    /// Takes a step that is already done. A step that asks to be joined stands for itself when no
    /// done step precedes it.
    void Push(std::unique_ptr<UndoStep> step);
    /// Takes the step of one mesh of a stroke. It is joined to the newest step exactly when that
    /// came from the same stroke and nothing happened to the history in between, whatever
    /// `joinPrevious` of the step says.
    /// \param strokeNumber  tells strokes apart; not 0.
    void PushOfStroke(std::unique_ptr<UndoStep> step, uint64_t strokeNumber);
    /// The next step to be pushed joins the newest one, whatever it asks for; false: it does not.
    void JoinNext(bool on) { joinNext = on; }
    /// Called before undo and redo with what is asked for, as in "undo"; refuses by an exception.
    void SetGuard(std::function<void(const std::string& action)> newGuard) {
        guard = std::move(newGuard);
    }
    bool CanUndo() const;
    bool CanRedo() const;
    /// \return false when there is nothing to undo. When a step throws, those of its group that
    /// were taken back before stay so, and the position is that of the mesh.
    /// \throw HostError when the step lies in the file and cannot be read again whole, and while a
    /// stroke on the geometry is open (SetGuard).
    bool Undo(LevelGeometry& geometry);
    bool Redo(LevelGeometry& geometry);
    void Clear();
    void SetBudget(uint64_t bytes);
    uint64_t Budget() const { return budget; }
    void SetKeeping(const UndoKeeping& newKeeping) { keeping = newKeeping; }

    /// From now on, steps that do not fit the budget go into a temporary file in this folder
    /// instead of being dropped, those farthest from the position first. The file takes at most
    /// eight times the budget; beyond that the oldest are dropped. It has no name in the folder and
    /// is gone when the program ends. Empty: no more steps go there.
    ///
    /// When the file cannot be written (a full disk), the step stays in memory, no more go there,
    /// and TakeProblem tells why. \throw HostError when no file can be made in the folder.
    void SetSpillFolder(const std::string& folder);
    /// What went wrong with the file since the last call, in one line; empty for nothing.
    std::string TakeProblem();
    /// Bytes of steps that lie in the file.
    uint64_t SpilledBytes() const;
    /// The file, as this process can open it; empty without one.
    std::string SpillPath() const;

    /// Bytes of all steps in memory, compressed, being compressed, and waiting for it.
    uint64_t Bytes() const;
    /// The most that these ever were.
    uint64_t PeakBytes() const;
    /// Waits until everything is compressed that is to be.
    void Settle() const;

    std::size_t StepCount() const { return steps.size(); }
    /// Number of steps that are done now; steps behind it can be redone.
    std::size_t Position() const { return done; }
    const std::string& Label(std::size_t index) const { return Shell(index).label; }
    /// Bytes of one step as it is kept now, in memory or in the file.
    uint64_t StepBytes(std::size_t index) const;
    /// The step with its content, which is there until the history is changed next.
    const UndoStep& Step(std::size_t index) const;
    /// The step; its arrays may be empty because they are compressed. For its type and its small
    /// members.
    const UndoStep& Shell(std::size_t index) const;

    /// Label for the steps of strokes that finish from now on.
    void SetNextLabel(const std::string& label) { nextLabel = label; }
    const std::string& NextLabel() const { return nextLabel; }

private:
    struct Entry {
        std::shared_ptr<StepRecord> record;
        /// Asked to be packed tightly since it was last open.
        bool aged = false;
    };
    void ApplyStep(std::size_t index, LevelGeometry& geometry);
    void DropLast();
    void DropFirst();
    /// Brings the history into the budget by the file and by dropping.
    void Fit();
    void DropOldest(uint64_t most);
    /// Drops the group that is the first to go. \return false when only one is left.
    bool DropGroup();
    void SpillFarthest();
    uint64_t NewestGroupBytes() const;
    /// Has everything compressed that was left open, and tightened what has become old.
    void PackOpened();

    std::function<void(const std::string&)> guard;
    std::deque<Entry> steps;
    /// Ends before the steps, so that none is at work in its thread when they go.
    std::unique_ptr<StepKeeper> keeper;
    std::size_t done = 0;
    uint64_t budget;
    UndoKeeping keeping;
    /// Steps whose content was asked for since the last change.
    mutable std::vector<std::size_t> opened;
    /// Stroke of the newest step; 0 when it is of no stroke or the position has moved since.
    uint64_t lastStroke = 0;
    bool joinNext = false;
    std::string nextLabel = "Stroke";
};

}  // namespace trovik
