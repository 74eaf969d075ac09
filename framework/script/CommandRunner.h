// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/script/CommandContext.h"
#include "framework/script/FieldReader.h"
#include "framework/script/JournalRecorder.h"

#include <nlohmann/json.hpp>

#include <memory>
#include <string>

namespace trovik {

/// Settings for running steps: folders, permissions, the handling of open strokes, and the progress
/// receiver.
struct CommandOptions {
    /// The name that messages use for the steps. It is also a file path: files that steps read are
    /// searched for in its folder. The file itself need not exist.
    std::string name = "step";
    /// Folder for the files that steps write; the working folder if empty.
    std::string outputFolder;
    /// Allows steps to write outside of that folder.
    bool outsideAllowed = false;
    /// Ends an open stroke before a step that cannot run during a stroke, as users of an
    /// application expect. Without this option, the step is rejected.
    bool endsOpenStroke = false;
    ScriptProgress progress;
};

/// Runs steps of stroke scripts on a document. Each step consists of one or more commands of the
/// command table (framework/script/Command.h). The runner checks whether a step can run while a
/// stroke is open, records it in the journal, runs it, and adds its position to error messages.
/// Scripts, recovery, applications and bindings change documents through this class. Between steps,
/// live strokes are applied with DocumentStroke.
///
/// Use it only on the document's thread; the document must outlive it.
class TROVIK_API CommandRunner {
public:
    explicit CommandRunner(Document& document, CommandOptions options = {});
    CommandRunner(const CommandRunner&) = delete;
    CommandRunner& operator=(const CommandRunner&) = delete;

    /// Starts a journal that records all work from now on. The document's history must be empty.
    /// \param setup  a stroke script without steps that opens and sets up the document in its
    /// current state.
    void StartJournal(const JournalOptions& options, const nlohmann::json& setup);

    /// Checks a step such as {"subdivide": 1} against the schema of stroke scripts and runs it.
    /// \throw HostError "NAME: POINTER: reason", with the pointer within the step. A step that
    /// throws may already have changed something; the undo steps show which changes were made.
    /// \throw Cancelled if `progress.job` is cancelled.
    void Do(const nlohmann::json& step);
    /// Runs a step of a script that has been checked as a whole.
    void Do(const FieldReader& step);
    /// Runs one command for the setup of a document. The command is not journaled, and there is no
    /// check for open strokes. \param parameters  checked against the schema.
    void SetUp(const std::string& command, const FieldReader& parameters);
    /// Calls the `prepare` function of the step's commands.
    void Prepare(const FieldReader& step);
    /// Checks a step without running it; see CommandEntry::check. However, tool selections,
    /// settings, transforms, mirrors and cameras do take effect. \param report  see CommandEntry.
    void Check(const FieldReader& step,
               const std::function<void(const std::function<void()>&)>& report);
    /// Passes history and journal errors to the progress receiver and to the document's observers.
    void ReportProblems();
    /// The reason why the journal is not being written, in one line; empty while it is being
    /// written, and if there is no journal. Also checks whether the journal's file still exists.
    /// ReportProblems does not report the failure of an interactive journal, because the program
    /// can call JournalFailure at any time.
    std::string JournalFailure();
    /// See JournalRecorder::Resume. Has no effect while the journal is being written, or if there
    /// is no journal.
    void ResumeJournal();
    /// Finishes the work: ends an open stroke, and then the journal.
    void Close();

    CommandContext& Context() { return context; }

private:
    void CheckOpenStroke(const FieldReader& step) const;
    void EndOpenStroke(const FieldReader& step);
    void Run(const FieldReader& step);

    std::string name;
    bool endsOpenStroke = false;
    ScriptFiles files;
    CommandContext context;
    /// Attached to the document until it is destroyed.
    std::unique_ptr<JournalRecorder> journal;
};

}  // namespace trovik
