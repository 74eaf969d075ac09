// SPDX-License-Identifier: Apache-2.0

/// \file Remeshing in an event file, between strokes.
#include "framework/script/ScriptRunner.h"
#include "tests/studio/sessions/StudioSession.h"

#include <gtest/gtest.h>

#include <optional>

namespace trovik::studio::test {

namespace {

TEST(RemeshSession, StrokesContinueOnTheNewMeshAndReplayAsAScript) {
    StudioSession session;
    session.OpenBust();
    const auto state = [&] { return session.engine.State(); };
    EXPECT_EQ(session.Play(Joined({PenStroke(280.0, 1000),
                                   {Step(R"({"remesh": {"faces": 4000}})")},
                                   PenStroke(340.0, 3000)})),
              "");
    const ContentHash sculpted = session.SceneHash();
    ASSERT_EQ(state()->historyPosition, 3u);
    EXPECT_NEAR(state()->levels[0].faces, 4000, 200);
    EXPECT_EQ(session.Play({Step(R"({"undo": 3})"), Step(R"({"redo": 3})")}), "");
    EXPECT_EQ(session.SceneHash(), sculpted);
    const std::string script = session.Path("actions.json");
    std::optional<QString> error;
    session.engine.SaveActions(script,
                               [&](const QString& failure, const QString&) { error = failure; });
    ASSERT_TRUE(session.WaitFor([&] { return error.has_value(); }));
    ASSERT_EQ(*error, "");
    ScriptRunner runner(script, session.folder.path().toStdString(), {});
    runner.Run();
    runner.Save(session.Path("replayed.trovik"));
    EXPECT_EQ(HashFile(session.Path("replayed.trovik")), sculpted);
}

}  // namespace

}  // namespace trovik::studio::test
