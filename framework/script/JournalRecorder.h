// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/Document.h"
#include "framework/journal/Journal.h"
#include "framework/script/ScriptFiles.h"

#include <string>

namespace trovik {

struct CommandInput;

/// Records the work on a document in a journal: strokes, saves, and the start and end of each
/// script step. If the recorded steps can no longer be replayed from the journal's base, it
/// restarts the journal from a scene.
class TROVIK_API JournalRecorder final : private DocumentJournal {
public:
    /// Starts the journal and attaches itself to the document, whose history must be empty. Borrows
    /// the document.
    /// \param setup  a stroke script without steps that sets up the document in its current state.
    /// \param script  the script path, to which paths in the setup and in steps are relative, as
    /// for ScriptRunner.
    /// \param files  resolves the files that steps name; borrowed.
    JournalRecorder(const JournalOptions& options,
                    Document& document,
                    const nlohmann::json& setup,
                    const std::string& script,
                    const ScriptFiles& files,
                    JobControl* job = nullptr);
    ~JournalRecorder();
    JournalRecorder(const JournalRecorder&) = delete;
    JournalRecorder& operator=(const JournalRecorder&) = delete;

    void BeginStep(const nlohmann::json& step);
    /// If the step undid or redid work that precedes the recorded steps, for example work done
    /// before a save, it cannot be replayed from the journal's base. A step that read a file which
    /// may be written again (CommandInput::AsSnapshot) cannot be replayed reliably. In both cases,
    /// the scene is written next to the journal, and the journal restarts from that scene.
    void EndStep(bool failed);
    /// Records that the step was cancelled. Without JournalOptions::isInteractive, the step is left
    /// unfinished, as after a crash.
    void CancelStep();
    void Close();
    std::string TakeProblem() { return journal.TakeProblem(); }
    const Journal& GetJournal() const { return journal; }
    void RequireFile() { journal.RequireFile(); }
    /// Continues a journal that ended early: writes the scene next to it, and restarts it from that
    /// scene. \throw HostError while a stroke is open, or if a file cannot be written; Cancelled.
    /// In these cases nothing has changed.
    void Resume(JobControl* job);

private:
    void OnStrokeBegun(BrushOperation::Modifier modifier, uint64_t seed) override;
    void OnDab(const StrokeDab& dab, bool failed) override;
    void OnWholeMesh(float strength, bool byFacing) override;
    void OnReverted() override;
    void OnStrokeEnded(bool brokenOff) override;
    void OnSceneWritten(const std::string& scenePath,
                        const std::string& temporaryPath,
                        JobControl* job) override;
    void OnSaved(const std::string& scenePath) override;

    /// Returns the absolute path, or the path itself if the working folder does not exist.
    static std::string Absolute(const std::string& path);
    static JournalBase MakeBase(Document& document,
                                const nlohmann::json& setup,
                                const std::string& script,
                                const ScriptFiles& files,
                                JobControl* job);
    void NoteInput(const nlohmann::json& step,
                   const std::string& command,
                   const CommandInput& input,
                   nlohmann::json& whole);
    void NoteStamp();
    void NoteFile(const std::string& path);
    StepEnd Ended(bool failed) const;
    /// The base of a journal that continues from this scene.
    JournalBase BaseFrom(const JournalFile& scene);
    /// If a scene is about to replace the file that the journal starts from, keeps a hard link to
    /// that file, or a copy of it.
    void KeepSource(const std::string& scenePath);
    JournalFile WriteSnapshot(JobControl* job);
    void RemoveOlderSnapshot(const std::string& before);
    /// Resets the state that refers to the previous journal.
    void ForgetPreviousJournal();
    void MarkHistory();
    /// Whether the current step undid or redid steps that precede the journal's start.
    bool LeftItsHistory() const;
    void EndStepBySnapshot(const StepEnd& end, const std::string& label);

    Document& document;
    nlohmann::json setup;
    std::string script;
    const ScriptFiles& files;
    Journal journal;
    /// The file that the journal starts from, the copy of it that a save made necessary, and
    /// whether that copy could not be made.
    std::string source;
    std::string keptSource;
    bool losesSource = false;
    StrokeTotals totalsBefore;
    std::size_t historyBefore = 0;
    /// Whether the current step contains an undo command, and whether it contains a redo command.
    bool undoes = false;
    bool redoes = false;
    /// Whether the journal must restart from a scene after the current step because of a file that
    /// the step read.
    bool needsSnapshot = false;
    /// Whether the current step consists of several commands.
    bool isCompound = false;
    std::vector<std::string> recordedFiles;
    /// The newest undo step when the journal started; null if there was none.
    const UndoStep* newestAtStart = nullptr;
    /// Whether the redo steps that existed when the journal started can still be redone.
    bool redoFromBefore = false;
    /// The scene file next to the journal, if the journal starts from it; otherwise empty.
    std::string snapshot;
    unsigned snapshots = 0;
    /// The scene that is being saved.
    JournalFile saved;
};

}  // namespace trovik
