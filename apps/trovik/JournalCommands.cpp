// SPDX-License-Identifier: Apache-2.0
#include "Commands.h"
#include "JsonOutput.h"
#include "ProgressLine.h"
#include "TimeLapse.h"
#include "framework/errors/HostError.h"
#include "framework/io/ContentHash.h"
#include "framework/scene/SceneFile.h"
#include "framework/script/JournalRecovery.h"

#include <cstdio>
#include <filesystem>
#include <memory>

namespace trovik {

namespace {

struct RecoverOptions {
    std::string journal;
    std::string scene;
    bool untilDamage = false;
    bool quiet = false;
    bool json = false;
};

void Recover(const RecoverOptions& options) {
    if (!IsScenePath(options.scene))
        throw HostError(options.scene + ": the name of a scene file must end in .trovik");
    ProgressLine line(options.quiet);
    RecoveryOptions recovery;
    recovery.untilDamage = options.untilDamage;
    recovery.progress.step = [&line](std::size_t done, std::size_t count, const std::string& what) {
        line.Step(done, count, what);
    };
    recovery.progress.job = &line;
    RecoveredWork work = RecoverJournal(options.journal, options.scene, recovery);
    line.Finish();
    LevelGeometry& geometry = work.runner->GetDocument().Geometry();
    const uint64_t vertices = geometry.Bound()->VertexCount();
    if (options.json) {
        const nlohmann::json summary = {{"steps", work.steps},
                                        {"dabs", work.dabs},
                                        {"vertices", vertices},
                                        {"levels", geometry.LevelCount()},
                                        {"notes", work.notes},
                                        {"file", options.scene}};
        PrintJson(summary);
        return;
    }
    for (const std::string& note : work.notes) std::fprintf(stderr, "trovik: %s\n", note.c_str());
    if (options.quiet) return;
    std::printf("steps           %zu\n", work.steps);
    std::printf("dabs            %llu\n", static_cast<unsigned long long>(work.dabs));
    std::printf("mesh            %llu vertices, %u levels\n",
                static_cast<unsigned long long>(vertices),
                geometry.LevelCount());
    std::printf("wrote           %s\n", options.scene.c_str());
}

struct HistoryOptions : TimeLapseArguments {
    std::string file;
    bool untilDamage = false;
};

/// Returns the journal, or the one next to a scene. \throw HostError if one of the files is
/// missing.
std::string JournalPath(const HistoryOptions& options) {
    if (!IsScenePath(options.file)) return options.file;
    std::string journalPath = options.file + ".journal";
    std::error_code ignored;
    if (!std::filesystem::exists(options.file, ignored))
        throw HostError(options.file + ": no such file");
    if (!std::filesystem::exists(journalPath, ignored))
        throw HostError(options.file +
                        ": a scene's steps are in its journal, but there is no file " +
                        journalPath);
    return journalPath;
}

/// Reads the journal. If a journal next to a scene does not belong to the current version of the
/// scene, adds a note.
JournalContent JournalOf(const HistoryOptions& options, const std::string& journalPath) {
    JournalContent content = ReadJournal(journalPath, options.untilDamage);
    if (!IsScenePath(options.file)) return content;
    const ContentHash present = HashFile(options.file);
    bool isOfScene = content.base.content == present;
    for (const JournalSave& save : content.saves)
        isOfScene = isOfScene || save.scene.content == present;
    if (!isOfScene)
        content.notes.push_back(journalPath +
                                " does not belong to the current version of this scene");
    return content;
}

std::string Count(uint64_t number) { return number == 0 ? "" : std::to_string(number); }

void PrintHistory(const HistoryOptions& options, const JournalContent& content) {
    nlohmann::json steps = content.past;
    const std::size_t pastSteps = steps.size();
    for (const JournalStep& step : content.steps) steps.push_back(SummaryOf(step));
    if (options.json) {
        const nlohmann::json all = {{"file", options.file},
                                    {"startedFrom", content.base.source},
                                    {"program", content.base.program},
                                    {"stepsBeforeStart", pastSteps},
                                    {"closed", content.isClosed},
                                    {"steps", steps},
                                    {"notes", content.notes}};
        PrintJson(all);
        return;
    }
    if (options.quiet) return;
    std::printf("%6s  %8s  %10s  %12s  %s\n", "step", "dabs", "vertices", "bytes", "name");
    for (std::size_t i = 0; i < steps.size(); ++i) {
        if (i == pastSteps)
            std::printf("        steps since %s was opened:\n", content.base.source.c_str());
        const nlohmann::json& step = steps[i];
        std::printf("%6zu  %8s  %10s  %12s  %s%s\n",
                    i + 1,
                    Count(step.value("dabs", uint64_t{0})).c_str(),
                    Count(step.value("vertices", uint64_t{0})).c_str(),
                    Count(step.value("undoBytes", uint64_t{0})).c_str(),
                    step.value("step", std::string()).c_str(),
                    step.value("finished", true) ? "" : " (unfinished)");
    }
    if (!content.isClosed) std::printf("The run was interrupted or is still active.\n");
    for (const std::string& note : content.notes)
        std::fprintf(stderr, "trovik: %s\n", note.c_str());
}

void RunHistory(const HistoryOptions& options) {
    const std::string journalPath = JournalPath(options);
    const JournalContent content = JournalOf(options, journalPath);
    if (options.destination.empty())
        PrintHistory(options, content);
    else
        WriteTimeLapse(options, options.file, journalPath, content, options.untilDamage);
}

}  // namespace

void AddRecoverCommand(CLI::App& program) {
    auto options = std::make_shared<RecoverOptions>();
    CLI::App* verb = program.add_subcommand(
        "recover", "Replays a journal after a crash and saves the result as a scene");
    verb->add_option("journal", options->journal, "Journal (see docs/journal.md)")->required();
    verb->add_option("-o,--output", options->scene, "Scene file to write (*.trovik)")->required();
    verb->add_flag(
        "--until-damage", options->untilDamage, "Recovers a damaged journal up to the damage");
    verb->add_flag("-q,--quiet", options->quiet, "Prints no progress and no summary");
    verb->add_flag("--json", options->json, "Prints the summary as JSON on standard output");
    verb->callback([options] { Recover(*options); });
}

void AddHistoryCommand(CLI::App& program) {
    auto options = std::make_shared<HistoryOptions>();
    CLI::App* verb = program.add_subcommand(
        "history",
        "Lists the steps of a journal, or of the journal next to a scene, or renders them as a "
        "time lapse");
    verb->add_option(
            "file", options->file, "Journal, or scene (FILE.trovik with FILE.trovik.journal)")
        ->required();
    verb->add_flag(
        "--until-damage", options->untilDamage, "Reads a damaged journal up to the damage");
    AddTimeLapseArguments(*verb, *options);
    verb->add_flag("-q,--quiet", options->quiet, "Prints only errors");
    verb->add_flag("--json", options->json, "Prints JSON on standard output");
    verb->callback([options] { RunHistory(*options); });
}

}  // namespace trovik
