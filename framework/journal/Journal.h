// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/journal/JournalContent.h"
#include "framework/journal/JournalWriter.h"

#include <memory>
#include <string>
#include <vector>

namespace trovik {

/// Options of a journal.
struct JournalOptions {
    /// Path of the journal file; empty disables the journal.
    std::string path;
    /// Whether to sync to disk at the end of each step, so that no completed step is lost even if
    /// the machine crashes. Without this option, the journal survives a crash of the process but
    /// not of the machine.
    bool syncSteps = false;
    /// For programs that keep running after a save or a cancelled step. After a save, the journal
    /// then continues instead of restarting from the scene, so that undoing work from before the
    /// save is recorded as a step. Cancelled steps are recorded as ended.
    bool isInteractive = false;
};

/// Records the inputs of all steps and strokes as they occur, so that RecoverJournal can replay
/// them. JournalRecorder writes the journal of a Document; this class itself depends on neither
/// mesh nor brush.
///
/// Each call passes its record to the operating system before it returns, so nothing is lost when
/// the process ends, for whatever reason. A call costs one system call and does not wait for the
/// disk unless its description says so.
///
/// Errors: only the constructor throws. If the journal can no longer be written, for example
/// because the disk is full, nothing more is recorded; the other calls still succeed, and
/// TakeProblem returns the reason.
class TROVIK_API Journal {
public:
    /// Starts a new journal, which is on disk when the constructor returns.
    /// \throw HostError if there is a journal at this path that was not closed, because it may be
    /// the only record of the work; also if another process is writing the journal and has locked
    /// it.
    Journal(const JournalOptions& options, const JournalBase& base);

    /// Records a step of a stroke script, right before it runs.
    void BeginStep(const nlohmann::json& json);
    /// Records that one more dab of the current step is complete.
    void DabDone();
    /// Records the end of the current step.
    /// \param end  `dabs` is ignored; the number of DabDone calls is recorded instead.
    /// \param label  the label of the undo step.
    void EndStep(const StepEnd& end, const std::string& label);

    /// Ends the current step and starts again from a base that contains its result. This combines
    /// EndStep and RestartFrom, so that no journal on disk ever contains both the completed step
    /// and the old base.
    void EndStepAndRestart(const StepEnd& end, const std::string& label, const JournalBase& base);

    /// The following functions record strokes that are not part of a step. Call each one after the
    /// corresponding call to the stroke has returned or thrown, in the same order. Steps may run in
    /// between.
    void BeginStroke(const StrokeStart& start, const std::string& label);
    void StrokeDab(const StrokeInput& dab);
    void WholeMesh(const WholeMeshInput& input);
    void RevertStroke();
    void EndStroke(const StepEnd& end, const std::string& label);

    /// Records a stamp file that the following records need.
    void Stamp(const JournalFile& stamp);
    /// Records a scene that is complete and about to be renamed to this path. Waits for the disk.
    /// \param carried  see JournalBase.
    void Saved(const JournalFile& scene, const nlohmann::json& carried = nullptr);
    /// Replaces all recorded steps with a new base that contains their result. Summary lines of
    /// these steps are retained. Waits for the disk.
    void RestartFrom(const JournalBase& base);
    /// Records that the work ended normally. Must be the last call.
    void Close();

    /// Ends the journal because the caller cannot record its work; see TakeProblem.
    void GiveUp(const std::string& reason);
    /// Resumes a journal that could no longer be written, starting from a base that contains all
    /// work so far. Must not be called within a step or stroke. The old journal's file is kept
    /// until the new one replaces it. \return whether the journal is being written again.
    bool Resume(const JournalBase& base);

    bool IsInStep() const { return inStep; }
    bool IsInteractive() const { return options.isInteractive; }
    /// Whether the journal is still being written.
    bool IsAlive() const { return writer != nullptr; }
    /// The reason why the journal is not being written, as one line; empty while it is being
    /// written, and after Close.
    const std::string& Failure() const { return failure; }
    /// Ends the journal if its file was removed or replaced, because further records would be lost.
    /// This is also checked at the end of each step and stroke. Cost: one system call.
    void RequireFile();
    const std::string& Path() const { return options.path; }
    /// Returns the reason why the journal ended early, as one line, and clears it; empty if there
    /// is nothing to report.
    std::string TakeProblem();

private:
    template <typename Write>
    void Guarded(const Write& write);
    void Start(const JournalBase& base, bool mayReplace = true);
    void End(RecordKind kind, JournalStep& ended, StepEnd end, const std::string& label);
    void Note(JournalStep& ended, const StepEnd& end, const std::string& label);

    JournalOptions options;
    std::unique_ptr<JournalWriter> writer;
    JournalStep step;
    JournalStep stroke;
    bool inStep = false;
    nlohmann::json past = nlohmann::json::array();
    std::string problem;
    std::string failure;
};

}  // namespace trovik
