// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/Engine.h"
#include "tests/SourceFolder.h"
#include "tests/studio/WaitFor.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

namespace trovik::studio {

/// An engine with a journal, without a window.
class StudioEngine : public testing::Test {
protected:
    QTemporaryDir folder;
    std::unique_ptr<Engine> engine = std::make_unique<Engine>(Path("journals"));
    QStringList failures, notes;

    void SetUp() override { Listen(); }

    void Listen() {
        QObject::connect(
            engine.get(), &Engine::Failed, [this](const QString& m) { failures << m; });
        QObject::connect(engine.get(), &Engine::Noted, [this](const QString& m) { notes << m; });
    }

    std::size_t CountFiles(const char* name) {
        std::size_t count = 0;
        for ([[maybe_unused]] const auto& file : std::filesystem::directory_iterator(Path(name)))
            ++count;
        return count;
    }

    std::string Path(const char* name) { return folder.filePath(name).toStdString(); }

    /// Waits until all requests so far are carried out.
    void Finish() {
        bool isDone = false;
        engine->Run(
            {{"set", nlohmann::json::object()}}, {}, [&](const QString&) { isDone = true; });
        ASSERT_TRUE(WaitFor([&] { return isDone; }));
    }

    void OpenBust() {
        OpenRequest request;
        request.meshPath = trovik::test::SourceFolder() + "/examples/meshes/bust.obj";
        request.levels = 2;
        engine->Open(request);
        ASSERT_TRUE(WaitFor([this] { return engine->HasDocument() || !failures.empty(); }));
        ASSERT_TRUE(failures.empty()) << failures.first().toStdString();
        engine->SetView(engine->Document().view);
    }

    /// A stroke across the middle of the view, with a tick at its end.
    void Draw(StrokeStart start, float y, int samples = 40) {
        start.view = engine->Document().view;
        engine->BeginStroke(start);
        const auto width = static_cast<float>(start.view.width);
        const auto height = static_cast<float>(start.view.height);
        double time = 0.0;
        for (int i = 0; i < samples; ++i) {
            const float t = static_cast<float>(i) / static_cast<float>(samples - 1);
            time = i * 7.5;
            engine->AddSamples({{width * (0.42f + 0.16f * t),
                                 height * (y + 0.02f * t * t),
                                 0.3f + 0.7f * t,
                                 0.1f,
                                 -0.2f * t,
                                 time}});
        }
        engine->Tick(time + 16.0);
        engine->Tick(time + 32.0);
    }
};

}  // namespace trovik::studio
