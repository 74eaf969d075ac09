// SPDX-License-Identifier: Apache-2.0
#include "events/EventRecorder.h"
#include "tests/studio/sessions/StudioSession.h"

#include <QWheelEvent>
#include <gtest/gtest.h>

#include <algorithm>

namespace trovik::studio::test {

namespace {

const char* const brush = R"({"tool": "Wax", "set": {"radius": 0.25, "strength": 60}})";

struct Recorded {
    EventFile file;
    ContentHash scene;
};

/// Plays events on a bust and records them at the same time.
Recorded Record(const std::vector<TimedInput>& events) {
    StudioSession session;
    session.OpenBust();
    EventRecorder recorder(session.target);
    recorder.Start();
    EXPECT_EQ(session.Play(events), "");
    Recorded recorded;
    recorded.file = recorder.Stop();
    recorded.scene = session.SceneHash();
    return recorded;
}

ContentHash SceneOf(const EventFile& file) {
    StudioSession session;
    session.OpenBust();
    EXPECT_EQ(session.Play(file.events), "");
    return session.SceneHash();
}

std::size_t CountOf(const EventFile& file, auto matches) {
    return static_cast<std::size_t>(std::count_if(file.events.begin(), file.events.end(), matches));
}

template <typename Type>
std::size_t CountOf(const EventFile& file) {
    return CountOf(
        file, [](const TimedInput& event) { return std::holds_alternative<Type>(event.input); });
}

TEST(Recorder, WhatWasRecordedGivesTheSameScene) {
    const auto ctrl = QKeyCombination::fromCombined(Qt::Key_Control);
    const Recorded recorded = Record(
        Joined({{Step(brush)},
                PenStroke(260.0, 100),
                {{1500, WheelInput{{400.0, 300.0}, {0, 240}}},
                 {1600, MouseInput{PenInput::Kind::Press, {500.0, 300.0}, Qt::MiddleButton}},
                 {1650, MouseInput{PenInput::Kind::Move, {540.0, 320.0}}},
                 {1700, MouseInput{PenInput::Kind::Release, {540.0, 320.0}, Qt::MiddleButton}}},
                {Key(KeyInput::Kind::Press, ctrl, 1800)},
                MouseStroke(300.0, 2000),
                {Key(KeyInput::Kind::Release, ctrl, 3000)},
                PenStroke(340.0, 4000, 30, true),
                {{4500, ActionInput{"edit.undo"}}, {4600, ActionInput{"view.wireframe"}}}}));
    const EventFile& file = recorded.file;
    EXPECT_EQ(CountOf<WheelInput>(file), 1u);
    EXPECT_EQ(CountOf<KeyInput>(file), 2u);
    EXPECT_GE(CountOf<CameraInput>(file), 3u);
    // One step selects the tool, the other one is the undo: an action that runs a step is recorded
    // as that step.
    EXPECT_EQ(CountOf<StepInput>(file), 2u);
    ASSERT_EQ(CountOf<ActionInput>(file), 1u);
    EXPECT_EQ(SceneOf(file), recorded.scene);
}

TEST(Recorder, SamplesKeepTheirTimesPositionsAndPressures) {
    const std::vector<TimedInput> stroke = PenStroke(300.0, 700);
    const Recorded recorded = Record(stroke);
    std::vector<TimedInput> pen;
    for (const TimedInput& event : recorded.file.events)
        if (std::holds_alternative<PenInput>(event.input)) pen.push_back(event);
    std::size_t at = 0;
    for (const TimedInput& event : stroke) {
        const auto* sample = std::get_if<PenInput>(&event.input);
        if (sample == nullptr) continue;
        ASSERT_LT(at, pen.size());
        EXPECT_EQ(pen[at].time - pen[0].time, event.time - stroke[0].time);
        const auto& copy = std::get<PenInput>(pen[at].input);
        EXPECT_EQ(copy.position, sample->position);
        EXPECT_EQ(copy.pressure, sample->pressure);
        EXPECT_EQ(copy.kind, sample->kind);
        ++at;
    }
    EXPECT_EQ(at, pen.size());
}

TEST(Recorder, ARestingPenIsRecordedAsTicks) {
    // The events are sent without the player, so the timer measures how long the pen is held still.
    StudioSession session;
    session.OpenBust();
    EXPECT_EQ(session.Play({Step(brush)}), "");
    EventRecorder recorder(session.target);
    recorder.Start();
    InputSender pen(*session.viewport, session.actions);
    const auto send = [&](PenInput::Kind kind, double x, uint32_t time) {
        PenInput sample;
        sample.kind = kind;
        sample.position = {x, 300.0};
        sample.pressure = 0.7;
        pen.Send(sample, time);
    };
    send(PenInput::Kind::Press, 370.0, 100);
    for (int i = 1; i <= 10; ++i)
        send(PenInput::Kind::Move, 370.0 + 4.0 * i, 100 + static_cast<uint32_t>(i) * 8);
    QElapsedTimer rest;
    rest.start();
    session.WaitFor([&] { return rest.elapsed() > 250; });
    // The pen's clock has advanced in the meantime.
    send(PenInput::Kind::Release, 410.0, 180 + 400);
    const EventFile file = recorder.Stop();
    EXPECT_GE(CountOf<TickInput>(file), 3u);
    const ContentHash scene = session.SceneHash();

    StudioSession other;
    other.OpenBust();
    EXPECT_EQ(other.Play(Joined({{Step(brush)}, file.events})), "");
    EXPECT_EQ(other.SceneHash(), scene);
}

TEST(Recorder, StepsThatOnlyWriteFilesAreLeftOut) {
    StudioSession session;
    session.OpenBust();
    EventRecorder recorder(session.target);
    recorder.Start();
    session.SceneHash();
    session.engine.Run({{"mirror", {"x"}}});
    session.WaitUntilIdle();
    const EventFile file = recorder.Stop();
    ASSERT_EQ(CountOf<StepInput>(file), 1u);
}

TEST(Recorder, EndsWhenAnotherDocumentIsOpened) {
    StudioSession session;
    session.OpenBust();
    EventRecorder recorder(session.target);
    bool isInterrupted = false;
    QObject::connect(
        &recorder, &EventRecorder::Interrupted, &recorder, [&] { isInterrupted = true; });
    recorder.Start();
    session.OpenBust();
    EXPECT_TRUE(isInterrupted);
}

TEST(Recorder, RecordsTheReleaseOfAPenThatIsDownAtTheEnd) {
    StudioSession session;
    session.OpenBust();
    EventRecorder recorder(session.target);
    recorder.Start();
    InputSender pen(*session.viewport, session.actions);
    PenInput press;
    press.kind = PenInput::Kind::Press;
    press.position = {400.0, 300.0};
    press.pressure = 0.5;
    pen.Send(press, 10);
    const EventFile file = recorder.Stop();
    EXPECT_EQ(CountOf(file,
                      [](const TimedInput& event) {
                          const auto* sample = std::get_if<PenInput>(&event.input);
                          return sample != nullptr && sample->kind == PenInput::Kind::Release;
                      }),
              1u);
    pen.ReleaseAll(20);
}

}  // namespace

}  // namespace trovik::studio::test
