// SPDX-License-Identifier: Apache-2.0
#include "framework/script/JournalRecorder.h"

#include "framework/brushes/BrushSettings.h"
#include "framework/brushes/StampFiles.h"
#include "framework/errors/HostError.h"
#include "framework/script/Command.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <utility>

namespace trovik {

namespace {

namespace fs = std::filesystem;

std::array<float, 3> Three(const Vector& v) { return {v.x, v.y, v.z}; }

}  // namespace

JournalRecorder::JournalRecorder(const JournalOptions& options,
                                 Document& edited,
                                 const nlohmann::json& scriptSetup,
                                 const std::string& scriptPath,
                                 const ScriptFiles& scriptFiles,
                                 JobControl* job)
    : document(edited),
      setup(scriptSetup),
      script(scriptPath),
      files(scriptFiles),
      journal(options, MakeBase(edited, scriptSetup, scriptPath, scriptFiles, job)),
      source(Absolute(edited.MeshPath())) {
    // Left over from an earlier, closed journal with the same name.
    std::error_code ignored;
    fs::remove(KeptSourceOf(journal.Path(), source), ignored);
    document.SetJournal(this);
    MarkHistory();
}

JournalRecorder::~JournalRecorder() { document.SetJournal(nullptr); }

void JournalRecorder::MarkHistory() {
    const UndoHistory& history = document.Geometry().History();
    newestAtStart = history.Position() == 0 ? nullptr : &history.Shell(history.Position() - 1);
    redoFromBefore = history.CanRedo();
}

void JournalRecorder::BeginStep(const nlohmann::json& step) {
    totalsBefore = document.Totals();
    historyBefore = document.Geometry().History().Position();
    undoes = false;
    redoes = false;
    needsSnapshot = false;
    int commands = 0;
    nlohmann::json whole;
    for (const CommandEntry& entry : Commands()) {
        if (!step.contains(entry.traits.name)) continue;
        ++commands;
        undoes = undoes || entry.traits.history == HistoryUse::Undo;
        redoes = redoes || entry.traits.history == HistoryUse::Redo;
        for (const CommandInput& input : entry.traits.inputs)
            NoteInput(step, entry.traits.name, input, whole);
    }
    isCompound = commands > 1;
    journal.BeginStep(whole.is_null() ? step : whole);
}

// Absolute paths are recorded, because a name alone can refer to another file when the journal is
// replayed: files written by this run may no longer exist by then.
void JournalRecorder::NoteInput(const nlohmann::json& step,
                                const std::string& command,
                                const CommandInput& input,
                                nlohmann::json& whole) {
    const nlohmann::json::json_pointer pointer("/" + command + input.pointer);
    if (!step.contains(pointer) || !step.at(pointer).is_string()) return;
    // Also if the command fails, because it may succeed when the file has changed.
    if (input.recorded == CommandInput::AsSnapshot) needsSnapshot = true;
    const auto name = step.at(pointer).get<std::string>();
    const std::vector<std::string> candidates = files.Candidates(name);
    const auto found =
        std::find_if(candidates.begin(), candidates.end(), [](const std::string& file) {
            std::error_code ignored;
            return fs::exists(file, ignored);
        });
    // If a file is missing, the step fails, unless the file is one of the installed stamps.
    if (found == candidates.end()) return;
    if (input.recorded == CommandInput::BeforeCommand ||
        (input.recorded == CommandInput::UnlessWritten && !files.IsWritten(name)))
        NoteFile(*found);
    if (whole.is_null()) whole = step;
    whole.at(pointer) = Absolute(*found);
}

StepEnd JournalRecorder::Ended(bool failed) const {
    StepEnd end{};
    end.failed = failed ? 1 : 0;
    end.vertices = document.Totals().verticesMoved - totalsBefore.verticesMoved;
    const UndoHistory& history = document.Geometry().History();
    if (history.Position() > historyBefore)
        end.undoBytes = history.StepBytes(history.Position() - 1);
    return end;
}

void JournalRecorder::EndStep(bool failed) {
    const UndoHistory& history = document.Geometry().History();
    if (!history.CanRedo() && !redoes) redoFromBefore = false;
    if (LeftItsHistory() || needsSnapshot)
        EndStepBySnapshot(Ended(failed), history.NextLabel());
    else
        journal.EndStep(Ended(failed), history.NextLabel());
}

// A cancelled command has changed nothing except through its dabs, which recovery replays. Recovery
// does not replay the preceding commands of the same step or the additional strokes of mirrored
// sides.
void JournalRecorder::CancelStep() {
    if (!journal.IsInteractive()) return;
    StepEnd end = Ended(false);
    end.failed = StepEnd::cancelled;
    const std::string& label = document.Geometry().History().NextLabel();
    if (isCompound || document.Settings().mirrorMaps.size() > 1)
        EndStepBySnapshot(end, label);
    else
        journal.EndStep(end, label);
}

bool JournalRecorder::LeftItsHistory() const {
    if (redoes && redoFromBefore) return true;
    if (!undoes || newestAtStart == nullptr) return false;
    const UndoHistory& history = document.Geometry().History();
    for (std::size_t i = history.Position(); i < history.StepCount(); ++i)
        if (&history.Shell(i) == newestAtStart) return true;
    return false;
}

void JournalRecorder::Close() { journal.Close(); }

// If the stamp file changed before the journal was replayed, the result would differ.
void JournalRecorder::NoteStamp() {
    const BrushOperation::Private& settings = document.Brush().Settings();
    if (!settings.stamp.enabled || settings.stamp.path.isEmpty()) return;
    const auto file = FindStampFile(settings.stamp.path.toStdString());
    if (!file) return;
    NoteFile(*file);
}

void JournalRecorder::NoteFile(const std::string& name) {
    const std::string path = Absolute(name);
    if (std::find(recordedFiles.begin(), recordedFiles.end(), path) != recordedFiles.end()) return;
    recordedFiles.push_back(path);
    try {
        journal.Stamp({path, HashFile(path)});
    } catch (const HostError& error) {
        journal.GiveUp(error.what());
    }
}

void JournalRecorder::OnStrokeBegun(BrushOperation::Modifier modifier, uint64_t seed) {
    NoteStamp();
    if (journal.IsInStep()) return;
    totalsBefore = document.Totals();
    historyBefore = document.Geometry().History().Position();
    journal.BeginStroke(
        {seed, document.Settings().strokesBegun, static_cast<uint32_t>(modifier), 0},
        document.Geometry().History().NextLabel());
}

void JournalRecorder::OnDab(const StrokeDab& dab, bool failed) {
    if (journal.IsInStep()) {
        if (!failed) journal.DabDone();
        return;
    }
    StrokeInput input{};
    input.face = dab.hit.face;
    input.flags =
        (dab.keepPosition ? StrokeInput::keepsPosition : 0) | (failed ? StrokeInput::failed : 0);
    input.hitPosition = Three(dab.hit.position);
    input.hitNormal = Three(dab.hit.normal);
    input.position = Three(dab.position);
    input.heading = Three(dab.heading);
    input.stampTop = Three(dab.stampTop);
    input.size = dab.size;
    input.pressure = dab.pressure;
    input.strength = dab.strength;
    journal.StrokeDab(input);
}

void JournalRecorder::OnWholeMesh(float strength, bool byFacing) {
    if (journal.IsInStep())
        journal.DabDone();
    else
        journal.WholeMesh({strength, byFacing ? 1u : 0u});
}

void JournalRecorder::OnReverted() {
    if (!journal.IsInStep()) journal.RevertStroke();
}

void JournalRecorder::OnStrokeEnded(bool brokenOff) {
    if (journal.IsInStep()) return;
    journal.EndStroke(Ended(brokenOff), document.Geometry().History().NextLabel());
    redoFromBefore = redoFromBefore && document.Geometry().History().CanRedo();
}

}  // namespace trovik
