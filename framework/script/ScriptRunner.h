// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/json/JsonVariables.h"
#include "framework/script/CommandRunner.h"
#include "framework/trace/TraceRecorder.h"

#include <memory>
#include <string>
#include <vector>

namespace trovik {

/// The result of one step.
struct StepReport {
    /// JSON pointer and kind of the step.
    std::string pointer, step;
    uint64_t dabs = 0;
    /// Vertices moved by strokes that ended in the step, each counted once per stroke.
    uint64_t verticesMoved = 0;
    /// Duration of the whole step, including work outside the brush.
    double milliseconds = 0.0;
    std::vector<std::string> warnings;
};

/// The result of a script.
struct ScriptResult {
    StrokeTotals totals;
    uint64_t vertices = 0;
    uint64_t faces = 0;
    uint32_t levels = 0;
    /// Files written, in order.
    std::vector<std::string> files;
    /// Reports of the steps, in order.
    std::vector<StepReport> steps;
};

/// Runs a stroke script (described in docs/stroke-script.md): opens the mesh or scene, sets up the
/// document and passes the steps to a CommandRunner. ScriptFiles describes which folders are
/// searched and which are written to.
/// \throw HostError with one line: file, JSON pointer, reason.
/// \throw Cancelled if its job is cancelled. Files written before an exception are kept.
class TROVIK_API ScriptRunner {
public:
    /// \param scriptPath  "-" for standard input.
    ScriptRunner(const std::string& scriptPath, std::string outputFolder, ScriptProgress progress);
    /// Allows the script to write outside of the output folder. Off by default.
    void AllowOutside(bool allowed) { options.outsideAllowed = allowed; }
    /// Sets a preferences file to load before the work starts; the script's own preferences take
    /// precedence. Without a file, preferences keep their defaults, or the values that the process
    /// has set.
    void SetPreferencesFile(const std::string& file) { preferencesFile = file; }
    /// Writes a trace of the run; see docs/trace.md. Call this before Run.
    void SetTrace(const TraceOptions& newOptions) { traceOptions = newOptions; }
    /// Records a journal of the run; see docs/journal.md. Call this before Run or Open.
    void SetJournal(const JournalOptions& newOptions) { journalOptions = newOptions; }
    /// Turns the warnings of a step into errors: Run throws instead of continuing.
    void SetStrict(bool on) { strict = on; }
    /// Replaces variables in the strings of the script (ReplaceVariables). Without variables, the
    /// default, strings are used unchanged. Call this before Run or Check.
    void SetVariables(const JsonVariables& newVariables) { variables = newVariables; }
    ScriptResult Run();
    /// Checks the script, the files that it reads and its settings, instead of running it. Opens
    /// the mesh or scene, applies no strokes and writes nothing. Does not find errors that depend
    /// on the results of earlier steps, such as invalid face numbers, level numbers or layer names.
    /// \return all errors found, one line each; empty if there are none.
    std::vector<std::string> Check();

    /// Sets up the document as a script does, for programs that pass steps one at a time instead of
    /// calling Run.
    /// \param setup  a script returned by ParseStrokeScript; its steps are ignored.
    void Open(const nlohmann::json& setup);
    /// Does the same for polygons in memory. No journal is recorded, because a journal names the
    /// file from which the work starts. \param name  replaces the file name in messages. \param
    /// setup  as above, with neither "mesh" nor "scene".
    void Open(const std::string& name, PolygonMesh polygons, const nlohmann::json& setup);
    /// Runs one step of a script. \param step  checked against the schema as part of a script; must
    /// outlive the call. \param number  index in the script, for messages.
    void Do(const nlohmann::json& step, std::size_t number);
    /// Saves the scene to this path, like the "save" step.
    void Save(const std::string& scenePath) { document->Save(scenePath); }
    /// Finishes the work: ends an open stroke and the journal.
    void Close() { commands->Close(); }
    /// Runs the document's commands; valid after Open.
    CommandRunner& Runner() { return *commands; }
    /// The opened document. Between steps, strokes may be applied with its loop; they are
    /// journaled. All other changes must be made by steps.
    Document& GetDocument() { return *document; }

private:
    /// Reads the script with its variables replaced; see ReadStrokeScript.
    nlohmann::json ReadScript(std::vector<JsonFault>* faults) const;
    void SetUp(const FieldReader& script);
    /// Sets up the opened document.
    void SetUpDocument(const FieldReader& script);
    /// \throw HostError unless the script has exactly one of "mesh" and "scene".
    void CheckHasOneSource(const FieldReader& script) const;
    /// Sets up the process before the mesh or scene is opened.
    void PrepareProcess(const FieldReader& script);
    void OpenSource(const FieldReader& script);
    /// Creates the runner of the document's commands.
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
    /// The progress label of a step. Call it once for each step, in order, because it numbers the
    /// strokes.
    std::string NextStepLabel(const FieldReader& step);
    /// \throw Cancelled if the job has been cancelled.
    void ThrowIfCancelled() const;
    /// Resolves a field that names an existing file.
    std::string InputPath(const FieldReader& file) const;

    /// The path of the script as it was given.
    std::string givenPath;
    /// Also contains the script's name for messages.
    CommandOptions options;
    std::string preferencesFile;
    JsonVariables variables;
    TraceOptions traceOptions;
    /// Outlives the document, whose brush it observes.
    std::unique_ptr<TraceRecorder> trace;
    std::unique_ptr<Document> document;
    JournalOptions journalOptions;
    /// Destroyed before the document.
    std::unique_ptr<CommandRunner> commands;
    ScriptResult result;
    bool strict = false;
    /// The number of strokes in the script, and the number of strokes begun so far, including the
    /// current step.
    std::size_t strokeCount = 0;
    std::size_t strokesBegun = 0;
};

}  // namespace trovik
