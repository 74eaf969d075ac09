// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/Document.h"
#include "framework/journal/Journal.h"
#include "framework/script/ScriptFiles.h"

#include <string>

namespace trovik {

struct CommandInput;

/// Records the work on a document in a journal: its strokes and saves, and the steps of a script
/// with their begin and end. Restarts the journal from a scene where the recorded steps could not
/// be repeated from its base.
class TROVIK_API JournalRecorder final : private DocumentJournal {
public:
    /// Starts the journal and attaches itself to the document, whose history must be empty. Borrows
    /// the document.
    /// \param setup  a stroke script without steps, by which the document came to be as it is.
    /// \param script  where paths of the setup and of steps are relative to, as ScriptRunner.
    /// \param files  finds the files that steps name; borrowed.
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
    /// Undo and redo beyond the steps that the journal has, such as those of before a save, cannot
    /// be done again from its start: the scene is then written beside the journal, which starts
    /// anew from there.
    void EndStep(bool failed);
    void Close();
    std::string TakeProblem() { return journal.TakeProblem(); }

private:
    void OnStrokeBegun(BrushOperation::Modifier modifier, uint64_t seed) override;
    void OnDab(const StrokeDab& dab, bool failed) override;
    void OnWholeMesh(float strength, bool byFacing) override;
    void OnPutBack() override;
    void OnStrokeEnded(bool brokenOff) override;
    void OnSceneWritten(const std::string& scenePath,
                        const std::string& temporaryPath,
                        JobControl* job) override;
    void OnSaved(const std::string& scenePath) override;

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
    /// The base of a journal that goes on from this scene.
    JournalBase BaseFrom(const JournalFile& scene);
    /// What is known of the past no longer counts for the new journal.
    void StartedAnew();
    void MarkHistory();
    /// Whether the step went through undo steps from before the journal's start.
    bool LeftItsHistory() const;
    void EndStepBySnapshot(const StepEnd& end, const std::string& label);

    Document& document;
    nlohmann::json setup;
    std::string script;
    const ScriptFiles& files;
    Journal journal;
    StrokeTotals totalsBefore;
    std::size_t historyBefore = 0;
    /// Of the current step.
    bool undoes = false;
    bool redoes = false;
    std::vector<std::string> knownFiles;
    /// The newest step of undo when the journal started; null for none.
    const UndoStep* newestAtStart = nullptr;
    /// Steps that could be brought again when the journal started can be so still.
    bool redoFromBefore = false;
    /// The scene file beside the journal that it starts from; empty: another.
    std::string snapshot;
    unsigned snapshots = 0;
    /// The scene that is being saved.
    JournalFile saved;
};

}  // namespace trovik
