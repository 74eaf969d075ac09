// SPDX-License-Identifier: Apache-2.0
#include "framework/script/ScriptRunner.h"
#include "tests/SourceFolder.h"
#include "tests/studio/sessions/StudioSession.h"

#include <QKeyEvent>
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

namespace trovik::studio::test {

namespace {

const char* const brush = R"({"tool": "Wax", "set": {"radius": 0.25, "strength": 60}})";

/// The samples of a pen stream in script form, with times relative to the press.
nlohmann::json StreamSamples(const std::string& name) {
    std::ifstream file(trovik::test::SourceFolder() + "/tests/data/pointer/" + name + ".json");
    nlohmann::json samples = nlohmann::json::parse(file).at("samples");
    const double begin = samples[0][3];
    for (nlohmann::json& sample : samples)
        sample[3] = std::max(0.0, sample[3].get<double>() - begin);
    return samples;
}

/// Returns the samples as pen events. The last sample belongs to the release.
std::vector<TimedInput> StreamEvents(const std::string& name) {
    std::ifstream file(trovik::test::SourceFolder() + "/tests/data/pointer/" + name + ".json");
    const nlohmann::json samples = nlohmann::json::parse(file).at("samples");
    std::vector<TimedInput> events;
    for (const nlohmann::json& sample : samples) {
        PenInput pen;
        pen.kind = events.empty()                        ? PenInput::Kind::Press
                   : events.size() + 1 == samples.size() ? PenInput::Kind::Release
                                                         : PenInput::Kind::Move;
        pen.position = {sample[0].get<double>(), sample[1].get<double>()};
        pen.pressure = sample[2].get<double>();
        events.push_back({1000 + sample[3].get<uint32_t>(), pen});
    }
    return events;
}

nlohmann::json CameraOf(const CameraInput& camera) {
    const auto numbers = [](const Vector& v) { return nlohmann::json{v.x, v.y, v.z}; };
    return {{"eye", numbers(camera.eye)},
            {"target", numbers(camera.target)},
            {"up", numbers(camera.up)},
            {"fieldOfView", camera.fieldOfView},
            {"width", viewportSize.width()},
            {"height", viewportSize.height()}};
}

/// The hash of the scene after a script has drawn a stroke on the bust, using the same view as the
/// sessions.
ContentHash HashOfScript(StudioSession& session, nlohmann::json stroke) {
    stroke["path"]["interactive"] = true;
    stroke["seed"] = 1;
    const nlohmann::json script = {{"mesh", "bust.obj"},
                                   {"levels", 2},
                                   {"steps",
                                    {nlohmann::json::parse(brush),
                                     {{"camera", CameraOf(BustCamera())}},
                                     {{"stroke", std::move(stroke)}}}}};
    std::ofstream(session.Path("script.json")) << script;
    const std::string meshes = trovik::test::SourceFolder() + "/examples/meshes";
    std::filesystem::copy_file(meshes + "/bust.obj",
                               session.Path("bust.obj"),
                               std::filesystem::copy_options::overwrite_existing);
    ScriptRunner runner(session.Path("script.json"), session.folder.path().toStdString(), {});
    EXPECT_GT(runner.Run().totals.dabs, 5u);
    runner.Save(session.Path("script.trovik"));
    return HashFile(session.Path("script.trovik"));
}

class PenStream : public testing::TestWithParam<const char*> {};

TEST_P(PenStream, PlayedAsEventsGivesTheSceneOfTheScriptWithTheSameSamples) {
    StudioSession session;
    session.OpenBust();
    EXPECT_EQ(session.Play(Joined({{Step(brush)}, StreamEvents(GetParam())})), "");
    const ContentHash expected = HashOfScript(session, {{"pen", StreamSamples(GetParam())}});
    EXPECT_EQ(session.SceneHash(), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Streams,
    PenStream,
    testing::Values("clean", "blot", "spike", "jitter", "doubled", "late", "everything"),
    [](const auto& stream) { return std::string(stream.param); });

/// The hash of the scene after the events have been played on a newly opened bust.
ContentHash HashAfter(const std::vector<TimedInput>& events,
                      EventPlayer::Pace pace = EventPlayer::Pace::Settled) {
    StudioSession session;
    session.OpenBust();
    EXPECT_EQ(session.Play(Joined({{Step(brush)}, events}), pace), "");
    return session.SceneHash();
}

ContentHash HashOfUntouched() { return HashAfter({}); }

TEST(PenSession, TiltAndRestReachTheStroke) {
    StudioSession session;
    session.OpenBust();
    const std::vector<TimedInput> events = PenStroke(300.0, 5000);
    EXPECT_EQ(session.Play(Joined({{Step(brush)}, events})), "");
    nlohmann::json samples = nlohmann::json::array();
    for (const TimedInput& event : events) {
        nlohmann::json sample;
        if (const auto* pen = std::get_if<PenInput>(&event.input)) {
            constexpr double radians = 0.017453292519943295;
            const double x = std::tan(static_cast<float>(pen->tilt.x()) * radians);
            const double y = std::tan(static_cast<float>(pen->tilt.y()) * radians);
            const double length = std::sqrt(x * x + y * y + 1.0);
            sample = {static_cast<float>(pen->position.x()),
                      static_cast<float>(pen->position.y()),
                      static_cast<float>(pen->pressure),
                      event.time - 5000,
                      static_cast<float>(x / length),
                      static_cast<float>(y / length)};
        } else {
            // The pen is held still: repeats the last sample with a later time.
            sample = samples.back();
            sample[3] = event.time - 5000;
        }
        samples.push_back(sample);
    }
    const ContentHash expected = HashOfScript(session, {{"pen", samples}});
    EXPECT_EQ(session.SceneHash(), expected);
}

TEST(PenSession, TheSameEventsGiveTheSameSceneAtAnyPace) {
    const std::vector<TimedInput> events =
        Joined({PenStroke(260.0, 100), PenStroke(330.0, 2000, 30), MouseStroke(380.0, 3000)});
    const ContentHash first = HashAfter(events);
    EXPECT_EQ(HashAfter(events), first);
    EXPECT_EQ(HashAfter(events, EventPlayer::Pace::Timed), first);
    EXPECT_NE(HashOfUntouched(), first);
}

TEST(PenSession, MouseEventsThatAreMadeOfAPensDrawNothing) {
    const std::vector<TimedInput> pen = PenStroke(300.0, 0);
    const std::vector<TimedInput> mouse = MouseStroke(300.0, 0, true);
    std::vector<TimedInput> both;
    for (const TimedInput& event : pen) {
        both.push_back(event);
        for (const TimedInput& duplicate : mouse)
            if (duplicate.time == event.time) both.push_back(duplicate);
    }
    // Some window systems send the first mouse event before the first pen event.
    std::vector<TimedInput> early = both;
    std::swap(early[0], early[1]);
    const ContentHash once = HashAfter(pen);
    EXPECT_EQ(HashAfter(both), once);
    EXPECT_EQ(HashAfter(early), once);
    EXPECT_EQ(HashAfter(mouse), HashOfUntouched());
}

TEST(PenSession, AMouseThatMovesWhileThePenDrawsIsIgnored) {
    const std::vector<TimedInput> pen = PenStroke(300.0, 0);
    std::vector<TimedInput> both;
    for (const TimedInput& event : pen) {
        both.push_back(event);
        if (event.time % 24 == 0)
            both.push_back({event.time, MouseInput{PenInput::Kind::Move, {10.0, 20.0}}});
    }
    EXPECT_EQ(HashAfter(both), HashAfter(pen));
}

struct Modified {
    Qt::Key key;
    const char* modifier;
};

class HeldKey : public testing::TestWithParam<Modified> {};

TEST_P(HeldKey, ChangesTheStrokeAsTheModifierOfAScript) {
    StudioSession session;
    session.OpenBust();
    const auto key = QKeyCombination::fromCombined(GetParam().key);
    EXPECT_EQ(session.Play(Joined({{Step(brush), Key(KeyInput::Kind::Press, key)},
                                   StreamEvents("clean"),
                                   {Key(KeyInput::Kind::Release, key)}})),
              "");
    const ContentHash expected =
        HashOfScript(session, {{"pen", StreamSamples("clean")}, {"modifier", GetParam().modifier}});
    EXPECT_EQ(session.SceneHash(), expected);
}

INSTANTIATE_TEST_SUITE_P(Keys,
                         HeldKey,
                         testing::Values(Modified{Qt::Key_Shift, "smooth"},
                                         Modified{Qt::Key_Control, "invert"}),
                         [](const auto& key) { return std::string(key.param.modifier); });

TEST(PenSession, AnEraserDrawsAsTheInvertedTool) {
    const auto key = QKeyCombination::fromCombined(Qt::Key_Control);
    EXPECT_EQ(HashAfter(PenStroke(300.0, 0, 40, true)),
              HashAfter(Joined({{Key(KeyInput::Kind::Press, key)},
                                PenStroke(300.0, 0),
                                {Key(KeyInput::Kind::Release, key)}})));
}

TEST(PenSession, EscapeAbandonsTheStroke) {
    const auto escape = QKeyCombination::fromCombined(Qt::Key_Escape);
    std::vector<TimedInput> events = PenStroke(300.0, 0);
    events.insert(events.begin() + 25, Key(KeyInput::Kind::Tap, escape));
    const ContentHash drawn = HashAfter(PenStroke(260.0, 2000));
    // The rest of the drag draws nothing, and the next stroke is not affected by it.
    EXPECT_EQ(HashAfter(Joined({events, PenStroke(260.0, 2000)})), drawn);
}

TEST(PenSession, KeysUndoAndRedoStrokes) {
    const auto undo = Key(KeyInput::Kind::Tap, Qt::ControlModifier | Qt::Key_Z);
    const auto redo = Key(KeyInput::Kind::Tap, Qt::ControlModifier | Qt::ShiftModifier | Qt::Key_Z);
    StudioSession session;
    session.OpenBust();
    session.engine.Run({{"export", {{"file", session.Path("before.ply")}}}});
    EXPECT_EQ(session.Play(Joined({{Step(brush)}, PenStroke(300.0, 0), PenStroke(340.0, 2000)})),
              "");
    session.engine.Run({{"export", {{"file", session.Path("drawn.ply")}}}});
    EXPECT_EQ(session.Play({undo, undo}), "");
    session.engine.Run({{"export", {{"file", session.Path("undone.ply")}}}});
    EXPECT_EQ(session.Play({redo, redo}), "");
    session.engine.Run({{"export", {{"file", session.Path("redone.ply")}}}});
    ASSERT_TRUE(session.WaitUntilIdle());
    EXPECT_EQ(HashFile(session.Path("undone.ply")), HashFile(session.Path("before.ply")));
    EXPECT_EQ(HashFile(session.Path("redone.ply")), HashFile(session.Path("drawn.ply")));
    EXPECT_NE(HashFile(session.Path("drawn.ply")), HashFile(session.Path("before.ply")));
}

TEST(PenSession, APenOfOneKilohertzLosesNoSample) {
    // A two-second stroke across the bust and back, with dabs so close together that each frame
    // contains several.
    const auto samples = [](auto put) {
        for (int i = 0; i <= 2000; ++i) {
            const double t = std::sin(i * 0.003141592653589793);
            put(i, 340.0 + 120.0 * t, 260.0 + 0.05 * i, 0.2 + 0.6 * t * t);
        }
    };
    std::vector<TimedInput> events;
    nlohmann::json pen = nlohmann::json::array();
    samples([&](int i, double x, double y, double pressure) {
        PenInput sample;
        sample.kind = i == 0      ? PenInput::Kind::Press
                      : i == 2000 ? PenInput::Kind::Release
                                  : PenInput::Kind::Move;
        sample.position = {x, y};
        sample.pressure = pressure;
        events.push_back({static_cast<uint32_t>(i), sample});
        pen.push_back(
            {static_cast<float>(x), static_cast<float>(y), static_cast<float>(pressure), i});
    });
    StudioSession session;
    session.OpenBust();
    EXPECT_EQ(session.Play(Joined({{Step(brush)}, events}), EventPlayer::Pace::Timed), "");
    const ContentHash expected = HashOfScript(session, {{"pen", pen}});
    EXPECT_EQ(session.SceneHash(), expected);
}

TEST(PenSession, APressThatDependsOnThePickOrbitsNextToTheSurfaceAndSculptsOnIt) {
    StudioSession session;
    session.OpenBust();
    session.input->SetNavigation(NavigationPreset::Named(QStringLiteral("pen")));
    const Camera before = session.viewport->View();
    std::vector<TimedInput> beside = PenStroke(300.0, 0);
    for (TimedInput& event : beside)
        if (auto* pen = std::get_if<PenInput>(&event.input)) pen->position -= QPointF(350.0, 280.0);
    EXPECT_EQ(session.Play(Joined({{Step(brush)}, beside})), "");
    EXPECT_FALSE(session.viewport->View() == before);
    EXPECT_TRUE(session.engine.State()->history.empty());
    // Play first sets the camera to BustCamera, so this stroke is on the surface.
    EXPECT_EQ(session.Play(PenStroke(300.0, 2000)), "");
    EXPECT_EQ(session.engine.State()->history.size(), 1u);
    EXPECT_EQ(session.SceneHash(), HashAfter(PenStroke(300.0, 2000)));
}

TEST(PenSession, PlaybackLeavesNoKeyHeld) {
    StudioSession session;
    session.OpenBust();
    const auto user = QKeyCombination::fromCombined(Qt::Key_Shift);
    // The user releases the key during the playback, which blocks the release event.
    QKeyEvent pressed(QEvent::KeyPress, user.key(), Qt::NoModifier);
    QCoreApplication::sendEvent(session.viewport, &pressed);
    ASSERT_TRUE(session.input->Keys().IsHeld(Qt::Key_Shift));
    const auto press = [](Qt::Key key) {
        return Key(KeyInput::Kind::Press, QKeyCombination::fromCombined(key));
    };
    std::vector<TimedInput> events = PenStroke(300.0, 0);
    events.resize(events.size() / 2);
    EXPECT_EQ(session.Play(Joined({{press(Qt::Key_Control)}, events})), "");
    EXPECT_EQ(session.input->Keys().Modifiers(), Qt::NoModifier);
    EXPECT_FALSE(session.input->HasGesture());
    // The key F changes the radius while it is held.
    PenInput hover;
    hover.position = {400.0, 300.0};
    EXPECT_EQ(session.Play({{0, hover}, press(Qt::Key_F)}), "");
    EXPECT_FALSE(session.input->Keys().IsHeld(Qt::Key_F));
    EXPECT_FALSE(session.input->HasGesture());
    EXPECT_EQ(session.Play(PenStroke(300.0, 2000)), "");
    EXPECT_TRUE(session.failures.empty());
}

TEST(PenSession, AnEventThatFailsEndsThePlaybackAndIsNamed) {
    StudioSession session;
    session.OpenBust();
    const QString error = session.Play({Step(brush), Step(R"({"level": 17})"), Step(brush)});
    EXPECT_TRUE(error.startsWith("/events/2: ")) << error.toStdString();
    EXPECT_EQ(session.Play({{0, ActionInput{"no.such"}}}),
              "/events/1: there is no action \"no.such\"");
    EXPECT_EQ(session.Play({{0, ActionInput{"edit.undo"}}}),
              "/events/1: the action \"edit.undo\" is disabled");
}

}  // namespace

}  // namespace trovik::studio::test
