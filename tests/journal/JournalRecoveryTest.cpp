// SPDX-License-Identifier: Apache-2.0

/// \file Tests that documents recovered from a journal are bit-identical to the originals.
#include "framework/document/DocumentStroke.h"
#include "framework/errors/Cancelled.h"
#include "framework/errors/HostError.h"
#include "framework/script/JournalRecovery.h"
#include "framework/script/ScriptDocument.h"
#include "framework/strokes/DabAtHit.h"
#include "framework/strokes/DabStrength.h"
#include "tests/jobs/TestJob.h"
#include "tests/journal/RecoveredJournal.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>

namespace trovik::test {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

TEST_F(RecoveredJournal, EqualsTheSceneThatTheScriptSaved) {
    json steps = {Tool("Sculpt"), Stroke(0.5f, 0.2f), Tool("Spray"), Stroke(0.3f, 0.1f)};
    Run(steps);
    ASSERT_EQ(failure, "");
    const std::string recovered = Recovered();
    fs::remove(Journal());
    steps.push_back({{"save", "saved.trovik"}});
    Run(steps);
    EXPECT_EQ(recovered, TemporaryFolder::Content(Scene("saved")));
}

TEST_F(RecoveredJournal, ContainsStrokesMadeOutsideOfSteps) {
    auto runner = Open();
    Document& document = runner->GetDocument();
    const json tool = Tool("Wax");
    runner->Do(tool, 0);
    document.Geometry().History().SetNextLabel("by hand");
    document.Loop().Begin(BrushOperation::ModifierNone, 5);
    DabThroughTheLoop(document, 0.4f, 0.1f);
    DabThroughTheLoop(document, 0.3f, 0.2f);
    const json stronger = {{"set", {{"strength", 90}}}};
    runner->Do(stronger, 1);
    DabThroughTheLoop(document, 0.2f, 0.2f);
    document.Loop().RevertStroke();
    DabThroughTheLoop(document, -0.2f, 0.3f);
    document.Loop().WholeMesh(0.02f, true);
    document.Loop().End();
    const json back = {{"undo", 1}};
    const json again = {{"redo", 1}};
    runner->Do(back, 2);
    runner->Do(again, 3);
    document.Loop().Begin(BrushOperation::ModifierSmooth, 6);
    DabThroughTheLoop(document, 0.1f, 0.1f);

    const RecoveredWork work = RecoverJournal(Journal(), Scene("recovered"));
    EXPECT_EQ(work.content.steps.size(), 7u);
    EXPECT_EQ(work.dabs, 6u);
    Document& redone = work.runner->GetDocument();
    document.Loop().End();
    EXPECT_EQ(StateOf(redone), StateOf(document));
    ASSERT_GE(redone.Geometry().History().StepCount(), 2u);
    EXPECT_EQ(redone.Geometry().History().Label(0), "by hand");
    document.Save(Scene("live"));
    EXPECT_EQ(TemporaryFolder::Content(Scene("recovered")),
              TemporaryFolder::Content(Scene("live")));
}

TEST_F(RecoveredJournal, ContinuesAfterAFailedStep) {
    auto runner = Open();
    const json steps[] = {Tool("Sculpt"),
                          {{"stroke", {{"dabs", {{{"face", 3}}, {{"face", 9999}}}}}}},
                          {{"undo", 1}},
                          {{"undo", 5}},
                          Stroke(0.2f, 0.2f)};
    int failures = 0;
    for (std::size_t i = 0; i < std::size(steps); ++i) {
        try {
            runner->Do(steps[i], i);
        } catch (const HostError&) {
            ++failures;
        }
    }
    EXPECT_EQ(failures, 2);
    runner->GetDocument().WriteScene(Scene("live"));
    EXPECT_EQ(Recovered(), TemporaryFolder::Content(Scene("live")));
}

TEST_F(RecoveredJournal, StartsFromTheLastSave) {
    Run({Tool("Sculpt"), Stroke(0.5f, 0.2f), {{"save", "work.trovik"}}, Stroke(0.1f, 0.2f)});
    ASSERT_EQ(failure, "");
    // Neither the script nor the mesh is needed any more.
    fs::remove(folder.Path("cube.obj"));
    fs::remove(script);
    const RecoveredWork work = RecoverJournal(Journal(), Scene("recovered"));
    EXPECT_EQ(work.content.base.source, Scene("work"));
    EXPECT_EQ(work.steps, 1u);
    EXPECT_EQ(work.content.past.size(), 2u);
}

TEST_F(RecoveredJournal, ContainsPenAndFreezeBrushSettingsFromBeforeASave) {
    const json pen = {{"set",
                       {{"sizeCurve", {{0, 0.2}, {1, 1}}},
                        {"tilt", {{"size", 0.5}}},
                        {"randomSize", 0.4},
                        {"pressureControlsSize", true}}}};
    const json steps = {Tool("Sculpt"),
                        pen,
                        {{"tool", "Freeze"}, {"set", {{"strength", 35}, {"falloff", "cone"}}}},
                        {{"save", "work.trovik"}},
                        Stroke(0.5f, 0.2f),
                        Tool("Wax"),
                        {{"save", "work.trovik"}},
                        Stroke(0.3f, 0.1f),
                        {{"tool", "Freeze"}},
                        Stroke(-0.5f, 0.4f)};
    Run(steps);
    ASSERT_EQ(failure, "");
    const std::string recovered = Recovered();
    fs::remove(Journal());
    json saved = steps;
    saved.push_back({{"save", "end.trovik"}});
    Run(saved);
    EXPECT_EQ(recovered, TemporaryFolder::Content(Scene("end")));
}

TEST_F(RecoveredJournal, ReadsSettingsThatOldJournalsStoredOutsideTheirScene) {
    auto runner = Open();
    runner->Save(Scene("work"));
    runner->Close();
    fs::remove(Journal());
    JournalBase base;
    base.program = "trovik";
    base.script = script;
    base.source = Scene("work");
    base.content = HashFile(base.source);
    base.setup = {{"scene", base.source}, {"preferences", json::object()}};
    base.carried = json::array({{{"set", {{"airbrush", 20}}}}});
    {
        trovik::Journal journal({Journal(), false}, base);
        journal.BeginStep({{"set", {{"randomSize", 0.25}}}});
        journal.EndStep({}, "");
    }
    const RecoveredWork work = RedoJournal(Journal());
    EXPECT_EQ(work.runner->GetDocument().Settings().dynamics.airbrush, 20.0f);
    EXPECT_EQ(work.runner->GetDocument().Settings().dynamics.randomSize, 0.25f);
}

TEST_F(RecoveredJournal, ContainsAbandonedLiveStrokes) {
    auto runner = Open();
    Document& document = runner->GetDocument();
    json steps = json::array();
    std::vector<uint32_t> states;
    for (const char* tool : {"Sculpt", "Freeze", "Grab", "SnakeHook", "ElasticGrab", "Wax"}) {
        steps.push_back(Tool(tool));
        steps.back()["set"]["randomSize"] = 0.5;
    }
    const auto draw = [&](DocumentStroke& stroke, float y) {
        for (int i = 0; i < 40; ++i) {
            const auto way = static_cast<float>(i);
            PathSample sample({420.0f + 3.0f * way, y + 0.5f * way, 0.0f}, 0.25f + 0.01f * way);
            sample.time = 0.008 * i;
            stroke.Add(sample);
        }
    };
    for (std::size_t i = 0; i < steps.size(); ++i) {
        runner->Do(steps[i], i);
        DocumentStroke kept(document);
        draw(kept, 330.0f);
        kept.Release();
        states.push_back(StateOf(document));
        DocumentStroke abandoned(document);
        draw(abandoned, 360.0f);
        EXPECT_NE(StateOf(document), states.back());
        abandoned.Abandon();
        EXPECT_EQ(StateOf(document), states.back());
        if (i > 0) {
            EXPECT_NE(states[i], states[i - 1]);
        }
    }
    const RecoveredWork work = RedoJournal(Journal());
    EXPECT_EQ(StateOf(work.runner->GetDocument()), states.back());
    EXPECT_EQ(work.steps, 18u);
    EXPECT_EQ(work.runner->GetDocument().Settings().strokesBegun, 12u);
}

TEST_F(RecoveredJournal, ContainsUndoOfWorkBeforeASave) {
    const json steps = {Tool("Sculpt"),
                        Stroke(0.5f, 0.2f),
                        Stroke(0.2f, 0.3f),
                        Stroke(0.1f, 0.5f),
                        {{"undo", 1}},
                        {{"save", "work.trovik"}},
                        {{"redo", 1}},
                        {{"undo", 2}},
                        Stroke(0.1f, 0.1f),
                        {{"undo", 2}},
                        {{"redo", 1}}};
    Run(steps);
    ASSERT_EQ(failure, "");
    const std::string recovered = Recovered();
    // There is exactly one snapshot, from which the journal starts.
    std::size_t snapshots = 0;
    for (const auto& entry : fs::directory_iterator(folder.Path("")))
        if (entry.path().filename().string().rfind("work.journal.", 0) == 0) ++snapshots;
    EXPECT_EQ(snapshots, 1u);
    fs::remove(Journal());
    json saved = steps;
    saved.push_back({{"save", "end.trovik"}});
    Run(saved);
    EXPECT_EQ(recovered, TemporaryFolder::Content(Scene("end")));
}

/// Simulates a process that dies between renaming the scene and renaming the journal.
TEST_F(RecoveredJournal, StartsFromASaveThatOnlyTheOldJournalContains) {
    class NoNewJournal : public DiskCalls {
    public:
        bool armed = false;
        int Sync(int) override { return 0; }
        int Rename(const char* from, const char* to) override {
            if (!armed || std::string(to).find(".journal") == std::string::npos)
                return DiskCalls::Rename(from, to);
            errno = EIO;
            return -1;
        }
    };
    NoNewJournal failing;
    DiskCalls::Use(&failing);
    auto runner = Open();
    const json steps[] = {Tool("Sculpt"), Stroke(0.5f, 0.2f), {{"save", "work.trovik"}}};
    runner->Do(steps[0], 0);
    runner->Do(steps[1], 1);
    failing.armed = true;
    runner->Do(steps[2], 2);
    DiskCalls::Use(&disk);
    fs::remove(folder.Path("cube.obj"));
    EXPECT_EQ(Recovered(), TemporaryFolder::Content(Scene("work")));
    fs::remove(Scene("work"));
    const std::string message = MessageOf<HostError>([this] { Recovered(); });
    EXPECT_NE(message.find(Journal()), std::string::npos) << message;
    EXPECT_NE(message.find("cube.obj, is missing or has changed"), std::string::npos) << message;
}

TEST_F(RecoveredJournal, RefusesAChangedMeshOrStamp) {
    folder.Fill("dot.pgm", "P2 2 2 255 255 128 64 255\n");
    const json stamp = {{"tool", "Sculpt"}, {"set", {{"stamp", "dot.pgm"}, {"radius", 0.3}}}};
    Run({stamp, Stroke(0.3f, 0.2f)});
    ASSERT_EQ(failure, "");
    ASSERT_EQ(ReadJournal(Journal()).stamps.size(), 1u);
    EXPECT_FALSE(Recovered().empty());
    folder.Fill("dot.pgm", "P2 2 2 255 0 128 64 255\n");
    std::string message = MessageOf<HostError>([this] { Recovered(); });
    EXPECT_NE(message.find("dot.pgm has changed since the work was recorded"), std::string::npos)
        << message;
    folder.Fill("dot.pgm", "P2 2 2 255 255 128 64 255\n");
    std::ofstream(folder.Path("cube.obj"), std::ios::app) << "# another\n";
    message = MessageOf<HostError>([this] { Recovered(); });
    EXPECT_NE(message.find("cube.obj, is missing or has changed"), std::string::npos) << message;
}

// When the document ends the open stroke, the object that counted the dabs of the recovery no
// longer exists.
TEST_F(RecoveredJournal, ThatFailsWithinAStrokeLeavesNoListener) {
    script = FillScript(folder, json::array());
    JournalBase base;
    base.program = "a test";
    base.script = script;
    base.source = folder.Path("cube.obj");
    base.content = HashFile(base.source);
    base.setup = {{"mesh", base.source}};
    {
        trovik::Journal journal({Journal(), false}, base);
        journal.BeginStep({{"tool", "Sculpt"}});
        journal.EndStep({}, "Sculpt");
        journal.BeginStep({{"stroke", {{"open", true}, {"dabs", {{{"face", 0}}}}}}});
        journal.DabDone();
        journal.DabDone();
        journal.EndStep({}, "Sculpt");
    }
    const std::string message = MessageOf<HostError>([this] { Recovered(); });
    EXPECT_NE(message.find("made 1 dabs, but the journal has 2"), std::string::npos) << message;
}

// Mirrored sides that the stroke skipped are also skipped during recovery, and recovery can be
// cancelled between the remaining sides.
TEST_F(RecoveredJournal, ContainsInterruptedMirroredStrokes) {
    uint64_t questions = 0;
    for (const bool isBroken : {true, false}) {
        SCOPED_TRACE(isBroken);
        std::optional<uint32_t> state;
        uint64_t dabs = 0;
        {
            const auto runner = Open({"x", "y"});
            Document& document = runner->GetDocument();
            runner->Do({{"tool", "Flatten"}, {"set", {{"strength", 60}, {"globalPlane", true}}}},
                       0);
            document.Loop().Begin(BrushOperation::ModifierNone, 5);
            DabThroughTheLoop(document, 0.4f, 0.6f);
            DabThroughTheLoop(document, 0.6f, 0.7f);
            if (isBroken)
                document.Loop().Break();
            else
                document.Loop().End();
            dabs = document.Totals().dabs;
            state = StateOf(document);
        }
        EXPECT_EQ(dabs, isBroken ? 4u : 8u);
        RecoveryOptions options;
        TestJob whole(TestJob::never, TestJob::WithoutClock());
        options.progress.job = &whole;
        const RecoveredWork work = RedoJournal(Journal(), options);
        EXPECT_EQ(StateOf(work.runner->GetDocument()), *state);
        EXPECT_EQ(work.runner->GetDocument().Totals().dabs, dabs);
        const uint64_t all = whole.reports;
        TestJob last(all, TestJob::WithoutClock());
        options.progress.job = &last;
        EXPECT_THROW(RedoJournal(Journal(), options), Cancelled);
        EXPECT_EQ(last.reports, all);
        // The second pair of sides adds one report for each of its two dabs.
        if (isBroken) questions = all;
        EXPECT_EQ(all, isBroken ? questions : questions + 2);
        fs::remove(Journal());
    }
}

TEST_F(RecoveredJournal, WritesNoFilesExceptTheScene) {
    Run({Tool("Sculpt"), Stroke(0.3f, 0.2f), {{"export", {{"file", "out.ply"}}}}});
    ASSERT_EQ(failure, "");
    fs::remove(folder.Path("out.ply"));
    Recovered();
    EXPECT_FALSE(fs::exists(folder.Path("out.ply")));
}

}  // namespace
}  // namespace trovik::test
