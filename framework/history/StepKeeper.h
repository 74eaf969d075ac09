// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/history/PackedArrays.h"
#include "framework/history/SpillFile.h"
#include "framework/history/UndoHistory.h"

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace trovik {

class StepRecord;

/// Holds the steps of one history: open, as they were made, or with their arrays packed in memory
/// or in a file. Packing, repacking and writing are done by one thread of the keeper's own, in the
/// order in which they are asked for; it begins with the first thing asked. If the system refuses
/// that thread, they are done on the caller's thread, at once. All else is for one thread, the
/// caller's.
///
/// A step whose arrays are packed still has all else that it holds, so its type, label and small
/// members can be looked at.
class TROVIK_API StepKeeper {
public:
    using Handle = std::shared_ptr<StepRecord>;

    StepKeeper();
    /// Waits for what is being done, and gives up the rest.
    ~StepKeeper();
    StepKeeper(const StepKeeper&) = delete;
    StepKeeper& operator=(const StepKeeper&) = delete;

    Handle Add(std::unique_ptr<UndoStep> step);
    /// Gives up the step, here and now; waits while something is being done to it.
    void Drop(const Handle& record);

    /// Asks for the arrays to be packed; nothing happens to a step that has fewer than
    /// `leastBytes` in arrays.
    void Pack(const Handle& record, uint64_t leastBytes);
    /// The same on this thread, at once and tightly.
    void PackNow(const Handle& record, uint64_t leastBytes);
    /// Asks for a packed step to be packed tightly.
    void Tighten(const Handle& record);
    /// Asks for the packed bytes to be moved into the file.
    void Spill(const Handle& record);

    /// The step with its arrays. Waits while something is being done to this step, never for
    /// another. \throw HostError when its packed bytes cannot be had or are damaged; it stays as it
    /// is then.
    UndoStep& Open(const Handle& record);
    /// The step, perhaps without its arrays, which are then not to be looked at.
    static UndoStep& Shell(const Handle& record);

    /// Waits until all that was asked for is done.
    void Settle();
    /// To be called when an open step's content has changed.
    void Remeasure(const Handle& record);

    /// Bytes in memory of all steps, among them those that wait to be packed.
    uint64_t Bytes() const;
    /// The most that was ever held, packed bytes counting also while they are being made.
    uint64_t PeakBytes() const;
    uint64_t SpilledBytes() const;
    /// Bytes of one step, in memory and in the file.
    uint64_t BytesOf(const Handle& record) const;
    bool IsOpen(const Handle& record) const;
    /// Bytes that Spill would take out of memory; 0 unless the step is packed in memory.
    uint64_t PackedBytes(const Handle& record) const;

    /// Folder of the file for packed bytes; empty: nothing more goes into a file, and what lies in
    /// one stays there. \throw HostError when no file can be made.
    void SetSpillFolder(const std::string& folder);
    /// Whether steps can be moved into a file: a folder was named and nothing went wrong since.
    bool CanSpill() const;
    /// What went wrong with the file, once; then empty.
    std::string TakeProblem();
    std::string SpillPath() const;

private:
    enum class Task { Pack, PackTightly, Tighten, Spill };
    struct Job {
        Handle record;
        Task task;
        /// The record's asking number; another one means that the job was withdrawn.
        uint64_t asked;
    };
    void Ask(const Handle& record, Task task);
    /// Needs the mutex. \return false if the system refuses a thread.
    bool StartWorker();
    void Run(const std::stop_token& stop);
    void Do(const Job& job, std::unique_lock<std::mutex>& lock);
    void DoPack(StepRecord& record, PackMethod method, std::unique_lock<std::mutex>& lock);
    void DoTighten(StepRecord& record, std::unique_lock<std::mutex>& lock);
    void DoSpill(StepRecord& record, std::unique_lock<std::mutex>& lock);
    /// Withdraws what waits for the record and waits for what is being done to it.
    void Claim(const Handle& record, std::unique_lock<std::mutex>& lock);
    void SetBytes(StepRecord& record, uint64_t bytes);
    /// Packed bytes are there beside what they will take the place of.
    void NotePeak(uint64_t packed);

    mutable std::mutex mutex;
    std::condition_variable asked;
    std::condition_variable done;
    std::deque<Job> jobs;
    bool busy = false;
    uint64_t bytes = 0;
    uint64_t peak = 0;
    std::string spillFolder;
    std::string problem;
    std::unique_ptr<SpillFile> file;
    std::jthread worker;
};

}  // namespace trovik
