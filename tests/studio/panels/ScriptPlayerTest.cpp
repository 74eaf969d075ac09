// SPDX-License-Identifier: Apache-2.0

/// \file
/// Tests scripts that run step by step and dab by dab, and images computed from the document.
#include "commands/Primitives.h"
#include "commands/ScriptPlayer.h"
#include "engine/ImageWork.h"
#include "framework/io/ContentHash.h"
#include "tests/SourceFolder.h"
#include "tests/studio/SurfaceCopy.h"
#include "tests/studio/panels/StudioWindow.h"
#include "window/ScriptBar.h"

#include <QDir>
#include <QFile>

namespace trovik::studio {

namespace {

using nlohmann::json;
using State = ScriptPlayer::State;

class ScriptPlayerTest : public StudioWindow {
protected:
    ScriptPlayerTest() {
        json script = json::parse(R"({"levels": 2, "mirror": ["x"], "steps": [
            {"set": {"radius": 0.5, "strength": 60}},
            {"stroke": {"surface": [[0.2, 0, 1], [0.9, 0.3, 0.5]]}},
            {"comment": "nothing"},
            {"mask": {"center": [0, 1, 0], "radius": 0.7}},
            {"stroke": {"surface": [[0, 0.9, 0.4], [0, -0.5, 0.8]]}}]})");
        script["mesh"] =
            WritePrimitive(Primitive::Sphere, 8, folder.filePath("shapes").toStdString());
        QFile file(folder.filePath("script.json"));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray::fromStdString(script.dump()));
        QObject::connect(&player, &ScriptPlayer::Finished, [this](int steps, const QString& error) {
            isFinished = true;
            done = steps;
            reason = error;
        });
        QObject::connect(
            &player, &ScriptPlayer::Refused, [this](const QString& error) { refusal = error; });
        QObject::connect(&engine, &Engine::DabShown, [this] { ++dabs; });
        player.SetSpeed(1000.0);
    }

    void Load() {
        player.Load(folder.filePath("script.json"));
        ASSERT_TRUE(WaitFor([this] { return player.GetState() == State::Paused; }));
    }
    ContentHash SceneHash() {
        const std::string path = folder.filePath("hashed.trovik").toStdString();
        engine.Save(path);
        Finish();
        return HashFile(path);
    }
    void Follow() { FollowUpdates(engine, copy); }

    ScriptPlayer player{engine};
    std::vector<DisplayVertex> copy;
    int dabs = 0;
    int done = -1;
    QString reason;
    QString refusal;
    bool isFinished = false;
};

}  // namespace

TEST_F(ScriptPlayerTest, StepsThroughAScript) {
    player.Load(folder.filePath("none.json"));
    EXPECT_TRUE(refusal.isEmpty()) << "files are read on the engine thread";
    ASSERT_TRUE(WaitFor([&] { return !refusal.isEmpty(); }));
    EXPECT_TRUE(refusal.contains("none.json")) << refusal.toStdString();
    EXPECT_EQ(player.GetState(), State::Idle);
    Load();
    EXPECT_EQ(player.StepCount(), 4) << "all but the comment";
    EXPECT_EQ(player.Done(), 0);
    EXPECT_EQ(player.StepText(), "set");
    for (int step = 1; step <= 3; ++step) {
        player.Step();
        ASSERT_TRUE(WaitFor([&] { return player.GetState() == State::Paused; }));
        EXPECT_EQ(player.Done(), step);
    }
    EXPECT_EQ(player.StepText(), "stroke");
    EXPECT_TRUE(WaitFor([this] { return State().history.size() == 2u; })) << State().history.size();
    player.Step();
    ASSERT_TRUE(WaitFor([&] { return isFinished; }));
    EXPECT_EQ(done, 4);
    EXPECT_EQ(reason, QString());
    EXPECT_EQ(dabs, 0);
}

TEST_F(ScriptPlayerTest, TimeLapseShowsEachDabAndGivesTheSameScene) {
    player.Run(folder.filePath("script.json"));
    ASSERT_TRUE(WaitFor([&] { return isFinished; }));
    const ContentHash expected = SceneHash();
    EXPECT_EQ(dabs, 0);

    Load();
    isFinished = false;
    int frames = 0;
    QObject::connect(&player, &ScriptPlayer::Shown, &view, [&] { ++frames; });
    QObject::connect(&engine, &Engine::DabShown, [this] { Follow(); });
    bool wasPaused = false;
    QObject::connect(&engine, &Engine::DabShown, &view, [&] {
        if (dabs != 3 || wasPaused) return;
        wasPaused = true;
        player.Pause();
    });
    player.Play();
    ASSERT_TRUE(WaitFor([&] { return wasPaused; }));
    WaitFor([] { return false; }, 100);
    EXPECT_EQ(dabs, 3) << "paused between two dabs";
    EXPECT_EQ(player.GetState(), State::Paused);
    player.Play();
    ASSERT_TRUE(WaitFor([&] { return isFinished; }));
    EXPECT_GT(dabs, 8);
    EXPECT_EQ(frames, dabs + 4) << "each step gives a frame at its end";
    EXPECT_EQ(SceneHash(), expected);

    WaitFor([] { return false; }, 50);
    Follow();
    const std::vector<DisplayVertex> followed = copy;
    copy.clear();
    engine.RequestSurface();
    Finish();
    ASSERT_TRUE(WaitFor([&] {
        Follow();
        return copy.size() == followed.size();
    }));
    WaitFor([] { return false; }, 50);
    Follow();
    EXPECT_TRUE(copy == followed) << "updates during a stroke";
}

