// SPDX-License-Identifier: Apache-2.0
#include "tests/studio/sessions/StudioSession.h"

#include "commands/StudioActions.h"
#include "tests/SourceFolder.h"

#include <QVBoxLayout>
#include <gtest/gtest.h>

#include <utility>

namespace trovik::studio::test {

StudioSession::StudioSession(bool keepsJournal)
    : engine(keepsJournal ? Path("journals") : std::string()),
      preferences(folder.filePath("studio.ini")),
      actions(&window),
      viewport(new ViewportWidget(engine, &window)),
      input(new ViewportInput(engine, actions, *viewport)),
      target{engine, actions, *viewport, *input},
      player(target) {
    QObject::connect(
        &engine, &Engine::Failed, &window, [this](const QString& text) { failures << text; });
    QObject::connect(
        &engine, &Engine::Noted, &window, [this](const QString& text) { notes << text; });
    const ActionContext context{engine, actions, view, preferences, scene, &window};
    AddEditActions(context);
    AddStrokeActions(context);
    AddViewActions(context);
    auto* layout = new QVBoxLayout(&window);
    layout->addWidget(viewport);
    window.resize(1000, 760);
    window.show();
    // Software rendering would take most of the time, and no scene depends on it.
    viewport->setUpdatesEnabled(false);
    QObject::connect(&engine, &Engine::SurfaceArrived, &window, [this] { engine.TakeUpdates(); });
}

void StudioSession::OpenBust() {
    OpenRequest request;
    request.meshPath = trovik::test::SourceFolder() + "/examples/meshes/bust.obj";
    request.levels = 2;
    engine.Open(request);
    ASSERT_TRUE(WaitUntilIdle());
    ASSERT_TRUE(failures.empty()) << failures.first().toStdString();
}

QString StudioSession::Play(std::vector<TimedInput> events, EventPlayer::Pace pace) {
    EventFile file;
    file.viewport = viewportSize;
    file.events = std::move(events);
    file.events.insert(file.events.begin(), {0, BustCamera()});
    QString error = QStringLiteral("not finished");
    bool isFinished = false;
    const auto connection =
        QObject::connect(&player, &EventPlayer::Finished, &window, [&](const QString& reason) {
            error = reason;
            isFinished = true;
        });
    player.SetPace(pace);
    player.Play(std::move(file));
    WaitFor([&] { return isFinished; });
    QObject::disconnect(connection);
    return error;
}

ContentHash StudioSession::SceneHash() {
    const std::string path = Path("hashed.trovik");
    engine.Save(path);
    EXPECT_TRUE(WaitUntilIdle());
    return HashFile(path);
}

CameraInput BustCamera() {
    Camera camera;
    AxisAlignedBoundingBox box;
    box.Extend(Vector(-1.4f, 3.3f, -0.6f));
    box.Extend(Vector(1.4f, 8.5f, 1.7f));
    camera.SetSize(viewportSize.width(), viewportSize.height());
    camera.Frame(box);
    return camera.Pose();
}

std::vector<TimedInput> PenStroke(double y, uint32_t time, int samples, bool isEraser) {
    std::vector<TimedInput> events;
    for (int i = 0; i < samples; ++i) {
        const double t = static_cast<double>(i) / (samples - 1);
        PenInput pen;
        pen.kind = i == 0 ? PenInput::Kind::Press : PenInput::Kind::Move;
        pen.position = {360.0 + 80.0 * t, y + 12.0 * t * t};
        pen.pressure = 0.3 + 0.6 * t;
        pen.tilt = {20.0 * t, -10.0};
        pen.isEraser = isEraser;
        events.push_back({time + static_cast<uint32_t>(i) * 8, pen});
    }
    // The pen is held still before it is lifted.
    const uint32_t last = events.back().time;
    auto lifted = std::get<PenInput>(events.back().input);
    lifted.kind = PenInput::Kind::Release;
    events.push_back({last + 16, TickInput()});
    events.push_back({last + 32, TickInput()});
    events.push_back({last + 40, lifted});
    return events;
}

std::vector<TimedInput> MouseStroke(double y, uint32_t time, bool isFromPen) {
    std::vector<TimedInput> events;
    for (const TimedInput& event : PenStroke(y, time)) {
        const auto* pen = std::get_if<PenInput>(&event.input);
        if (pen != nullptr)
            events.push_back(
                {event.time, MouseInput{pen->kind, pen->position, pen->button, isFromPen}});
    }
    return events;
}

TimedInput Key(KeyInput::Kind kind, QKeyCombination key, uint32_t time) {
    return {time, KeyInput{kind, key, {}}};
}

TimedInput Step(const char* json) { return {0, StepInput{nlohmann::json::parse(json)}}; }

std::vector<TimedInput> Joined(std::initializer_list<std::vector<TimedInput>> lists) {
    std::vector<TimedInput> joined;
    for (const std::vector<TimedInput>& list : lists)
        joined.insert(joined.end(), list.begin(), list.end());
    return joined;
}

}  // namespace trovik::studio::test
