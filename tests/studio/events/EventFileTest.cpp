// SPDX-License-Identifier: Apache-2.0
#include "events/EventFile.h"
#include "framework/errors/HostError.h"

#include <QTemporaryDir>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace trovik::studio {

namespace {

EventFile Parse(const std::string& events) {
    return ParseEventFile(
        R"({"format": "trovik-events", "version": 1, "viewport": [800, 600], "events": [)" +
            events + "]}",
        "folder/some.events.json");
}

std::string ErrorOf(const std::string& events) {
    try {
        Parse(events);
    } catch (const HostError& error) {
        return error.what();
    }
    return {};
}

std::vector<TimedInput> OneOfEach() {
    const auto key = [](Qt::Key of) { return QKeyCombination::fromCombined(of); };
    return {
        {0, OpenInput{"meshes/bust.obj", {}, 2}},
        {0, OpenInput{{}, "work.trovik", 0}},
        {1,
         CameraInput{
             Vector(0.1f, 2.0f, 5.0f), Vector(0.0f, 1.0f, 0.0f), Vector(0.0f, 1.0f, 0.0f), 40.0f}},
        {1, CameraInput{Vector(1.0f, 2.0f, 5.0f), Vector(), Vector(0.0f, 1.0f, 0.0f), 35.0f, true}},
        {2,
         PenInput{PenInput::Kind::Press,
                  {10.125, 20.7},
                  0.3,
                  {12.5, -40.0},
                  90.0,
                  Qt::RightButton,
                  true}},
        {4294967295u, PenInput{PenInput::Kind::Move, {11.0, 21.0}, 0.1 + 0.2, {}}},
        {5, MouseInput{PenInput::Kind::Release, {1.0, 2.0}, Qt::MiddleButton, true}},
        {6, WheelInput{{1.5, 2.0}, {0, -120}}},
        {7, KeyInput{KeyInput::Kind::Press, key(Qt::Key_Shift), {}}},
        {8, KeyInput{KeyInput::Kind::Release, key(Qt::Key_Control), {}}},
        {8, KeyInput{KeyInput::Kind::Press, key(Qt::Key_BracketLeft), "["}},
        {8, KeyInput{KeyInput::Kind::Tap, Qt::ControlModifier | Qt::ShiftModifier | Qt::Key_Z, {}}},
        {9, TickInput{}},
        {10, ActionInput{"view.frame"}},
        {11, StepInput{{{"subdivide", 1}}}},
        {12, ResizeInput{QSize(640, 480)}},
        {13, WaitInput{}},
        {14, ScreenshotInput{"picture.png", true}},
    };
}

TEST(EventFile, EveryEventSurvivesWritingAndReading) {
    QTemporaryDir folder;
    const std::string path = folder.filePath("all.events.json").toStdString();
    EventFile written;
    written.viewport = {801, 603};
    written.pixelRatio = 1.5;
    written.events = OneOfEach();
    WriteEventFile(written, path);

    const EventFile read = ReadEventFile(path);
    EXPECT_EQ(read.path, path);
    EXPECT_EQ(read.viewport, written.viewport);
    EXPECT_EQ(read.pixelRatio, written.pixelRatio);
    ASSERT_EQ(read.events.size(), written.events.size());
    for (std::size_t i = 0; i < read.events.size(); ++i)
        EXPECT_TRUE(read.events[i] == written.events[i]) << "event " << i;
}

TEST(EventFile, FieldsThatMayBeLeftOutHaveTheirDefaults) {
    const EventFile file = Parse(R"({"type": "pen", "kind": "press", "x": 1, "y": 2})");
    ASSERT_EQ(file.events.size(), 1u);
    EXPECT_EQ(file.viewport, QSize(800, 600));
    EXPECT_EQ(file.pixelRatio, 1.0);
    const auto& pen = std::get<PenInput>(file.events[0].input);
    EXPECT_EQ(pen.button, Qt::LeftButton);
    EXPECT_EQ(pen.pressure, 0.0);
    EXPECT_FALSE(pen.isEraser);
}

TEST(EventFile, CommentsAreIgnored) {
    const EventFile file =
        Parse(R"({"comment": "a", "type": "step", "step": {"comment": "b", "subdivide": 1}})");
    EXPECT_EQ(std::get<StepInput>(file.events[0].input).step, nlohmann::json({{"subdivide", 1}}));
}

struct Fault {
    const char* events;
    const char* message;
};

class FaultyEventFile : public testing::TestWithParam<Fault> {};

TEST_P(FaultyEventFile, IsRefusedInOneLineWithFilePointerAndValue) {
    const std::string error = ErrorOf(GetParam().events);
    EXPECT_EQ(error.find("folder/some.events.json: "), 0u) << error;
    EXPECT_THAT(error, testing::HasSubstr(GetParam().message));
    EXPECT_EQ(error.find('\n'), std::string::npos) << error;
}

INSTANTIATE_TEST_SUITE_P(
    Events,
    FaultyEventFile,
    testing::Values(
        Fault{R"({"kind": "press"})", "/events/0"},
        Fault{R"({"type": "pencil"})", "/events/0/type: expected"},
        Fault{R"({"type": "wait"}, {"type": "wait", "x": "left"})", "/events/1/x: expected"},
        Fault{R"({"type": "wait", "x": 4})",
              "/events/0/x: an event of the type \"wait\" has no such field"},
        Fault{R"({"type": "pen", "kind": "press", "x": 1})", "/events/0: an event of the type"},
        Fault{R"({"type": "pen", "kind": "tap", "x": 1, "y": 2})", "got \"tap\""},
        Fault{R"({"type": "pen", "kind": "press", "x": 1, "y": 2, "pressure": 1.5})",
              "/events/0/pressure: expected"},
        Fault{R"({"type": "key", "kind": "press", "key": "Banana"})", "got \"Banana\""},
        Fault{R"({"type": "key", "kind": "press", "key": "Ctrl+Z"})", "got \"Ctrl+Z\""},
        Fault{R"({"type": "key", "kind": "move", "key": "F"})", "got \"move\""},
        Fault{R"({"type": "step", "step": {"subdivide": "twice"}})",
              "/events/0/step/subdivide: expected"},
        Fault{R"({"type": "step", "step": {"subdevide": 1}})", "/events/0/step"},
        Fault{R"({"type": "open", "mesh": "a.obj", "scene": "a.trovik"})", "either"},
        Fault{R"({"type": "open", "scene": "a.trovik", "levels": 1})", "/events/0/levels: "},
        Fault{R"({"type": "camera", "eye": [0,0,0], "target": [0,1,0], "up": [0,1,0]})",
              "/events/0: the camera"},
        Fault{R"({"type": "tick"})", "needs \"time\""},
        Fault{R"({"type": "wait", "time": -1})", "/events/0/time: expected"},
        Fault{"{", "line 1"}));

TEST(EventFile, AFileThatIsMissingIsNamed) {
    try {
        ReadEventFile("/nowhere/missing.events.json");
        FAIL();
    } catch (const HostError& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr("/nowhere/missing.events.json"));
    }
}

}  // namespace

}  // namespace trovik::studio
