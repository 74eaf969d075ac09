// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/script/CommandRunner.h"
#include "framework/trace/TraceRecorder.h"

#include <memory>
#include <string>
#include <vector>

namespace trovik {

/// What one step did.
struct StepReport {
    /// JSON pointer of the step, and its kind.
    std::string pointer, step;
    uint64_t dabs = 0;
    /// By strokes that ended in the step, each vertex once per stroke.
    uint64_t verticesMoved = 0;
    /// Of the whole step, not only in the brush.
    double milliseconds = 0.0;
    std::vector<std::string> warnings;
};

/// What a script left behind.
struct ScriptResult {
    StrokeTotals totals;
    uint64_t vertices = 0;
    uint64_t faces = 0;
    uint32_t levels = 0;
    /// Files written, in order.
    std::vector<std::string> files;
    /// In order.
    std::vector<StepReport> steps;
};

/// Runs a stroke script; docs/stroke-script.md describes it. Opens the mesh or scene, sets up the
/// document and gives the steps to a CommandRunner. Where files are looked for and where they are
/// written is described at ScriptFiles.
/// \throw HostError of one line: file, JSON pointer, reason. \throw Cancelled when its job
/// cancels. Files written before stay.
class TROVIK_API ScriptRunner {
public:
    /// \param scriptPath  "-" for standard input.
    ScriptRunner(const std::string& scriptPath, std::string outputFolder, ScriptProgress progress);
    /// Allows the script to write outside of the output folder. Off by default.
    void AllowOutside(bool allowed) { options.outsideAllowed = allowed; }
    /// Preferences to load before the work starts; those of the script take precedence. Without a
    /// file all preferences have their defaults, or what the process has set.
    void SetPreferencesFile(const std::string& file) { preferencesFile = file; }
    /// Writes a trace of the run; see docs/trace.md. To be called before Run.
    void SetTrace(const TraceOptions& newOptions) { traceOptions = newOptions; }
    /// Records a journal of the run; see docs/journal.md. To be called before Run or Open.
    void SetJournal(const JournalOptions& newOptions) { journalOptions = newOptions; }
    /// Makes warnings errors of their steps: Run throws instead of going on.
    void SetStrict(bool on) { strict = on; }
    ScriptResult Run();
    /// Checks the script, the files that it reads and its settings, instead of Run. Opens the mesh
    /// or scene, makes no strokes and writes nothing. Not found are errors that depend on what
    /// earlier steps made of the surface, such as numbers of faces and levels and names of layers.
    /// \return all errors found, each as one line; empty if there are none.
    std::vector<std::string> Check();

    /// For programs that give steps one by one, instead of Run. Sets up as a script does;
    /// \param setup  a script that ParseStrokeScript returned; its steps are ignored.
    void Open(const nlohmann::json& setup);
    /// Runs one step of a script. \param step  checked against the schema, as a part of one; it
    /// outlives the call. \param number  its index in the script, for messages.
    void Do(const nlohmann::json& step, std::size_t number);
    /// Saves the scene as a step "save" does, to this path.
    void Save(const std::string& scenePath) { document->Save(scenePath); }
    /// The work ended in good order: ends an open stroke, and the journal.
    void Close() { commands->Close(); }
    /// What was opened. Strokes may be made by its loop between steps; they go into the journal.
    /// All other changes are steps.
    Document& GetDocument() { return *document; }

private:
    void SetUp(const FieldReader& script);
    /// \throw HostError unless the script has one of "mesh" and "scene".
    void CheckHasOneSource(const FieldReader& script) const;
    /// Before the mesh or scene is opened.
    void PrepareProcess(const FieldReader& script);
    void OpenSource(const FieldReader& script);
    /// What the document runs its commands by.
    void StartCommands();
    void SelectFirstTool();
    void SetView(const FieldReader& script);
    void RunPreferences(const FieldReader& preferences);
    void CheckSetUp(const FieldReader& script, std::vector<std::string>& faults);
    void StartTrace();
    void FinishTrace();
    void FinishTraceAfterError();
    void StartJournal(const FieldReader& script);
    void RunAndReport(const FieldReader& step);
    /// Counts the strokes of a script for NextStepLabel.
    void CountStrokes(const FieldReader& steps);
    /// The text that progress shows for a step. To be called once for each step, in order, because
    /// it numbers the strokes.
    std::string NextStepLabel(const FieldReader& step);
    /// \throw Cancelled when the job cancels.
    void ThrowIfCancelled() const;
    /// The file that a field names, which must exist.
    std::string InputPath(const FieldReader& file) const;

    /// As given.
    std::string givenPath;
    /// With the name of the script in messages.
    CommandOptions options;
    std::string preferencesFile;
    TraceOptions traceOptions;
    /// Outlives the document, whose brush it observes.
    std::unique_ptr<TraceRecorder> trace;
    std::unique_ptr<Document> document;
    JournalOptions journalOptions;
    /// Ends before the document.
    std::unique_ptr<CommandRunner> commands;
    ScriptResult result;
    bool strict = false;
    /// Strokes of the script, and those that began up to the current step.
    std::size_t strokeCount = 0;
    std::size_t strokesBegun = 0;
};

}  // namespace trovik
