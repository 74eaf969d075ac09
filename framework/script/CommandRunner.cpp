// SPDX-License-Identifier: Apache-2.0
#include "framework/script/CommandRunner.h"

#include "framework/errors/Cancelled.h"
#include "framework/json/JsonText.h"
#include "framework/script/Command.h"
#include "framework/script/ScriptDocument.h"

namespace trovik {

namespace {

/// Calls `visit` with the commands of a step and their parameters, in the order in which they run.
template <typename Visit>
void ForEachCommand(const FieldReader& step, const Visit& visit) {
    for (const CommandEntry& entry : Commands())
        if (step.Has(entry.traits.name)) visit(entry, step.At(entry.traits.name));
}

bool IsJournaled(const FieldReader& step) {
    bool journaled = true;
    ForEachCommand(step, [&](const CommandEntry& entry, const FieldReader&) {
        journaled = journaled && entry.traits.isJournaled;
    });
    return journaled;
}

/// Converts a brush exception to the line that is shown to users.
std::string TextOf(Error* error) {
    std::string text = error->Message().toStdString();
    Error::Dispose(error);
    return text;
}

}  // namespace

CommandRunner::CommandRunner(Document& document, CommandOptions options)
    : name(options.name),
      endsOpenStroke(options.endsOpenStroke),
      files(options.name, options.outputFolder),
      context(document, files, std::move(options.progress)) {
    files.AllowOutside(options.outsideAllowed);
}

void CommandRunner::StartJournal(const JournalOptions& options, const nlohmann::json& setup) {
    journal = std::make_unique<JournalRecorder>(
        options, context.document, setup, name, files, context.Job());
}

void CommandRunner::Do(const nlohmann::json& step) {
    nlohmann::json clean = step;
    RemoveComments(clean);
    // The step contained only a comment.
    if (clean.is_object() && clean.empty()) return;
    const nlohmann::json current = CheckedStep(clean, name);
    Do(FieldReader(current, name, ""));
    ReportProblems();
}

void CommandRunner::Do(const FieldReader& step) {
    context.warnings.clear();
    // The step contained only a comment.
    if (step.Size() == 0) return;
    EndOpenStroke(step);
    const bool isJournaled = journal != nullptr && IsJournaled(step);
    if (isJournaled) journal->BeginStep(step.Json());
    const auto end = [&](bool failed) {
        if (isJournaled) journal->EndStep(failed);
    };
    try {
        CheckOpenStroke(step);
        Run(step);
    } catch (Error* error) {
        const std::string text = TextOf(error);
        end(true);
        step.Fail(text);
    } catch (const Cancelled&) {
        // The step did not fail, but it is unfinished, as after a crash.
        if (isJournaled) journal->CancelStep();
        throw;
    } catch (...) {
        end(true);
        throw;
    }
    end(false);
}

void CommandRunner::Run(const FieldReader& step) {
    ForEachCommand(step, [&](const CommandEntry& entry, const FieldReader& parameters) {
        const CommandTraits& traits = entry.traits;
        context.document.AnnounceCommand(traits.traceName != nullptr ? traits.traceName
                                                                     : traits.name);
        entry.run(context, parameters);
    });
}

void CommandRunner::SetUp(const std::string& command, const FieldReader& parameters) {
    FindCommand(command)->run(context, parameters);
}

void CommandRunner::Prepare(const FieldReader& step) {
    ForEachCommand(step, [&](const CommandEntry& entry, const FieldReader& parameters) {
        if (entry.prepare) entry.prepare(context, parameters);
    });
}

void CommandRunner::Check(const FieldReader& step,
                          const std::function<void(const std::function<void()>&)>& report) {
    report([&] { CheckOpenStroke(step); });
    ForEachCommand(step, [&](const CommandEntry& entry, const FieldReader& parameters) {
        entry.check(context, parameters, report);
    });
}

// Called before the step begins, so that the journal records the end of the stroke first.
void CommandRunner::EndOpenStroke(const FieldReader& step) {
    if (!endsOpenStroke || !context.IsStrokeOpen()) return;
    bool isRefused = false;
    ForEachCommand(step, [&](const CommandEntry& entry, const FieldReader&) {
        isRefused = isRefused || entry.traits.duringStroke == DuringStroke::Refused;
    });
    if (isRefused) context.document.Loop().End([this] { context.ThrowIfCancelled(); });
}

void CommandRunner::CheckOpenStroke(const FieldReader& step) const {
    if (!context.IsStrokeOpen()) return;
    ForEachCommand(step, [](const CommandEntry& entry, const FieldReader& parameters) {
        if (entry.traits.duringStroke == DuringStroke::Refused)
            parameters.Fail(
                "a stroke is open; end it first with {\"stroke\": {\"continue\": true}}");
    });
}

void CommandRunner::ReportProblems() {
    // Undo steps that cannot be moved to disk stay in memory. No data is lost, so this is not a
    // warning.
    const ScriptProgress& progress = context.progress;
    const std::string ofHistory = context.document.TakeHistoryProblem();
    if (!ofHistory.empty() && progress.message) progress.message(ofHistory);
    if (journal == nullptr || journal->GetJournal().IsInteractive()) return;
    const std::string ofJournal = journal->TakeProblem();
    if (ofJournal.empty()) return;
    const auto& warn = progress.warning ? progress.warning : progress.message;
    if (warn) warn(ofJournal);
    context.document.ReportProblem(ofJournal);
}

void CommandRunner::ResumeJournal() {
    if (journal != nullptr) journal->Resume(context.Job());
}

std::string CommandRunner::JournalFailure() {
    if (journal == nullptr) return {};
    journal->RequireFile();
    return journal->GetJournal().Failure();
}

void CommandRunner::Close() {
    context.document.Loop().End();
    if (journal != nullptr) journal->Close();
    ReportProblems();
}

}  // namespace trovik
