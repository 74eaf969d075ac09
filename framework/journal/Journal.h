// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/journal/JournalContent.h"
#include "framework/journal/JournalWriter.h"

#include <memory>
#include <string>
#include <vector>

namespace trovik {

/// How a journal is kept.
struct JournalOptions {
    /// Empty: no journal.
    std::string path;
    /// Waits for the disk at the end of each step, so that even the machine's end loses nothing of
    /// it. Without, only the end of the process is provided for.
    bool syncSteps = false;
};

/// Takes down the inputs of one piece of work as they happen, so that RecoverJournal can do it
/// again. JournalRecorder drives it for a Document; this class knows neither mesh nor brush.
///
/// What is taken down is handed to the system before each call returns: the end of the process, in
/// whatever way, loses none of it. A call costs one call of the system, and no wait for the disk
/// but where it says so.
///
/// Errors: only the constructor throws. When the journal cannot be written any more (a full disk),
/// work goes on without it: nothing more is taken down, and TakeProblem tells why.
class TROVIK_API Journal {
public:
    /// Starts a new journal, on disk when this returns.
    /// \throw HostError also where a journal lies there whose work did not end in good order: it
    /// may hold what nothing else does; and if another run is writing the journal, which locks it.
    Journal(const JournalOptions& options, const JournalBase& base);

    /// A step as of a stroke script, right before it runs.
    void BeginStep(const nlohmann::json& json);
    /// The step at hand has finished one more dab.
    void DabDone();
    /// \param end  `dabs` is set here. \param label  of the step of undo.
    void EndStep(const StepEnd& end, const std::string& label);

    /// The step at hand is over, and the new base holds what it did: EndStep and StartAnew in one,
    /// so that no journal ever lies on disk that has the step and starts from the old base.
    void EndStepAnew(const StepEnd& end, const std::string& label, const JournalBase& base);

    /// Strokes that are not a step's doing: their calls in order, each once it has returned, or has
    /// thrown. Steps may be done between them.
    void BeginStroke(const StrokeStart& start, const std::string& label);
    void StrokeDab(const StrokeInput& dab);
    void WholeMesh(const WholeMeshInput& input);
    void PutBack();
    void EndStroke(const StepEnd& end, const std::string& label);

    /// A file that what follows depends on.
    void Stamp(const JournalFile& stamp);
    /// A scene that is complete and about to be renamed to this path. Waits for the disk.
    /// \param carried  see JournalBase.
    void Saved(const JournalFile& scene, const nlohmann::json& carried = nullptr);
    /// Takes the place of what was taken down until now, which the new base holds. Steps so far
    /// stay as lines of the past. Waits for the disk.
    void StartAnew(const JournalBase& base);
    /// The work ended in good order. Nothing may follow.
    void Close();

    /// Ends the journal before the work, for what the caller cannot take down; see TakeProblem.
    void GiveUp(const std::string& reason);

    bool IsInStep() const { return inStep; }
    /// Whether anything is still taken down.
    bool IsAlive() const { return writer != nullptr; }
    const std::string& Path() const { return options.path; }
    /// Why the journal ended before the work, in one line, once; empty for nothing.
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
};

}  // namespace trovik
