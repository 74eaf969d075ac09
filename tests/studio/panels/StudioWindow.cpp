// SPDX-License-Identifier: Apache-2.0
#include "tests/studio/panels/StudioWindow.h"

#include "commands/Primitives.h"

#include <QApplication>
#include <QFile>

#include <vector>

namespace trovik::studio {

StudioWindow::StudioWindow() {
    window = std::make_unique<MainWindow>(engine, actions, view, preferences, keymap, viewport);
    QObject::connect(
        &engine, &Engine::Failed, &view, [this](const QString& error) { failures << error; });
    window->show();
    window->activateWindow();
    QApplication::processEvents();
}

StudioWindow::~StudioWindow() = default;

void StudioWindow::OpenSphere(int levels) {
    OpenRequest request;
    request.meshPath =
        WritePrimitive(Primitive::Sphere, 8, folder.filePath("shapes").toStdString());
    request.levels = levels;
    engine.Open(request);
    ASSERT_TRUE(WaitFor([this] {
        return (engine.HasDocument() && engine.State() && engine.Settings()) || !failures.empty();
    }));
    ASSERT_TRUE(failures.empty()) << failures.first().toStdString();
    Finish();
}

void StudioWindow::Finish() {
    bool isDone = false;
    engine.Run({{"set", nlohmann::json::object()}}, {}, [&](const QString&) { isDone = true; });
    ASSERT_TRUE(WaitFor([&] { return isDone; }));
    QApplication::processEvents();
}

void StudioWindow::FinishLayout() {
    const auto geometries = [this] {
        std::vector<QRect> rectangles{window->geometry()};
        for (const QWidget* widget : window->findChildren<QWidget*>())
            if (widget->isVisible()) rectangles.push_back(widget->geometry());
        return rectangles;
    };
    constexpr int turns = 5;
    std::vector<QRect> last;
    int unchanged = 0;
    EXPECT_TRUE(WaitFor([&] {
        std::vector<QRect> now = geometries();
        unchanged = now == last ? unchanged + 1 : 0;
        last = std::move(now);
        return unchanged >= turns;
    }));
}

nlohmann::json StudioWindow::Steps() {
    Finish();
    const QString path = folder.filePath("actions.json");
    QFile::remove(path);
    engine.SaveActions(path.toStdString());
    Finish();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return {};
    const nlohmann::json script = nlohmann::json::parse(file.readAll().toStdString());
    nlohmann::json steps = nlohmann::json::array();
    // Omits the steps that Finish uses for waiting.
    for (const nlohmann::json& step : script.at("steps"))
        if (step != nlohmann::json{{"set", nlohmann::json::object()}}) steps.push_back(step);
    return steps;
}

nlohmann::json StudioWindow::LastStep() {
    const nlohmann::json steps = Steps();
    return steps.empty() ? nlohmann::json() : steps.back();
}

}  // namespace trovik::studio
