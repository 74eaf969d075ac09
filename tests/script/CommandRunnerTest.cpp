// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/Cancelled.h"
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/script/CommandRunner.h"
#include "framework/script/JournalRecovery.h"
#include "tests/document/SculptedDocument.h"
#include "tests/files/TemporaryFolder.h"
#include "tests/jobs/TestJob.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace trovik::test {
namespace {

using nlohmann::json;

class CommandRunnerTest : public testing::Test {
protected:
    CommandRunnerTest() : document(SphereDocument()) {
        options.name = folder.Path("steps.json");
        options.outputFolder = folder.Path("out");
        runner = std::make_unique<CommandRunner>(*document, options);
    }

    void Do(const std::string& step) { runner->Do(json::parse(step)); }
    std::string Refusal(const std::string& step) {
        return MessageOf<HostError>([&] { Do(step); });
    }

    TemporaryFolder folder;
    CommandOptions options;
    std::unique_ptr<Document> document;
    std::unique_ptr<CommandRunner> runner;
};

TEST_F(CommandRunnerTest, RunsSteps) {
    Do(R"({"subdivide": 1, "comment": "ignored"})");
    EXPECT_EQ(document->Geometry().LevelCount(), 2u);
    Do(R"({"tool": "Wax", "set": {"strength": 55, "comment": "ignored"}})");
    EXPECT_EQ(document->State()->tool.name, "Wax");
    EXPECT_EQ(document->State()->tool.strength, 55.0f) << "with the tool that the step selects";
    Do(R"({"comment": "nothing"})");
    Do(R"({"stroke": {"surface": [[0, 0, 1]]}})");
    EXPECT_EQ(document->HistoryPosition(), 2u);
    Do(R"({"undo": 2})");
    EXPECT_EQ(document->Geometry().LevelCount(), 1u);
    Do(R"({"export": {"file": "a.ply"}})");
    EXPECT_TRUE(std::filesystem::exists(folder.Path("out/a.ply")));
    EXPECT_THAT(runner->Context().written, testing::ElementsAre(folder.Path("out/a.ply")));
}

TEST_F(CommandRunnerTest, ErrorsNameTheLocationInTheStep) {
    EXPECT_EQ(Refusal(R"({"set": {"raduis": 1}})"),
              options.name + ": /set/raduis: unknown setting; did you mean \"radius\"?");
    EXPECT_EQ(Refusal(R"({"undo": 1})"), options.name + ": /undo: there is nothing more to undo");
    EXPECT_EQ(Refusal(R"({"transform": {"scale": [1, 0, 1]}})"),
              options.name + ": /transform/scale: a scale must not be 0");
    EXPECT_EQ(Refusal(R"({"mirror": {"radial": 2, "planes": ["x", "x"]}})"),
              options.name + ": /mirror/planes/1: the axis is given twice");
    EXPECT_EQ(Refusal(R"({"stroke": {"surface": [[0, 0, 1, 2]]}})"),
              options.name + ": /stroke/surface/0/3: pressure must be between 0 and 1");
    EXPECT_EQ(Refusal(R"({"set": {"stamp": {"path": "x/none.png"}}})"),
              options.name +
                  ": /set/stamp/path: file not found: x/none.png is neither in the script's "
                  "folder nor in the output folder");
    EXPECT_EQ(Refusal(R"({"save": "../a.trovik"})"),
              options.name +
                  ": /save: \"../a.trovik\" leads out of the output folder; "
                  "use --allow-outside to permit it");
    EXPECT_EQ(Refusal(R"([1])"), options.name + ": /: expected an object, got an array of 1 item");
    EXPECT_EQ(document->HistoryPosition(), 0u);
}

TEST_F(CommandRunnerTest, RefusesCommandsThatCannotRunDuringAStroke) {
    Do(R"({"stroke": {"surface": [[0, 0, 1]], "open": true}})");
    const std::string before = BitsOf(*document);
    EXPECT_EQ(Refusal(R"({"subdivide": 1})"),
              options.name +
                  ": /subdivide: a stroke is open; end it first with {\"stroke\": "
                  "{\"continue\": true}}");
    Do(R"({"set": {"strength": 10}})");
    Do(R"({"camera": {"eye": [0, 0, 7]}})");
    EXPECT_EQ(BitsOf(*document), before);
    EXPECT_TRUE(document->IsStrokeOpen());
    Do(R"({"stroke": {"continue": true}})");
    Do(R"({"subdivide": 1})");
}

TEST_F(CommandRunnerTest, EndsTheStrokeForApplications) {
    options.endsOpenStroke = true;
    CommandRunner application(*document, options);
    DocumentStroke stroke(*document);
    Dab(*document, {0, 0, 1});
    application.Do(json::parse(R"({"set": {"strength": 10}})"));
    EXPECT_FALSE(stroke.IsOver());
    application.Do(json::parse(R"({"subdivide": 1})"));
    EXPECT_TRUE(stroke.IsOver());
    EXPECT_EQ(document->HistoryPosition(), 2u);
    EXPECT_EQ(document->State()->history[0].label, "Sculpt");
}

TEST_F(CommandRunnerTest, StepWithAnInvalidSampleChangesNothing) {
    Do(R"({"stroke": {"surface": [[0, 0, 1]], "open": true}})");
    const std::string before = BitsOf(*document);
    EXPECT_THROW(Do(R"({"stroke": {"surface": [[0, 1, 0], [1, 0, 0, 2]], "continue": true}})"),
                 HostError);
    EXPECT_EQ(BitsOf(*document), before);
    EXPECT_TRUE(document->IsStrokeOpen());
}

TEST_F(CommandRunnerTest, StopsWhenItsJobCancels) {
    TestJob job(1);
    options.progress.job = &job;
    CommandRunner stopped(*document, options);
    EXPECT_THROW(stopped.Do(json::parse(R"({"subdivide": 1})")), Cancelled);
    EXPECT_EQ(document->Geometry().LevelCount(), 1u);
    EXPECT_EQ(document->HistoryPosition(), 0u);
}

TEST_F(CommandRunnerTest, ReportsWarningsOfTheStep) {
    Do(R"({"mask": {"center": [9, 9, 9], "radius": 0.1}})");
    EXPECT_THAT(runner->Context().warnings, testing::ElementsAre("no vertex is selected"));
    Do(R"({"mask": "all"})");
    EXPECT_THAT(runner->Context().warnings, testing::IsEmpty());
}

// Steps, and live strokes between them, are recovered from the journal bit for bit.
TEST_F(CommandRunnerTest, WorkIsRecoveredFromTheJournal) {
    WriteMeshFile(folder.Path("sphere.ply"), SphereQuads(3));
    document = std::make_unique<Document>(folder.Path("sphere.ply"));
    runner = std::make_unique<CommandRunner>(*document, options);
    json setup = json::parse(R"({"steps": []})");
    setup["mesh"] = folder.Path("sphere.ply");
    JournalOptions journal;
    journal.path = folder.Path("work.journal");
    runner->StartJournal(journal, setup);
    Do(R"({"tool": "Sculpt", "set": {"radius": 0.4}})");
    Do(R"({"camera": {"eye": [0, 0, 5], "target": [0, 0, 0]}})");
    Do(R"({"subdivide": 1})");
    Do(R"({"stroke": {"surface": [[0, 0, 1], [0.2, 0, 1]]}})");
    EXPECT_NE(Refusal(R"({"redo": 1})"), "");
    {
        DocumentStroke stroke(*document);
        for (int i = 0; i < 8; ++i) {
            PathSample sample({440.0f + 10.0f * static_cast<float>(i), 360.0f, 0.0f});
            sample.time = 0.02 * i;
            stroke.Add(sample);
        }
    }
    Do(R"({"mask": {"box": [0, 0, 480, 720]}})");
    Do(R"({"layer": {"add": "over"}})");
    Do(R"({"stroke": {"surface": [[1, 0, 0]]}})");
    Do(R"({"applicationData": {"name": "app/removed", "text": "x"}})");
    Do(R"({"applicationData": {"name": "app/kept", "text": "äb"}})");
    Do(R"({"applicationData": {"name": "app/removed"}})");
    const std::string expected = BitsOf(*document);
    const std::size_t position = document->HistoryPosition();
    // Destroys the runner without closing the journal, as in a crash.
    runner.reset();
    const RecoveredWork work = RedoJournal(journal.path);
    EXPECT_TRUE(BitsOf(work.runner->GetDocument()) == expected);
    EXPECT_EQ(work.runner->GetDocument().HistoryPosition(), position);
    EXPECT_GT(work.dabs, 4u);
    EXPECT_EQ(work.runner->GetDocument().Settings().applicationData,
              (ApplicationData{{"app/kept", {0xc3, 0xa4, 'b'}}}));
}

// The document restarts the journal at every save, whichever code saves it.
TEST_F(CommandRunnerTest, SavingRestartsTheJournal) {
    WriteMeshFile(folder.Path("sphere.ply"), SphereQuads(3));
    document = std::make_unique<Document>(folder.Path("sphere.ply"));
    runner = std::make_unique<CommandRunner>(*document, options);
    json setup = json::parse(R"({"steps": []})");
    setup["mesh"] = folder.Path("sphere.ply");
    JournalOptions journal;
    journal.path = folder.Path("work.journal");
    runner->StartJournal(journal, setup);
    Do(R"({"tool": "Sculpt"})");
    Do(R"({"stroke": {"surface": [[0, 0, 1]]}})");
    document->Save(folder.Path("a.trovik"));
    Do(R"({"subdivide": 1})");
    const JournalContent content = ReadJournal(journal.path);
    EXPECT_EQ(content.base.source, folder.Path("a.trovik"));
    EXPECT_EQ(content.steps.size(), 1u);
    runner.reset();
    EXPECT_TRUE(BitsOf(RedoJournal(journal.path).runner->GetDocument()) == BitsOf(*document));
}

}  // namespace
}  // namespace trovik::test
