// SPDX-License-Identifier: Apache-2.0
#include "commands/ScriptPlayer.h"
#include "tests/studio/sessions/StudioSession.h"
#include "window/ScriptBar.h"
#include "window/TimeLapseWindow.h"

#include <QDir>
#include <QImage>
#include <gtest/gtest.h>

namespace trovik::studio::test {

namespace {

using State = ScriptPlayer::State;

}  // namespace

TEST(TimeLapse, RepeatsTheActionsWithoutTheDocument) {
    StudioSession session;
    session.OpenBust();
    ASSERT_EQ(session.Play(Joined({{Step(R"({"set": {"radius": 0.5, "strength": 90}})")},
                                   PenStroke(300.0, 0, 12),
                                   PenStroke(340.0, 1000, 12)})),
              QString());
    session.view.pose = [&] { return session.viewport->View().Pose(); };
    const ContentHash before = session.SceneHash();

    TimeLapseWindow lapse({session.engine,
                           session.actions,
                           session.view,
                           session.preferences,
                           session.scene,
                           &session.window},
                          nullptr);
    lapse.resize(400, 300);
    lapse.show();
    ASSERT_TRUE(session.WaitFor([&] { return lapse.Player().GetState() == State::Paused; }));
    const QDir film(session.folder.filePath("film"));
    lapse.Bar().BeginFilm(film.path());
    lapse.Player().SetSpeed(1000.0);
    lapse.Player().Play();
    ASSERT_TRUE(session.WaitFor([&] { return lapse.Player().GetState() == State::Idle; }));
    const QStringList frames = film.entryList({"frame_*.png"});
    ASSERT_GT(frames.size(), 8);
    const QImage first(film.filePath(frames.first()));
    const QImage last(film.filePath(frames.last()));
    EXPECT_FALSE(first.isNull());
    EXPECT_EQ(first.size(), last.size());
    EXPECT_NE(first, last) << "strokes are visible";
    EXPECT_TRUE(session.failures.empty());
    EXPECT_EQ(session.SceneHash(), before);
}

}  // namespace trovik::studio::test
