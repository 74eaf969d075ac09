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

/// One operation that can be undone. Apply exchanges the content of the step with that of the mesh,
/// so the same call implements both undo and redo.
class TROVIK_API UndoStep {
public:
    virtual ~UndoStep();
    virtual void Apply(LevelGeometry& geometry) = 0;
    /// Memory of the step in bytes, including its arrays.
    virtual uint64_t Bytes() const = 0;
    /// The large arrays of the step, always in the same order. A history may store their content
    /// elsewhere in compressed form and leave them empty in the meantime. The history restores the
    /// content before it calls Apply, and when UndoHistory::Step is called. Not called while
    /// another thread compresses the step. A step without such arrays is stored unchanged.
    virtual std::vector<StepArray> Arrays() { return {}; }

    std::string label;
    /// Whether the step is undone and redone together with the previous one.
    bool joinPrevious = false;
};

/// Settings for the storage of all steps except the newest.
struct UndoKeeping {
    /// A step is not packed if its arrays have fewer bytes than this.
    uint64_t minPackedBytes = 4096;
    /// Steps that are more than this many steps away from the history's position are packed
    /// tightly.
    std::size_t tightenBeyond = 16;
};

class StepKeeper;
class StepRecord;

/// The undo steps of one geometry, limited by a byte budget. The oldest steps are dropped first,
/// but the newest always remains. Pushing a step drops the undone steps. Joined steps form a group,
/// which is undone, redone and dropped as a whole.
///
/// A background thread compresses finished steps: quickly at first, and tightly once enough newer
/// steps follow. The selection of steps to drop does not depend on the progress of that thread: if
/// the budget is exceeded, the history first waits for the thread. Undo and redo wait only for the
/// step that they apply; while many steps are read back from the file, they occasionally wait for
/// pending writes to the file.
///
/// Memory: at most the budget, unless the newest step alone is larger. A step that is being
/// unpacked, applied or converted to another form is not counted against the budget.
///
/// Not thread-safe. Undo and redo are refused during a stroke.
class TROVIK_API UndoHistory {
public:
    explicit UndoHistory(uint64_t budgetBytes = uint64_t{1} << 30);
    ~UndoHistory();
    UndoHistory(const UndoHistory&) = delete;
    UndoHistory& operator=(const UndoHistory&) = delete;

    /// Adds a step that has already been applied. A step with joinPrevious is not joined if no
    /// applied step precedes it.
    void Push(std::unique_ptr<UndoStep> step);
    /// Adds the step that a stroke creates for one mesh. The step is joined to the newest one if
    /// both belong to the same stroke and the history has not changed in between, regardless of the
    /// step's `joinPrevious`.
    /// \param strokeNumber  identifies the stroke; not 0.
    void PushOfStroke(std::unique_ptr<UndoStep> step, uint64_t strokeNumber);
    /// If `on` is true, the next step to be pushed joins the newest one, regardless of the step's
    /// joinPrevious. A call with false cancels this.
    void JoinNext(bool on) { joinNext = on; }
    /// Sets a function that is called before undo and redo with the name of the action, such as
    /// "undo". The function refuses the action by throwing.
    void SetGuard(std::function<void(const std::string& action)> newGuard) {
        guard = std::move(newGuard);
    }
    bool CanUndo() const;
    bool CanRedo() const;
    /// \return false if there is nothing to undo.
    /// If a step throws, the steps of its group that were already undone stay undone, and the
    /// position matches the mesh.
    /// \throw HostError if the step is in the file and cannot be read back intact, or if a stroke
    /// is open on the geometry (SetGuard).
    bool Undo(LevelGeometry& geometry);
    bool Redo(LevelGeometry& geometry);
    void Clear();
    /// Drops the steps that could be redone.
    void DropUndone();
    void SetBudget(uint64_t bytes);
    uint64_t Budget() const { return budget; }
    void SetKeeping(const UndoKeeping& newKeeping) { keeping = newKeeping; }

    /// Sets the folder of a temporary file. From then on, steps that exceed the budget are moved
    /// into that file instead of being dropped, starting with those farthest from the position. The
    /// file grows to at most eight times the budget; beyond that, the oldest steps are dropped. The
    /// file is not listed in the folder and disappears when the program ends. An empty name stops
    /// further writing.
    ///
    /// If the file cannot be written (for example because the disk is full), the step stays in
    /// memory, no more steps are written, and TakeProblem returns the reason.
    /// \throw HostError if the file cannot be created in the folder.
    void SetSpillFolder(const std::string& folder);
    /// Returns the file error that occurred since the last call, in one line; empty if there was
    /// none.
    std::string TakeProblem();
    /// Total size of the steps in the file, in bytes.
    uint64_t SpilledBytes() const;
    /// A path through which this process can open the file; empty if there is no file.
    std::string SpillPath() const;

    /// Memory of all steps in bytes: compressed, being compressed, and waiting for compression.
    uint64_t Bytes() const;
    /// The maximum of Bytes() so far.
    uint64_t PeakBytes() const;
    /// Waits until all pending compression is done.
    void Settle() const;

    std::size_t StepCount() const { return steps.size(); }
    /// Number of applied steps; the steps after them can be redone.
    std::size_t Position() const { return done; }
    const std::string& Label(std::size_t index) const { return Shell(index).label; }
    /// Current size of one step in bytes, in memory or in the file.
    uint64_t StepBytes(std::size_t index) const;
    /// Returns the step with its content. The reference is valid until the history changes.
    const UndoStep& Step(std::size_t index) const;
    /// Returns the step without unpacking it, so its arrays may be empty. Use it to read the type
    /// and the small members.
    const UndoStep& Shell(std::size_t index) const;

    /// Sets the label for the steps of strokes that finish from now on.
    void SetNextLabel(const std::string& label) { nextLabel = label; }
    const std::string& NextLabel() const { return nextLabel; }

private:
    struct Entry {
        std::shared_ptr<StepRecord> record;
        /// Whether tight packing was requested since the step was last open.
        bool aged = false;
    };
    void ApplyStep(std::size_t index, LevelGeometry& geometry);
    void DropLast();
    void DropFirst();
    /// Reduces the history to the budget by moving steps into the file and by dropping steps.
    void Fit();
    void DropOldest(uint64_t most);
    /// Drops the oldest group, or, if all steps are undone, the group that would be redone last.
    /// \return false if only one group is left.
    bool DropGroup();
    void SpillFarthest();
    uint64_t NewestGroupBytes() const;
    /// Requests compression of all steps that are still open, and tight compression of those that
    /// have become old.
    void PackOpened();

    std::function<void(const std::string&)> guard;
    std::deque<Entry> steps;
    /// Must be destroyed before the steps, so that its thread does not access them.
    std::unique_ptr<StepKeeper> keeper;
    std::size_t done = 0;
    uint64_t budget;
    UndoKeeping keeping;
    /// Steps whose content has been requested since the last change.
    mutable std::vector<std::size_t> opened;
    /// Stroke number of the newest step; 0 if it does not belong to a stroke or if the position has
    /// changed since.
    uint64_t lastStroke = 0;
    bool joinNext = false;
    std::string nextLabel = "Stroke";
};

}  // namespace trovik
