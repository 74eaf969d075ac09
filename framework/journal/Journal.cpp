// SPDX-License-Identifier: Apache-2.0
#include "framework/journal/Journal.h"

#include "framework/errors/HostError.h"
#include "framework/io/FileLock.h"
#include "framework/journal/JournalRecord.h"

#include <filesystem>
#include <fstream>
#include <string_view>

namespace trovik {

namespace {

/// Maximum number of summary lines that are copied to a new journal. The most recent lines are
/// retained.
constexpr std::size_t maxPastLines = 4096;

void RejectUnclosed(const std::string& path) {
    std::error_code ignored;
    if (!std::filesystem::exists(path, ignored)) return;
    char start[journalMagic.size()] = {};
    std::ifstream(path, std::ios::binary).read(start, sizeof start);
    const std::string_view begins(start, sizeof start);
    // A truncated journal, even an empty file, counts as a journal and must not be overwritten.
    const auto end = begins.find('\0');
    if (begins.substr(0, end) != journalMagic.substr(0, end))
        throw HostError(path + ": exists and is not a journal; choose another file");
    bool isClosed = false;
    try {
        isClosed = ReadJournal(path).isClosed;
    } catch (const HostError&) {
        // An incomplete journal must not be overwritten either.
    }
    if (!isClosed) {
        throw HostError(path +
                        ": this journal has not been closed; save its work with "
                        "trovik recover, or remove the file");
    }
}

[[noreturn]] void RejectSecondRun(const std::string& path) {
    throw HostError(path +
                    ": another run is writing this journal; wait until it ends, or choose "
                    "another file");
}

}  // namespace

Journal::Journal(const JournalOptions& journalOptions, const JournalBase& base)
    : options(journalOptions) {
    // Held until the new journal, which is also locked, has replaced the old one, so that other
    // runs never find the path unlocked.
    const FileLock old(options.path);
    if (old.State() == FileLock::Result::Busy) RejectSecondRun(options.path);
    const bool isNew = old.State() == FileLock::Result::Absent;
    if (!isNew) RejectUnclosed(options.path);
    Start(base, !isNew);
}

void Journal::Start(const JournalBase& base, bool mayReplace) {
    auto fresh = std::make_unique<JournalWriter>(options.path);
    fresh->Append(RecordKind::Base, ToJson(base).dump());
    if (!past.empty()) fresh->Append(RecordKind::Past, past.dump());
    try {
        fresh->PutInPlace(mayReplace);
    } catch (const HostError&) {
        // Another run started at the same time and created its journal first.
        if (!mayReplace && FileLock(options.path).State() == FileLock::Result::Busy)
            RejectSecondRun(options.path);
        throw;
    }
    writer = std::move(fresh);
}

template <typename Write>
void Journal::Guarded(const Write& write) {
    if (writer == nullptr) return;
    try {
        write();
    } catch (const std::exception& error) {
        GiveUp(error.what());
    }
}

void Journal::GiveUp(const std::string& reason) {
    problem = reason + "; the journal ends here, and the work continues without it";
    failure = reason;
    writer.reset();
}

bool Journal::Resume(const JournalBase& base) {
    inStep = false;
    try {
        Start(base);
    } catch (const HostError&) {
        return false;
    }
    problem.clear();
    failure.clear();
    return true;
}

void Journal::BeginStep(const nlohmann::json& json) {
    inStep = true;
    step = JournalStep();
    // Strokes can have many samples, so the summary line of a stroke contains only the label.
    step.step = json.contains("stroke") ? nlohmann::json{{"stroke", nullptr}} : json;
    Guarded([&] {
        writer->Append(RecordKind::Step, json.dump());
        writer->Flush();
    });
}

void Journal::DabDone() {
    Guarded([&] {
        writer->AppendValue(RecordKind::Dab, DabMark{++step.dabs});
        writer->Flush();
    });
}

void Journal::Note(JournalStep& ended, const StepEnd& end, const std::string& label) {
    ended.label = label;
    ended.vertices = end.vertices;
    ended.undoBytes = end.undoBytes;
    ended.isOver = true;
    ended.failed = end.failed != 0;
    if (past.size() >= maxPastLines) past.erase(past.begin());
    past.push_back(SummaryOf(ended));
}

void Journal::End(RecordKind kind, JournalStep& ended, StepEnd end, const std::string& label) {
    end.dabs = ended.dabs;
    Guarded([&] {
        std::string content(reinterpret_cast<const char*>(&end), sizeof end);
        writer->Append(kind, content + label);
        writer->RequireInPlace();
        if (options.syncSteps)
            writer->Sync();
        else
            writer->Flush();
        Note(ended, end, label);
    });
}

void Journal::EndStepAndRestart(const StepEnd& end,
                                const std::string& label,
                                const JournalBase& base) {
    inStep = false;
    Guarded([&] {
        Note(step, end, label);
        Start(base);
    });
}

void Journal::EndStep(const StepEnd& end, const std::string& label) {
    inStep = false;
    End(RecordKind::StepDone, step, end, label);
}

void Journal::BeginStroke(const StrokeStart& start, const std::string& label) {
    stroke = JournalStep();
    Guarded([&] {
        std::string content(reinterpret_cast<const char*>(&start), sizeof start);
        writer->Append(RecordKind::StrokeBegin, content + label);
        writer->Flush();
    });
}

void Journal::StrokeDab(const StrokeInput& dab) {
    ++stroke.dabs;
    Guarded([&] {
        writer->AppendValue(RecordKind::StrokeDab, dab);
        writer->Flush();
    });
}

void Journal::WholeMesh(const WholeMeshInput& input) {
    ++stroke.dabs;
    Guarded([&] {
        writer->AppendValue(RecordKind::StrokeWhole, input);
        writer->Flush();
    });
}

void Journal::RevertStroke() {
    // Written together with the next dab, because the revert does not affect the result until then.
    Guarded([&] { writer->Append(RecordKind::StrokeRevert, nullptr, 0); });
}

void Journal::EndStroke(const StepEnd& end, const std::string& label) {
    End(RecordKind::StrokeEnd, stroke, end, label);
    stroke = JournalStep();
}

void Journal::Stamp(const JournalFile& stamp) {
    Guarded([&] {
        writer->Append(RecordKind::Stamp, ToJson(stamp).dump());
        writer->Flush();
    });
}

void Journal::Saved(const JournalFile& scene, const nlohmann::json& carried) {
    Guarded([&] {
        nlohmann::json fields = ToJson(scene);
        if (!carried.is_null()) fields["carried"] = carried;
        writer->Append(RecordKind::Saved, fields.dump());
        writer->Sync();
    });
}

void Journal::RestartFrom(const JournalBase& base) {
    Guarded([&] { Start(base); });
}

void Journal::Close() {
    Guarded([&] {
        writer->Append(RecordKind::Close, nullptr, 0);
        writer->Sync();
        writer.reset();
    });
}

void Journal::RequireFile() {
    Guarded([&] { writer->RequireInPlace(); });
}

std::string Journal::TakeProblem() {
    std::string taken;
    taken.swap(problem);
    return taken;
}

}  // namespace trovik
