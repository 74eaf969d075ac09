// SPDX-License-Identifier: Apache-2.0
#include "commands/ScriptPlayer.h"
#include "framework/io/ContentHash.h"
#include "framework/script/ScriptRunner.h"
#include "tests/studio/engine/StudioEngine.h"

#include <gmock/gmock.h>

#include <fstream>
#include <optional>

namespace trovik::studio {

namespace {

class PlayedScript : public StudioEngine {
protected:
    ScriptPlayer player{*engine};

    QString Write(const nlohmann::json& script) {
        std::ofstream(Path("script.json")) << script;
        return folder.filePath("script.json");
    }
    /// The error of a script that cannot be run; empty if it begins.
    std::string Refusal(const nlohmann::json& script) {
        std::optional<std::string> error;
        const QObject scope;
        QObject::connect(&player, &ScriptPlayer::Refused, &scope, [&](const QString& reason) {
            error = reason.toStdString();
        });
        QObject::connect(
            &player, &ScriptPlayer::Changed, &scope, [&] { error = error.value_or(""); });
        player.Run(Write(script));
        EXPECT_TRUE(WaitFor([&] { return error.has_value(); }));
        return error.value_or("no result");
    }
};

TEST_F(PlayedScript, AppliesAllFieldsOfTheSetup) {
    const nlohmann::json script = {
        {"mesh", trovik::test::SourceFolder() + "/examples/meshes/bust.obj"},
        {"units", "cm"},
        {"levels", 1},
        {"transform", {{"scale", 2}}},
        {"mirror", {"x"}},
        {"camera", {{"eye", {0, 10, 30}}, {"target", {0, 10, 0}}}},
        {"seed", 77},
        {"preferences", {{"Undo Budget", 123}}},
        {"subdivideBudget", 40000000},
        {"undoBudget", 50000000},
        {"steps",
         {{{"tool", "Wax"}, {"set", {{"radius", 0.3}, {"randomSize", 0.5}}}},
          {{"stroke", {{"surface", {{0.5, 11, 2, 0.5}, {-0.5, 12, 2}}}}}}}}};
    bool isFinished = false;
    QString error;
    QObject::connect(&player, &ScriptPlayer::Finished, [&](int, const QString& reason) {
        isFinished = true;
        error = reason;
    });
    player.Run(Write(script));
    ASSERT_TRUE(WaitFor([&] { return isFinished; }));
    ASSERT_EQ(error, "");
    EXPECT_TRUE(engine->Document().isFromScript);
    engine->Save(Path("studio.trovik"));
    QString refused;
    engine->Run({{"subdivide", 3}}, {}, [&](const QString& reason) { refused = reason; });
    Finish();
    EXPECT_NE(refused, "") << "the budget of the script applies";

    ScriptRunner runner(Path("script.json"), folder.path().toStdString(), {});
    const ScriptResult result = runner.Run();
    EXPECT_GT(result.totals.dabs, 3u);
    runner.Save(Path("command.trovik"));
    EXPECT_EQ(HashFile(Path("studio.trovik")), HashFile(Path("command.trovik")));
}

// Each request is carried out after the script was read, so the script has to be dropped.
TEST_F(PlayedScript, IsDroppedWhenAnotherDocumentIsOpened) {
    OpenBust();
    QStringList refusals, ends;
    int opened = 0;
    QObject::connect(
        &player, &ScriptPlayer::Refused, [&](const QString& reason) { refusals << reason; });
    QObject::connect(
        &player, &ScriptPlayer::Finished, [&](int, const QString& reason) { ends << reason; });
    QObject::connect(engine.get(), &Engine::Opened, [&] { ++opened; });
    OpenRequest other;
    other.meshPath = trovik::test::SourceFolder() + "/examples/meshes/bust.obj";
    const nlohmann::json subdivide = {{"steps", {{{"subdivide", 1}}}}};
    player.Run(Write(subdivide));
    engine->Open(other);
    Finish();
    EXPECT_EQ(opened, 1);
    ASSERT_EQ(refusals.size(), 1);
    EXPECT_THAT(refusals.first().toStdString(),
                testing::AllOf(testing::StartsWith(Path("script.json")),
                               testing::HasSubstr("another document was opened")));
    EXPECT_EQ(engine->State()->levels.size(), 1u) << "the script did not change the other document";
    EXPECT_TRUE(ends.isEmpty());

    // The same script runs on a document that stays open.
    player.Run(Write(subdivide));
    ASSERT_TRUE(WaitFor([&] { return ends.size() == 1; }));
    Finish();
    EXPECT_EQ(ends.first(), "");
    EXPECT_EQ(engine->State()->levels.size(), 2u);

    // A script that waits between two steps ends.
    player.Load(Write(subdivide));
    ASSERT_TRUE(WaitFor([&] { return player.GetState() == ScriptPlayer::State::Paused; }));
    engine->Open(other);
    EXPECT_EQ(player.GetState(), ScriptPlayer::State::Idle);
    ASSERT_EQ(ends.size(), 2);
    EXPECT_THAT(ends.last().toStdString(), testing::HasSubstr("another document"));
    Finish();
    EXPECT_EQ(refusals.size(), 1);
    EXPECT_TRUE(failures.empty());
}

TEST_F(PlayedScript, RefusesWhatCannotBeApplied) {
    const std::string mesh = trovik::test::SourceFolder() + "/examples/meshes/bust.obj";
    const auto none = nlohmann::json::array();
    EXPECT_THAT(Refusal({{"steps", none}}), testing::HasSubstr("does not name a mesh"));
    EXPECT_THAT(Refusal({{"mesh", mesh}, {"memoryLimit", 1000000}, {"steps", none}}),
                testing::HasSubstr("memoryLimit"));
    EXPECT_THAT(Refusal({{"mesh", mesh}, {"scene", "a.trovik"}, {"steps", none}}),
                testing::HasSubstr("not both"));
    EXPECT_THAT(Refusal({{"mesh", mesh}, {"sead", 3}, {"steps", none}}),
                testing::HasSubstr("sead"));
    OpenBust();
    for (const char* field : {"seed", "levels", "undoBudget"})
        EXPECT_THAT(Refusal({{field, 1}, {"steps", none}}), testing::HasSubstr(field));
    EXPECT_EQ(Refusal({{"mirror", {"x"}}, {"steps", none}}), "");
    Finish();
    EXPECT_TRUE(failures.empty());
}

}  // namespace

}  // namespace trovik::studio
