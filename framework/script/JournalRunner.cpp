// SPDX-License-Identifier: Apache-2.0

/// \file
/// Steps one by one, and what the journal hears of them.
#include "framework/errors/HostError.h"
#include "framework/errors/WorkStopped.h"
#include "framework/script/ScriptRunner.h"

#include <algorithm>
#include <iterator>

namespace trovik {

namespace {

/// Steps that change nothing. The journal hears of a save by the document.
constexpr const char* withoutTrace[] = {"picture", "sheet", "export", "save"};

bool IsJournaled(const nlohmann::json& step) {
    return std::none_of(std::begin(withoutTrace),
                        std::end(withoutTrace),
                        [&step](const char* name) { return step.contains(name); });
}

/// What the brush throws becomes the one line that users see.
std::string TextOf(Error* error) {
    std::string text = error->Message().toStdString();
    Error::Dispose(error);
    return text;
}

}  // namespace

void ScriptRunner::StartJournal(const FieldReader& script) {
    if (journalOptions.path.empty()) return;
    journal =
        std::make_unique<JournalRecorder>(journalOptions, *document, script.Json(), path, files);
}

void ScriptRunner::Open(const nlohmann::json& setup) {
    const FieldReader script(setup, path, "");
    SetUp(script);
    StartJournal(script);
}

void ScriptRunner::Do(const nlohmann::json& step, std::size_t number) {
    Do(FieldReader(step, path, "/steps/" + std::to_string(number)));
    TellProblems();
}

void ScriptRunner::Do(const FieldReader& step) {
    // It had only a comment.
    if (step.Size() == 0) return;
    const bool isJournaled = journal != nullptr && IsJournaled(step.Json());
    if (isJournaled) journal->BeginStep(step.Json());
    const auto end = [&](bool failed) {
        if (!isJournaled) return;
        journal->EndStep(failed);
    };
    try {
        CheckOpenStroke(step);
        RunStep(step);
    } catch (Error* error) {
        const std::string text = TextOf(error);
        end(true);
        step.Fail(text);
    } catch (const WorkStopped&) {
        // The step did not fail: it is one that was not finished, as after a crash.
        throw;
    } catch (...) {
        end(true);
        throw;
    }
    end(false);
}

void ScriptRunner::TellProblems() {
    // Steps that cannot be moved to disk stay in memory: undo is complete, so this is no warning.
    const std::string ofHistory = document->TakeHistoryProblem();
    if (!ofHistory.empty() && progress.message) progress.message(ofHistory);
    const std::string ofJournal = journal == nullptr ? std::string() : journal->TakeProblem();
    const auto& warn = progress.warning ? progress.warning : progress.message;
    if (!ofJournal.empty() && warn) warn(ofJournal);
}

void ScriptRunner::Save(const std::string& scenePath) { document->Save(scenePath); }

void ScriptRunner::Close() {
    document->Loop().End();
    if (journal != nullptr) journal->Close();
    TellProblems();
}

}  // namespace trovik
