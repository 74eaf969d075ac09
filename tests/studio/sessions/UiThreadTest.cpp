// SPDX-License-Identifier: Apache-2.0

/// \file No work on a mesh of a million quads keeps the UI thread busy.
#include "StudioApplication.h"
#include "commands/FileActions.h"
#include "tests/studio/sessions/StudioSession.h"
#include "window/MainWindow.h"
#include "window/UiWatchdog.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <optional>

namespace trovik::studio::test {

namespace {

/// 62,424 faces; two levels higher 998,784.
constexpr uint32_t segments = 102;
constexpr uint32_t million = 998'784;

class UiThread : public testing::Test {
protected:
    UiThread() {
        CommandLine line;
        line.hasNoPreferences = true;
        studio.emplace(line);
        engine = &studio->GetEngine();
        studio->Viewport().setUpdatesEnabled(false);
        QObject::connect(engine, &Engine::SurfaceArrived, [this] { engine->TakeUpdates(); });
        QObject::connect(
            engine, &Engine::Failed, [this](const QString& text) { failures << text; });
        QObject::connect(engine, &Engine::Opened, [this] { ++documents; });
    }

    void WaitUntilIdle() {
        ASSERT_TRUE(WaitFor([this] { return engine->IsIdle(); }, 120'000));
        ASSERT_TRUE(failures.empty()) << failures.first().toStdString();
    }

    /// Runs `work` as one event, like a key press, and waits for everything that it triggers.
    void Measure(const char* name, const std::function<void()>& work) {
        Watchdog().Restart();
        QTimer::singleShot(0, qApp, work);
        QCoreApplication::processEvents();
        WaitUntilIdle();
        const UiBusyTimes& times = Watchdog().Times();
        EXPECT_GT(times.events, 0u) << name;
        EXPECT_EQ(times.overLimit, 0u) << name << ": " << times.late.join(u'\n').toStdString();
        std::printf("%-12s longest of %llu events: %.2f ms\n",
                    name,
                    static_cast<unsigned long long>(times.events),
                    times.longest);
    }

    static UiWatchdogApplication& Watchdog() { return *qobject_cast<UiWatchdogApplication*>(qApp); }

    QTemporaryDir folder;
    std::optional<StudioApplication> studio;
    Engine* engine = nullptr;
    QStringList failures;
    int documents = 0;
};

TEST_F(UiThread, IsNotBusyWithAMillionQuads) {
    studio->Start();
    ASSERT_TRUE(WaitFor([this] { return documents == 1; }, 60'000));
    WaitUntilIdle();
    const QString scene = folder.filePath("million.trovik");
    Measure("open",
            [this] { studio->Window().Files().OpenPrimitive(Primitive::Sphere, segments, 0); });
    ASSERT_EQ(documents, 2);
    Measure("subdivide", [this] { engine->Run({{"subdivide", 2}}); });
    ASSERT_EQ(engine->State()->levels.back().faces, million);
    Measure("level", [this] { engine->Run({{"level", 1}}); });
    Measure("level up", [this] { engine->Run({{"level", 2}}); });
    Measure("sculpt", [this] {
        StrokeStart start;
        start.view = studio->Viewport().View().ToStrokeView();
        engine->BeginStroke(start);
        const auto width = static_cast<float>(start.view.width);
        const auto height = static_cast<float>(start.view.height);
        for (int i = 0; i < 60; ++i)
            engine->AddSamples({{width * (0.4f + 0.003f * static_cast<float>(i)),
                                 height * 0.5f,
                                 0.8f,
                                 0.0f,
                                 0.0f,
                                 8.0 * i}});
        engine->EndStroke();
    });
    EXPECT_GE(engine->State()->history.size(), 2u);
    Measure("undo", [this] { engine->Run({{"undo", 1}}); });
    Measure("redo", [this] { engine->Run({{"redo", 1}}); });
    Measure("save", [&] { engine->Save(scene.toStdString()); });
    Measure("reopen", [&] { studio->Window().Files().Open(scene); });
    EXPECT_EQ(documents, 3);
}

}  // namespace

}  // namespace trovik::studio::test
