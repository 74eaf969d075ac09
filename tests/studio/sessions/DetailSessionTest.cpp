// SPDX-License-Identifier: Apache-2.0

/// \file Tests strokes that refine the mesh, with events in a viewport.
#include "framework/script/ScriptRunner.h"
#include "tests/studio/sessions/StudioSession.h"

#include <gtest/gtest.h>

#include <optional>

namespace trovik::studio::test {

namespace {

class DetailSession : public testing::Test {
protected:
    DetailSession() {
        session.OpenBust();
        EXPECT_EQ(session.Play({Step(R"({"remesh": {"faces": 6000}})"),
                                Step(R"({"tool": "Sculpt", "set": {"radius": 0.5,
                                     "detail": {"unit": "pixels", "length": 8}}})")}),
                  "");
    }
    uint32_t Faces() { return session.engine.State()->levels[0].faces; }

    StudioSession session;
};

TEST_F(DetailSession, UndoRestoresTheTriangles) {
    const uint32_t before = Faces();
    EXPECT_EQ(session.Play(PenStroke(300.0, 1000)), "");
    const uint32_t after = Faces();
    EXPECT_GT(after, before + 200);
    const ContentHash refined = session.SceneHash();
    EXPECT_EQ(session.Play({Step(R"({"undo": 1})")}), "");
    EXPECT_EQ(Faces(), before);
    EXPECT_EQ(session.Play({Step(R"({"redo": 1})")}), "");
    EXPECT_EQ(Faces(), after);
    EXPECT_EQ(session.SceneHash(), refined);
}

TEST_F(DetailSession, EscapeLeavesNoTrace) {
    EXPECT_EQ(session.Play(PenStroke(300.0, 1000)), "");
    const ContentHash before = session.SceneHash();
    std::vector<TimedInput> stroke = PenStroke(330.0, 3000);
    const auto escape = QKeyCombination::fromCombined(Qt::Key_Escape);
    stroke.insert(stroke.end() - 1, Key(KeyInput::Kind::Tap, escape));
    EXPECT_EQ(session.Play(stroke), "");
    EXPECT_EQ(session.SceneHash(), before);
}

TEST_F(DetailSession, SavedActionsRepeatTheTriangles) {
    EXPECT_EQ(session.Play(Joined({PenStroke(280.0, 1000), PenStroke(340.0, 3000)})), "");
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

}  // namespace

}  // namespace trovik::studio::test
