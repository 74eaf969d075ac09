// SPDX-License-Identifier: Apache-2.0
#include "framework/history/StepKeeper.h"

#include "framework/errors/HostError.h"
#include "framework/memory/SystemMemory.h"

#include <algorithm>
#include <csignal>
#include <ctime>
#include <new>
#include <pthread.h>
#include <system_error>
#include <utility>

namespace trovik {

/// All members except the content of the step are protected by the mutex. The content belongs to
/// the keeper's thread while `busy` is set, and otherwise to the caller's thread.
class StepRecord {
public:
    enum class State { Open, Packed, Spilled };

    uint64_t PackedSize() const { return state == State::Packed ? packed.capacity() : 0; }

    std::unique_ptr<UndoStep> step;
    State state = State::Open;
    PackMethod method = PackMethod::Quick;
    std::vector<uint8_t> packed;
    SpillFile::Extent extent;
    /// Bytes in memory that this record adds to the keeper's total.
    uint64_t bytes = 0;
    /// Counts withdrawn requests; a job created with a different count is void.
    uint64_t asking = 0;
    bool busy = false;
};

namespace {

/// After packing, the allocator still holds the freed memory. If at least this many bytes were
/// freed, the memory is returned to the system. Otherwise it is kept for reuse when a step is
/// unpacked, which avoids page faults.
constexpr uint64_t minReleasedBytes = uint64_t{16} << 20;

uint64_t ArrayBytes(const std::vector<StepArray>& arrays) {
    uint64_t bytes = 0;
    for (const StepArray& array : arrays) bytes += array.Bytes();
    return bytes;
}

void Empty(const std::vector<StepArray>& arrays) {
    for (const StepArray& array : arrays) array.Resize(0);
}

/// Blocks SIGXFSZ in this thread during its lifetime. A write beyond the file size limit then fails
/// like a write to a full disk, instead of terminating the program.
class FileSizeSignalBlock {
public:
    FileSizeSignalBlock() {
        sigemptyset(&signals);
        sigaddset(&signals, SIGXFSZ);
        pthread_sigmask(SIG_BLOCK, &signals, &before);
    }
    ~FileSizeSignalBlock() {
        // A signal that is still pending would terminate the program as soon as it is unblocked.
        if (sigismember(&before, SIGXFSZ) == 0) {
            const timespec noWait{};
            while (sigtimedwait(&signals, nullptr, &noWait) == SIGXFSZ) {
            }
        }
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }
    FileSizeSignalBlock(const FileSizeSignalBlock&) = delete;
    FileSizeSignalBlock& operator=(const FileSizeSignalBlock&) = delete;

private:
    sigset_t signals{};
    sigset_t before{};
};

}  // namespace

StepKeeper::StepKeeper() = default;

StepKeeper::~StepKeeper() {
    if (!worker.joinable()) return;
    {
        const std::lock_guard lock(mutex);
        jobs.clear();
        // The stop is requested under the lock. Otherwise, the worker could check for it too early
        // and then miss the notification.
        worker.request_stop();
    }
    asked.notify_all();
    worker.join();
}

StepKeeper::Handle StepKeeper::Add(std::unique_ptr<UndoStep> step) {
    auto record = std::make_shared<StepRecord>();
    record->step = std::move(step);
    const std::lock_guard lock(mutex);
    SetBytes(*record, record->step->Bytes());
    return record;
}

void StepKeeper::Drop(const Handle& record) {
    std::unique_lock lock(mutex);
    Claim(record, lock);
    if (record->state == StepRecord::State::Spilled) file->Free(record->extent);
    record->state = StepRecord::State::Open;
    SetBytes(*record, 0);
    // Steps may own objects that must be destroyed on the caller's thread, such as layers.
    lock.unlock();
    record->step.reset();
    record->packed = {};
}

void StepKeeper::SetBytes(StepRecord& record, uint64_t newBytes) {
    bytes += newBytes;
    bytes -= record.bytes;
    record.bytes = newBytes;
    peak = std::max(peak, bytes);
}

void StepKeeper::NotePeak(uint64_t packed) { peak = std::max(peak, bytes + packed); }

void StepKeeper::Ask(const Handle& record, Task task) {
    std::unique_lock lock(mutex);
    if (!StartWorker()) {
        const FileSizeSignalBlock block;
        Do({record, task, record->asking}, lock);
        return;
    }
    jobs.push_back({record, task, record->asking});
    asked.notify_one();
}

bool StepKeeper::StartWorker() {
    if (worker.joinable()) return true;
    try {
        worker = std::jthread([this](const std::stop_token& stop) { Run(stop); });
    } catch (const std::system_error&) {
        // The system cannot start a thread, because of a limit on threads or address space.
        return false;
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

void StepKeeper::Pack(const Handle& record, uint64_t minBytes) {
    if (!IsOpen(record)) return;
    const uint64_t arrays = ArrayBytes(record->step->Arrays());
    if (arrays == 0 || arrays < minBytes) return;
    Ask(record, Task::Pack);
}

void StepKeeper::PackNow(const Handle& record, uint64_t minBytes) {
    std::unique_lock lock(mutex);
    Claim(record, lock);
    if (record->state != StepRecord::State::Open) return;
    const uint64_t arrays = ArrayBytes(record->step->Arrays());
    if (arrays == 0 || arrays < minBytes) return;
    Do({record, Task::PackTightly, record->asking}, lock);
}

void StepKeeper::Tighten(const Handle& record) { Ask(record, Task::Tighten); }

void StepKeeper::Spill(const Handle& record) { Ask(record, Task::Spill); }

void StepKeeper::Claim(const Handle& record, std::unique_lock<std::mutex>& lock) {
    ++record->asking;
    done.wait(lock, [&record] { return !record->busy; });
}

UndoStep& StepKeeper::Open(const Handle& record) {
    std::unique_lock lock(mutex);
    Claim(record, lock);
    if (record->state == StepRecord::State::Open) return *record->step;
    const std::vector<StepArray> arrays = record->step->Arrays();
    const bool spilled = record->state == StepRecord::State::Spilled;
    // No other thread accesses the record now, so tasks for other records can continue in the
    // meantime.
    lock.unlock();
    const std::vector<uint8_t> read = spilled ? file->Read(record->extent) : std::vector<uint8_t>();
    UnpackArrays(spilled ? read : record->packed, record->method, arrays);
    lock.lock();
    if (spilled) file->Free(record->extent);
    record->state = StepRecord::State::Open;
    SetBytes(*record, record->step->Bytes() + record->packed.capacity() + read.capacity());
    record->packed = {};
    SetBytes(*record, record->step->Bytes());
    return *record->step;
}

UndoStep& StepKeeper::Shell(const Handle& record) { return *record->step; }

void StepKeeper::Settle() {
    std::unique_lock lock(mutex);
    done.wait(lock, [this] { return jobs.empty() && !busy; });
}

void StepKeeper::Remeasure(const Handle& record) {
    std::unique_lock lock(mutex);
    Claim(record, lock);
    if (record->state == StepRecord::State::Open) SetBytes(*record, record->step->Bytes());
}

uint64_t StepKeeper::Bytes() const {
    const std::lock_guard lock(mutex);
    return bytes;
}

uint64_t StepKeeper::PeakBytes() const {
    const std::lock_guard lock(mutex);
    return peak;
}

uint64_t StepKeeper::SpilledBytes() const {
    const std::lock_guard lock(mutex);
    return file == nullptr ? 0 : file->Bytes();
}

uint64_t StepKeeper::BytesOf(const Handle& record) const {
    const std::lock_guard lock(mutex);
    return record->bytes +
           (record->state == StepRecord::State::Spilled ? record->extent.length : 0);
}

bool StepKeeper::IsOpen(const Handle& record) const {
    const std::lock_guard lock(mutex);
    return record->state == StepRecord::State::Open && !record->busy;
}

uint64_t StepKeeper::PackedBytes(const Handle& record) const {
    const std::lock_guard lock(mutex);
    return record->PackedSize();
}

bool StepKeeper::CanSpill() const {
    const std::lock_guard lock(mutex);
    return file != nullptr && !spillFolder.empty();
}

std::string StepKeeper::TakeProblem() {
    const std::lock_guard lock(mutex);
    return std::exchange(problem, {});
}

std::string StepKeeper::SpillPath() const {
    const std::lock_guard lock(mutex);
    return file == nullptr ? std::string() : file->OpenPath();
}

void StepKeeper::SetSpillFolder(const std::string& folder) {
    const std::lock_guard lock(mutex);
    // Steps in an existing file stay there. The file can be replaced only while it is empty.
    if (!folder.empty() && (file == nullptr || file->Bytes() == 0))
        file = std::make_unique<SpillFile>(folder);
    spillFolder = folder;
}

void StepKeeper::Run(const std::stop_token& stop) {
    const FileSizeSignalBlock block;
    uint64_t freed = 0;
    std::unique_lock lock(mutex);
    while (true) {
        asked.wait(lock, [&] { return stop.stop_requested() || !jobs.empty(); });
        if (stop.stop_requested()) return;
        Job job = std::move(jobs.front());
        jobs.pop_front();
        busy = true;
        const uint64_t before = job.record->bytes;
        if (job.asked == job.record->asking) Do(job, lock);
        freed += before - std::min(before, job.record->bytes);
        job.record.reset();
        if (jobs.empty() && freed >= minReleasedBytes) {
            freed = 0;
            lock.unlock();
            ReleaseFreedMemory();
            lock.lock();
        }
        busy = false;
        done.notify_all();
    }
}

void StepKeeper::Do(const Job& job, std::unique_lock<std::mutex>& lock) {
    StepRecord& record = *job.record;
    try {
        switch (job.task) {
            case Task::Pack:
                DoPack(record, PackMethod::Quick, lock);
                break;
            case Task::PackTightly:
                DoPack(record, PackMethod::Tight, lock);
                break;
            case Task::Tighten:
                DoTighten(record, lock);
                break;
            case Task::Spill:
                DoSpill(record, lock);
                break;
        }
    } catch (const std::exception&) {
        // If memory for the packed bytes cannot be allocated, the step is left unchanged.
        if (!lock.owns_lock()) lock.lock();
        record.busy = false;
    }
}

void StepKeeper::DoPack(StepRecord& record, PackMethod method, std::unique_lock<std::mutex>& lock) {
    if (record.state != StepRecord::State::Open) return;
    record.busy = true;
    lock.unlock();
    const std::vector<StepArray> arrays = record.step->Arrays();
    const uint64_t open = ArrayBytes(arrays);
    std::vector<uint8_t> packed = PackArrays(arrays, method);
    lock.lock();
    NotePeak(packed.capacity());
    if (packed.capacity() < open) {
        Empty(arrays);
        record.packed = std::move(packed);
        record.method = method;
        record.state = StepRecord::State::Packed;
        SetBytes(record, record.step->Bytes() + record.packed.capacity());
    }
    record.busy = false;
    done.notify_all();
}

void StepKeeper::DoTighten(StepRecord& record, std::unique_lock<std::mutex>& lock) {
    if (record.state != StepRecord::State::Packed || record.method != PackMethod::Quick) return;
    record.busy = true;
    lock.unlock();
    std::vector<uint8_t> packed = Repack(record.packed, PackMethod::Quick, PackMethod::Tight);
    lock.lock();
    NotePeak(packed.capacity());
    if (packed.capacity() < record.packed.capacity()) {
        SetBytes(record, record.bytes - record.packed.capacity() + packed.capacity());
        record.packed = std::move(packed);
        record.method = PackMethod::Tight;
    }
    record.busy = false;
    done.notify_all();
}

void StepKeeper::DoSpill(StepRecord& record, std::unique_lock<std::mutex>& lock) {
    if (record.state != StepRecord::State::Packed || file == nullptr || spillFolder.empty()) return;
    record.busy = true;
    record.extent = file->Reserve(record.packed.size());
    std::string failure;
    lock.unlock();
    try {
        file->Fill(record.extent, record.packed);
    } catch (const HostError& error) {
        failure = error.what();
    }
    lock.lock();
    record.busy = false;
    if (!failure.empty()) {
        file->Free(record.extent);
        // Reported once; from then on, steps stay in memory.
        problem = failure + "; undo steps stay in memory";
        spillFolder.clear();
        return;
    }
    SetBytes(record, record.bytes - record.packed.capacity());
    record.packed = {};
    record.state = StepRecord::State::Spilled;
}

}  // namespace trovik
