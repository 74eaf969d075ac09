// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/Document.h"
#include "framework/journal/Journal.h"
#include "framework/script/ScriptFiles.h"
#include "framework/strokes/StrokeInputListener.h"

#include <string>

namespace trovik {

/// Keeps the journal of a document: hears of its strokes, tells the journal when a step starts and
/// ends, and sees that all that it has taken down can be done again from where it starts.
class TROVIK_API JournalRecorder final : private StrokeInputListener {
public:
    /// Starts the journal and listens to the document, whose history must be empty. Borrows it.
    /// \param setup  a stroke script without steps, by which the document came to be as it is.
    /// \param script  where paths of the setup and of steps are relative to, as ScriptRunner.
    /// \param files  finds the files that steps name; borrowed.
    JournalRecorder(const JournalOptions& options,
                    Document& document,
                    const nlohmann::json& setup,
                    const std::string& script,
                    const ScriptFiles& files);
    ~JournalRecorder();
    JournalRecorder(const JournalRecorder&) = delete;
    JournalRecorder& operator=(const JournalRecorder&) = delete;

    void BeginStep(const nlohmann::json& step);
    /// Undo and redo beyond the steps that the journal has, such as those of before a save, cannot
    /// be done again from its start: the scene is then written beside the journal, which starts
    /// anew from there.
    void EndStep(bool failed);
    /// Saves the document's scene; the journal starts anew from it. Whatever moment the process
    /// ends at, the old scene with the old journal or the new scene with either gives all back.
    /// \throw HostError when the scene cannot be written; it and the journal go on as they were.
    void Save(const std::string& scenePath);
    void Close();
    std::string TakeProblem() { return journal.TakeProblem(); }

private:
    void OnStrokeBegun(BrushOperation::Modifier modifier, uint64_t seed) override;
    void OnDab(const StrokeDab& dab, bool failed) override;
    void OnWholeMesh(float strength, bool byFacing) override;
    void OnPutBack() override;
    void OnStrokeEnded(bool brokenOff) override;

    static JournalBase MakeBase(Document& document,
                                const nlohmann::json& setup,
                                const std::string& script,
                                const ScriptFiles& files);
    void NoteStamp();
    void NoteFile(const std::string& path);
    StepEnd Ended(bool failed) const;
    /// The base of a journal that goes on from this scene.
    JournalBase BaseFrom(const JournalFile& scene);
    /// What is known of the past no longer counts for the new journal.
    void StartedAnew();
    void MarkHistory();
    bool LeftItsHistory(const nlohmann::json& step) const;
    void EndStepBySnapshot(const StepEnd& end, const std::string& label);

    Document& document;
    nlohmann::json setup;
    std::string script;
    const ScriptFiles& files;
    Journal journal;
    StrokeTotals totalsBefore;
    std::size_t historyBefore = 0;
    nlohmann::json stepAtHand;
    std::vector<std::string> knownFiles;
    /// The newest step of undo when the journal started; null for none.
    const UndoStep* newestAtStart = nullptr;
    /// Steps that could be brought again when the journal started can be so still.
    bool redoFromBefore = false;
    /// The scene file beside the journal that it starts from; empty: another.
    std::string snapshot;
    unsigned snapshots = 0;
};

}  // namespace trovik