TEST_F(ScriptPlayerTest, StoppedScriptCompletesItsStep) {
    Load();
    QObject::connect(&engine, &Engine::DabShown, &view, [&] {
        if (dabs == 2) player.Stop();
    });
    player.Play();
    ASSERT_TRUE(WaitFor([&] { return isFinished; }));
    EXPECT_FALSE(reason.isEmpty());
    EXPECT_EQ(player.GetState(), State::Idle);
    Finish();
    EXPECT_EQ(State().history.size(), 1u) << "the whole stroke is one step of the history";
    EXPECT_TRUE(failures.empty()) << failures.first().toStdString();
}

TEST_F(ScriptPlayerTest, ScriptSeesItsOwnCamera) {
    QFile file(folder.filePath("camera.json"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(R"({"steps": [
        {"camera": {"eye": [0, 0, 5], "target": [0, 0, 0], "width": 100, "height": 100}},
        {"mask": {"box": [0, 0, 50, 100]}}]})");
    file.close();
    OpenSphere();
    StrokeView elsewhere;
    elsewhere.target = {50.0f, 0.0f, 0.0f};
    engine.SetView(elsewhere);
    player.Run(file.fileName());
    ASSERT_TRUE(WaitFor([&] { return isFinished; }));
    EXPECT_EQ(reason, QString());
    Finish();
    EXPECT_EQ(State().view.width, 100);
    EXPECT_EQ(State().history.size(), 1u) << "the box contains half of the sphere";
}

TEST_F(ScriptPlayerTest, BarSavesFrames) {
    Load();
    ScriptBar bar(
        player,
        [] {
            QImage frame(4, 4, QImage::Format_RGB32);
            frame.fill(Qt::blue);
            return frame;
        },
        preferences,
        nullptr);
    const QDir film(folder.filePath("film"));
    bar.BeginFilm(film.path());
    player.SetSpeed(1000.0);
    player.Play();
    ASSERT_TRUE(WaitFor([&] { return isFinished; }));
    bar.EndFilm();
    const QStringList frames = film.entryList({"frame_*.png"});
    EXPECT_EQ(frames.size(), 1 + dabs + 4) << "and one before the first step";
    EXPECT_EQ(frames.first(), "frame_00001.png");
    EXPECT_EQ(QImage(film.filePath(frames.last())).pixelColor(1, 1), QColor(Qt::blue));
}

TEST_F(ScriptPlayerTest, RenderIsThePictureOfTheStep) {
    OpenSphere(2);
    RenderOptions options;
    options.width = 80;
    options.height = 60;
    options.samples = 16;
    StrokeView seen;
    seen.eye = {1.0f, 1.5f, 4.0f};
    engine.SetView(seen);
    std::vector<QImage> images;
    QString error = "not done";
    engine.Compute(
        "Render",
        RenderWork(options),
        std::make_shared<std::atomic<bool>>(false),
        [&](const QImage& image) { images.push_back(image); },
        [&](const QString& text) { error = text; });
    ASSERT_TRUE(WaitFor([&] { return error != "not done"; }));
    EXPECT_EQ(error, QString());
    ASSERT_EQ(images.size(), 3u);
    EXPECT_EQ(images[0].size(), QSize(20, 15));
    EXPECT_NE(images[1], images[2]) << "fewer samples";
    const QString path = folder.filePath("picture.png");
    engine.Run({{"render",
                 {{"file", path.toStdString()}, {"width", 80}, {"height", 60}, {"samples", 16}}}});
    Finish();
    EXPECT_EQ(images[2], QImage(path).convertToFormat(images[2].format()));
}

TEST_F(ScriptPlayerTest, CancelledWorkShowsNothing) {
    OpenSphere(2);
    const auto cancel = std::make_shared<std::atomic<bool>>(false);
    bool isCalled = false;
    engine.Compute(
        "Render",
        RenderWork({}),
        cancel,
        [&](const QImage&) { isCalled = true; },
        [&](const QString&) { isCalled = true; });
    *cancel = true;
    Finish();
    EXPECT_FALSE(isCalled);
    EXPECT_TRUE(failures.empty());
}

TEST_F(ScriptPlayerTest, BakePreviewNeedsTextureCoordinates) {
    OpenSphere(1);
    BakeOptions options;
    options.from = 1;
    options.width = options.height = 32;
    QImage image;
    QString error = "not done";
    const auto compute = [&] {
        error = "not done";
        image = {};
        engine.Compute(
            "Preview",
            BakeWork(options),
            std::make_shared<std::atomic<bool>>(false),
            [&](const QImage& shown) { image = shown; },
            [&](const QString& text) { error = text; });
        WaitFor([&] { return error != "not done"; });
    };
    compute();
    EXPECT_TRUE(error.contains("texture coordinates")) << error.toStdString();
    EXPECT_TRUE(image.isNull());
    EXPECT_TRUE(failures.empty()) << "dialogs show the error";

    OpenRequest request;
    request.meshPath = test::SourceFolder() + "/examples/meshes/spot.obj";
    request.levels = 2;
    bool isOpened = false;
    QObject::connect(&engine, &Engine::Opened, &view, [&] { isOpened = true; });
    engine.Open(request);
    ASSERT_TRUE(WaitFor([&] { return isOpened; }));
    options.from = 2;
    options.repeat = true;
    options.kind = MapKind::Normal;
    compute();
    EXPECT_EQ(error, QString());
    ASSERT_EQ(image.size(), QSize(32, 32));
    EXPECT_GT(qBlue(image.pixel(16, 16)), 200) << "normals of the smooth surface";
}

}  // namespace trovik::studio
