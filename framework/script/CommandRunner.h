// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/script/CommandContext.h"
#include "framework/script/FieldReader.h"
#include "framework/script/JournalRecorder.h"

#include <nlohmann/json.hpp>

#include <memory>
#include <string>

namespace trovik {

/// Where the files of steps are, and who receives their progress.
struct CommandOptions {
    /// Name of the steps in messages, and the file whose folder is searched for the files that they
    /// read; it need not exist.
    std::string name = "step";
    /// Folder for the files that they write; the working folder if empty.
    std::string outputFolder;
    /// Allows steps to write outside of that folder.
    bool outsideAllowed = false;
    /// Ends an open stroke before a step that cannot run during one, as users of an application
    /// expect; otherwise the step is refused.
    bool endsOpenStroke = false;
    ScriptProgress progress;
};

/// Runs steps of stroke scripts on a document, each a command of the table of commands
/// (framework/script/Command.h) or several: checks that it can run while a stroke is open, records
/// it in the journal, runs it, and gives its errors their place. Scripts, recovery, applications
/// and bindings change documents by this class; live strokes are made by DocumentStroke in between.
///
/// Use it on the thread of the document, which must outlive it.
class TROVIK_API CommandRunner {
public:
    explicit CommandRunner(Document& document, CommandOptions options = {});
    CommandRunner(const CommandRunner&) = delete;
    CommandRunner& operator=(const CommandRunner&) = delete;

    /// Records the work from now on. The history of the document must be empty.
    /// \param setup  a stroke script without steps that opens and sets up the document as it is.
    void StartJournal(const JournalOptions& options, const nlohmann::json& setup);

    /// Runs a step such as {"subdivide": 1}. Checks it against the schema of stroke scripts first.
    /// \throw HostError "NAME: POINTER: reason", with the pointer within the step. A step that
    /// throws may have changed something before; undo steps show what.
    /// \throw Cancelled if `progress.job` cancels.
    void Do(const nlohmann::json& step);
    /// The same for a step of a script that was checked as a whole.
    void Do(const FieldReader& step);
    /// Runs one command for the setup of a document: without journal, and without regard to open
    /// strokes. \param parameters  checked against the schema.
    void SetUp(const std::string& command, const FieldReader& parameters);
    /// Calls the `prepare` function of the step's commands.
    void Prepare(const FieldReader& step);
    /// Checks a step that is not run; see CommandEntry::check. Selects tools and applies settings,
    /// transforms, mirrors and cameras. \param report  see CommandEntry.
    void Check(const FieldReader& step,
               const std::function<void(const std::function<void()>&)>& report);
    /// Passes problems of history and journal to the progress and to the document's observers.
    void ReportProblems();
    /// The work ended in good order: ends an open stroke, and the journal.
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
    /// Attached to the document until its own end.
    std::unique_ptr<JournalRecorder> journal;
};

}  // namespace trovik
