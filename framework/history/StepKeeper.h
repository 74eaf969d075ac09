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

/// Stores the steps of one history. A step is either open, with uncompressed arrays, or packed,
/// with compressed arrays in memory or in a file. The keeper's worker thread packs, repacks and
/// writes in the order of the requests; the first request starts it. If the system cannot start a
/// thread, the work is done immediately on the caller's thread. The keeper itself must be used by
/// one thread only.
///
/// A step whose arrays are packed still has all its other members, so its type, label and small
/// members can be read.
class TROVIK_API StepKeeper {
public:
    using Handle = std::shared_ptr<StepRecord>;

    StepKeeper();
    /// Waits for the running task and discards the other requests.
    ~StepKeeper();
    StepKeeper(const StepKeeper&) = delete;
    StepKeeper& operator=(const StepKeeper&) = delete;

    Handle Add(std::unique_ptr<UndoStep> step);
    /// Deletes the step before returning; if the step is being processed, waits until that is
    /// finished.
    void Drop(const Handle& record);

    /// Requests that the arrays be packed. Has no effect if the step's arrays have fewer than
    /// `minBytes` bytes.
    void Pack(const Handle& record, uint64_t minBytes);
    /// Packs the arrays tightly and immediately, on the calling thread.
    void PackNow(const Handle& record, uint64_t minBytes);
    /// Requests that a packed step be repacked tightly.
    void Tighten(const Handle& record);
    /// Requests that the packed bytes of a step be moved into the file.
    void Spill(const Handle& record);

    /// Returns the step with its arrays. Waits while this step is being processed, but never for
    /// another step.
    /// \throw HostError if its packed bytes cannot be read or are damaged; the step is then
    /// unchanged.
    UndoStep& Open(const Handle& record);
    /// Returns the step. Its arrays may be empty and must not be accessed.
    static UndoStep& Shell(const Handle& record);

    /// Waits until all requests are completed.
    void Settle();
    /// Must be called when the content of an open step has changed.
    void Remeasure(const Handle& record);

    /// Memory of all steps in bytes, including those that are waiting to be packed.
    uint64_t Bytes() const;
    /// The maximum of Bytes() so far; it includes packed bytes while they are being created.
    uint64_t PeakBytes() const;
    uint64_t SpilledBytes() const;
    /// Size of one step in bytes, in memory and in the file.
    uint64_t BytesOf(const Handle& record) const;
    bool IsOpen(const Handle& record) const;
    /// Bytes of memory that Spill would free; 0 unless the step is packed in memory.
    uint64_t PackedBytes(const Handle& record) const;

    /// Sets the folder in which the file for packed bytes is created. If the name is empty, no more
    /// bytes are written to a file; bytes in an existing file stay there.
    /// \throw HostError if the file cannot be created.
    void SetSpillFolder(const std::string& folder);
    /// Whether steps can be moved into a file: a folder has been set and no error has occurred
    /// since.
    bool CanSpill() const;
    /// Returns the file error if there is one that has not been returned before, otherwise an empty
    /// string.
    std::string TakeProblem();
    std::string SpillPath() const;

private:
    enum class Task { Pack, PackTightly, Tighten, Spill };
    struct Job {
        Handle record;
        Task task;
        /// The record's withdrawal count when the job was created. If the count has changed since,
        /// the job was withdrawn.
        uint64_t asked;
    };
    void Ask(const Handle& record, Task task);
    /// Requires the mutex.
    /// \return false if the system cannot start a thread.
    bool StartWorker();
    void Run(const std::stop_token& stop);
    void Do(const Job& job, std::unique_lock<std::mutex>& lock);
    void DoPack(StepRecord& record, PackMethod method, std::unique_lock<std::mutex>& lock);
    void DoTighten(StepRecord& record, std::unique_lock<std::mutex>& lock);
    void DoSpill(StepRecord& record, std::unique_lock<std::mutex>& lock);
    /// Withdraws the requests for the record and waits for the task that is processing it.
    void Claim(const Handle& record, std::unique_lock<std::mutex>& lock);
    void SetBytes(StepRecord& record, uint64_t bytes);
    /// Updates the peak while packed bytes exist along with the arrays that they replace.
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
