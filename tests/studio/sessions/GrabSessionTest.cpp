// SPDX-License-Identifier: Apache-2.0

/// \file Tests the tools that move form, with events in a viewport.
#include "framework/script/ScriptRunner.h"
#include "tests/SourceFolder.h"
#include "tests/studio/sessions/StudioSession.h"

#include <gtest/gtest.h>

#include <optional>

namespace trovik::studio::test {

namespace {

std::string ToolStep(const std::string& tool) {
    return R"({"tool": ")" + tool + R"(", "set": {"radius": 0.6}})";
}

class GrabSession : public testing::TestWithParam<const char*> {
protected:
    GrabSession() { session.OpenBust(); }
    ContentHash Play(const std::vector<TimedInput>& events) {
        EXPECT_EQ(session.Play(Joined({{Step(ToolStep(GetParam()).c_str())}, events})), "");
        return session.SceneHash();
    }
    std::shared_ptr<const DocumentState> State() { return session.engine.State(); }

    StudioSession session;
};

TEST_P(GrabSession, DragIsOneUndoStep) {
    const ContentHash before = Play({});
    const std::vector<TimedInput> drag = MouseStroke(300.0, 1000);
    const ContentHash after = Play(drag);
    EXPECT_NE(after, before);
    ASSERT_EQ(State()->historyPosition, 1u);
    EXPECT_EQ(session.Play({Step(R"({"undo": 1})")}), "");
    EXPECT_EQ(State()->historyPosition, 0u);
    EXPECT_EQ(session.Play({Step(R"({"redo": 1})")}), "");
    EXPECT_EQ(session.SceneHash(), after);
}

TEST_P(GrabSession, EscapeLeavesNoTrace) {
    std::vector<TimedInput> drag = MouseStroke(300.0, 1000);
    ASSERT_GT(drag.size(), 4u);
    // The first stroke also stores the view in the scene.
    const ContentHash before = Play(drag);
    const auto escape = QKeyCombination::fromCombined(Qt::Key_Escape);
    drag.insert(drag.end() - 1, Key(KeyInput::Kind::Tap, escape));
    EXPECT_EQ(Play(drag), before);
    EXPECT_EQ(State()->historyPosition, 1u);
    EXPECT_FALSE(State()->isStrokeOpen);
}

TEST_P(GrabSession, RecordedScriptRepeatsTheDrag) {
    EXPECT_EQ(session.Play(Joined({{Step(ToolStep(GetParam()).c_str())},
                                   PenStroke(280.0, 1000),
                                   PenStroke(340.0, 3000)})),
              "");
    const ContentHash drawn = session.SceneHash();
    const std::string script = session.Path("actions.json");
    std::optional<QString> error;
    session.engine.SaveActions(script,
                               [&](const QString& failure, const QString&) { error = failure; });
    ASSERT_TRUE(session.WaitFor([&] { return error.has_value(); }));
    ASSERT_EQ(*error, "");
    ScriptRunner runner(script, session.folder.path().toStdString(), {});
    EXPECT_GT(runner.Run().totals.dabs, 0u);
    runner.Save(session.Path("replayed.trovik"));
    EXPECT_EQ(HashFile(session.Path("replayed.trovik")), drawn);
}

INSTANTIATE_TEST_SUITE_P(Tools,
                         GrabSession,
                         testing::Values("Grab", "ElasticGrab", "SnakeHook"),
                         [](const auto& tool) { return std::string(tool.param); });

}  // namespace

}  // namespace trovik::studio::test
