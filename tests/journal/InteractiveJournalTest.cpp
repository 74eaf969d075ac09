// SPDX-License-Identifier: Apache-2.0

/// \file Tests the journals of programs that keep running after saves, cancelled steps and disk
/// failures.
#include "framework/document/DocumentStroke.h"
#include "framework/errors/Cancelled.h"
#include "framework/jobs/JobControl.h"
#include "tests/journal/RecoveredJournal.h"

#include <cerrno>
#include <filesystem>
#include <vector>

namespace trovik::test {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

/// A program that keeps running after a save or a cancelled step, as an application does.
class InteractiveJournal : public RecoveredJournal {
protected:
    std::unique_ptr<ScriptRunner> OpenInteractive(ScriptProgress progress = {}) {
        script = FillScript(folder, json::array());
        auto runner = std::make_unique<ScriptRunner>(script, folder.Path(""), std::move(progress));
        runner->SetJournal({.path = Journal(), .isInteractive = true});
        runner->Open(ReadStrokeScript(script));
        return runner;
    }

    static void Do(ScriptRunner& runner, const std::vector<json>& steps) {
        for (std::size_t i = 0; i < steps.size(); ++i) runner.Do(steps[i], i);
    }

    std::size_t CountBesideJournal() const {
        std::size_t count = 0;
        for (const auto& entry : fs::directory_iterator(folder.Path("")))
            if (entry.path().filename().string().rfind("work.journal.", 0) == 0) ++count;
        return count;
    }
};

TEST_F(InteractiveJournal, RecordsUndoOfWorkBeforeASaveAsAStep) {
    auto runner = OpenInteractive();
    Do(*runner,
       {Tool("Sculpt"),
        Stroke(0.5f, 0.2f),
        Stroke(0.2f, 0.3f),
        Stroke(0.1f, 0.5f),
        {{"undo", 1}},
        {{"save", "work.trovik"}}});
    const auto bytes = fs::file_size(Journal());
    Do(*runner, {{{"redo", 1}}, {{"undo", 2}}});
    EXPECT_EQ(CountBesideJournal(), 0u);
    EXPECT_LT(fs::file_size(Journal()), bytes + 1000);
    Do(*runner, {Stroke(0.1f, 0.1f), {{"undo", 2}}, {{"redo", 1}}});
    const std::string recovered = Recovered();
    runner->Save(Scene("end"));
    EXPECT_EQ(recovered, TemporaryFolder::Content(Scene("end")));
}

TEST_F(InteractiveJournal, KeepsTheSceneItStartsFromWhenASaveReplacesIt) {
    script = FillScript(folder, {Tool("Sculpt"), Stroke(0.4f, 0.4f), {{"save", "work.trovik"}}});
    ScriptRunner(script, folder.Path(""), {}).Run();
    ScriptRunner runner("script", folder.Path(""), {});
    runner.SetJournal({.path = Journal(), .isInteractive = true});
    runner.Open({{"scene", Scene("work")}, {"steps", json::array()}});
    const std::vector<json> steps = {
        Stroke(0.5f, 0.2f), Stroke(0.2f, 0.3f), {{"save", "work.trovik"}}};
    Do(runner, steps);
    EXPECT_EQ(CountBesideJournal(), 1u);
    Do(runner, {{{"undo", 2}}, Stroke(0.1f, 0.1f), {{"save", "work.trovik"}}, {{"undo", 1}}});
    EXPECT_EQ(CountBesideJournal(), 1u);
    const std::string recovered = Recovered();
    runner.Save(Scene("end"));
    EXPECT_EQ(recovered, TemporaryFolder::Content(Scene("end")));
}

TEST_F(InteractiveJournal, StartsFromTheNewestSaveThatNoUndoGoesBeyond) {
    auto runner = OpenInteractive();
    Do(*runner,
       {Tool("Sculpt"),
        Stroke(0.5f, 0.2f),
        {{"save", "work.trovik"}},
        Stroke(0.2f, 0.3f),
        Stroke(0.1f, 0.5f),
        {{"undo", 1}}});
    const RecoveredWork work = RedoJournal(Journal());
    EXPECT_EQ(work.steps, 3u);
    EXPECT_EQ(StateOf(work.runner->GetDocument()), StateOf(runner->GetDocument()));
    Do(*runner, {{{"undo", 2}}});
    const RecoveredWork whole = RedoJournal(Journal());
    EXPECT_EQ(whole.steps, 6u);
    EXPECT_EQ(StateOf(whole.runner->GetDocument()), StateOf(runner->GetDocument()));
}

TEST_F(InteractiveJournal, RecordsStrokesThatRefineTheMesh) {
    auto runner = OpenInteractive();
    Do(*runner,
       {{{"remesh", {{"edgeLength", 0.5}}}},
        Tool("Sculpt"),
        {{"set", {{"detail", {{"unit", "radius"}, {"length", 0.3}}}}}},
        Stroke(0.5f, 0.2f)});
    Document& document = runner->GetDocument();
    const auto draw = [&](float y) {
        DocumentStroke stroke(document);
        const auto height = static_cast<float>(document.View().height);
        const auto width = static_cast<float>(document.View().width);
        for (int i = 0; i < 12; ++i) {
            const float x = width * (0.42f + 0.01f * static_cast<float>(i));
            stroke.Add(PathSample{{x, height * y, 0.0f}, 0.5f});
        }
        stroke.Release();
    };
    const uint32_t faces = document.Geometry().Bound()->faceCount;
    draw(0.5f);
    EXPECT_NE(document.Geometry().Bound()->faceCount, faces);
    Do(*runner, {{{"set", {{"detail", {{"unit", "pixels"}, {"length", 12}}}}}}});
    draw(0.45f);
    Do(*runner, {{{"undo", 1}}});
    draw(0.55f);
    const std::string recovered = Recovered();
    runner->Save(Scene("end"));
    EXPECT_EQ(recovered, TemporaryFolder::Content(Scene("end")));
}

TEST_F(InteractiveJournal, CanBeReplayedFromItsStart) {
    auto runner = OpenInteractive();
    Do(*runner,
       {Tool("Sculpt"), Stroke(0.5f, 0.2f), {{"save", "work.trovik"}}, Stroke(0.2f, 0.3f)});
    RecoveryOptions options;
    options.fromStart = true;
    std::vector<uint32_t> states;
    options.afterStep = [&](Document& document) { states.push_back(StateOf(document)); };
    const RecoveredWork work = RedoJournal(Journal(), options);
    EXPECT_EQ(work.steps, 3u);
    EXPECT_TRUE(work.notes.empty());
    // Before the first step, after each of the three steps, and at the end.
    ASSERT_EQ(states.size(), 5u);
    EXPECT_EQ(states[0], states[1]);
    EXPECT_NE(states[1], states[2]);
    EXPECT_NE(states[2], states[3]);
    EXPECT_EQ(states[4], states[3]);
    EXPECT_EQ(states[4], StateOf(runner->GetDocument()));

    fs::remove(folder.Path("cube.obj"));
    const RecoveredWork later = RedoJournal(Journal(), options);
    EXPECT_EQ(later.steps, 1u);
    ASSERT_EQ(later.notes.size(), 1u);
    EXPECT_NE(later.notes[0].find("the replay starts from " + Scene("work")), std::string::npos)
        << later.notes[0];
    EXPECT_EQ(StateOf(later.runner->GetDocument()), StateOf(runner->GetDocument()));
}

TEST_F(InteractiveJournal, ContinuesAfterACancelledStep) {
    struct CountingJob : JobControl {
        CountingJob() : JobControl({1, {}}) {}
        bool Report(uint64_t, uint64_t, const char*) override {
            return reportsLeft == 0 || --reportsLeft > 0;
        }
        int reportsLeft = 0;
    };
    CountingJob job;
    ScriptProgress progress;
    progress.job = &job;
    auto runner = OpenInteractive(progress);
    Do(*runner, {Tool("Sculpt"), Stroke(0.5f, 0.2f)});
    const auto cancel = [&](const json& step, int reports) {
        SCOPED_TRACE(step.dump());
        job.reportsLeft = reports;
        EXPECT_THROW(runner->Do(step, 0), Cancelled);
        job.reportsLeft = 0;
    };
    cancel({{"subdivide", 2}}, 1);
    Do(*runner, {Stroke(0.2f, 0.3f)});
    cancel(Stroke(0.1f, 0.5f), 1);
    Document& document = runner->GetDocument();
    BeginStroke(document, BrushOperation::ModifierNone, {});
    DabThroughTheLoop(document, 0.2f, 0.4f);
    document.Loop().End();
    cancel({{"tool", "Smooth"}, {"subdivide", 2}}, 1);
    Do(*runner, {Stroke(0.3f, 0.1f)});
    const RecoveredWork work = RedoJournal(Journal());
    EXPECT_EQ(StateOf(work.runner->GetDocument()), StateOf(runner->GetDocument()));
}

TEST_F(InteractiveJournal, ContinuesFromASnapshotWhenItCanBeWrittenAgain) {
    class FullDisk : public DiskCalls {
    public:
        bool isFull = false;
        ssize_t Write(int file, const void* bytes, std::size_t size) override {
            if (!isFull) return DiskCalls::Write(file, bytes, size);
            errno = ENOSPC;
            return -1;
        }
        int Sync(int) override { return 0; }
    };
    FullDisk full;
    DiskCalls::Use(&full);
    auto runner = OpenInteractive();
    Do(*runner, {Tool("Sculpt"), Stroke(0.5f, 0.2f)});
    full.isFull = true;
    Do(*runner, {Stroke(0.2f, 0.3f)});
    EXPECT_NE(runner->Runner().JournalFailure().find(Journal()), std::string::npos);
    EXPECT_THROW(runner->Runner().ResumeJournal(), HostError);
    EXPECT_NE(runner->Runner().JournalFailure(), "");
    EXPECT_EQ(CountBesideJournal(), 0u);
    full.isFull = false;
    runner->Runner().ResumeJournal();
    EXPECT_EQ(runner->Runner().JournalFailure(), "");
    Do(*runner, {Stroke(0.1f, 0.5f)});
    DiskCalls::Use(&disk);
    const RecoveredWork work = RedoJournal(Journal());
    EXPECT_EQ(work.steps, 1u);
    EXPECT_EQ(StateOf(work.runner->GetDocument()), StateOf(runner->GetDocument()));
}

TEST_F(InteractiveJournal, FailsWhenItsFileIsRemoved) {
    auto runner = OpenInteractive();
    Do(*runner, {Tool("Sculpt"), Stroke(0.5f, 0.2f)});
    EXPECT_EQ(runner->Runner().JournalFailure(), "");
    fs::remove(Journal());
    EXPECT_NE(runner->Runner().JournalFailure().find(Journal()), std::string::npos);
    runner->Runner().ResumeJournal();
    EXPECT_EQ(runner->Runner().JournalFailure(), "");
    EXPECT_EQ(StateOf(RedoJournal(Journal()).runner->GetDocument()),
              StateOf(runner->GetDocument()));
}

}  // namespace
}  // namespace trovik::test
