// SPDX-License-Identifier: Apache-2.0

/// \file
/// Actions of StudioApplication that need the viewport's input.
#include "CommandLineWork.h"
#include "StudioApplication.h"
#include "events/EventRecorder.h"
#include "framework/errors/HostError.h"
#include "input/TabletTester.h"
#include "input/ViewportInput.h"
#include "window/MainWindow.h"

#include <QFileDialog>

#include <memory>
#include <utility>

namespace trovik::studio {

void StudioApplication::AddSelection(const char* id,
                                     const QString& text,
                                     const QString& description,
                                     SelectionGesture::Shape shape,
                                     const char* step) {
    const auto run = [this, step](SelectionGesture::Shape drawn,
                                  const std::vector<QPointF>& points) {
        nlohmann::json choice;
        if (drawn == SelectionGesture::Shape::Box) {
            choice["box"] = {points[0].x(), points[0].y(), points[1].x(), points[1].y()};
        } else {
            for (const QPointF& point : points) choice["lasso"].push_back({point.x(), point.y()});
        }
        engine->Run({{step, choice}});
    };
    actions->Add({.id = QString::fromLatin1(id),
                  .text = text,
                  .description = description,
                  .icon = shape == SelectionGesture::Shape::Box ? "select-box" : "select-lasso",
                  .run = [this, shape, run] { input->SelectNext(shape, run); }});
}

void StudioApplication::AddSelectionActions() {
    using Shape = SelectionGesture::Shape;
    AddSelection("mask.box",
                 tr("Mask by Box"),
                 tr("Masks the visible surface inside a box that you drag over the viewport."),
                 Shape::Box,
                 "mask");
    AddSelection("mask.lasso",
                 tr("Mask by Lasso"),
                 tr("Masks the visible surface inside an outline that you draw over the viewport."),
                 Shape::Lasso,
                 "mask");
    AddSelection("visibility.hideBox",
                 tr("Hide by Box"),
                 tr("Hides the faces inside a box that you drag over the viewport."),
                 Shape::Box,
                 "hide");
    AddSelection("visibility.hideLasso",
                 tr("Hide by Lasso"),
                 tr("Hides the faces inside an outline that you draw over the viewport."),
                 Shape::Lasso,
                 "hide");
    AddSelection("visibility.isolateLasso",
                 tr("Isolate by Lasso"),
                 tr("Shows only the faces inside an outline that you draw over the viewport."),
                 Shape::Lasso,
                 "isolate");
}

void StudioApplication::AddTabletTester() {
    actions->Add({.id = "help.tabletTester",
                  .text = tr("Tablet Tester…"),
                  .description = tr("Shows tablet data: rate, pressure, tilt, buttons."),
                  .icon = "tablet",
                  .run = [this] {
                      auto* tester = new TabletTester(input->Router(), window.get());
                      tester->setAttribute(Qt::WA_DeleteOnClose);
                      tester->show();
                  }});
}

void StudioApplication::AddEventActions() {
    actions->Add({.id = "file.recordEvents",
                  .text = tr("Record Events"),
                  .description = tr("Records pen, mouse and key input and commands. Choose again "
                                    "to stop and write an event file."),
                  .icon = "record",
                  .run = [this] { RecordEvents(); }});
    actions->Add({.id = "file.playEvents",
                  .text = tr("Play Events…"),
                  .description = tr("Plays an event file on the open document. Escape stops it."),
                  .icon = "play",
                  .run = [this] { PlayEvents(); }});
}

void StudioApplication::RecordEvents() {
    if (!recorder->IsRecording()) {
        recorder->Start();
        window->ShowNote(tr("Recording events. Choose Record Events again to stop."));
        return;
    }
    const EventFile events = recorder->Stop();
    const QString path = QFileDialog::getSaveFileName(window.get(),
                                                      tr("Save Events"),
                                                      QStringLiteral("work.events.json"),
                                                      tr("Event files (*.events.json)"));
    if (path.isEmpty()) return;
    try {
        WriteEventFile(events, path.toStdString());
    } catch (const HostError& error) {
        window->ShowError(QString::fromStdString(error.what()));
    }
}

void StudioApplication::PlayEvents() {
    const QString path = QFileDialog::getOpenFileName(
        window.get(), tr("Play Events"), QString(), tr("Event files (*.events.json)"));
    if (path.isEmpty()) return;
    auto events = std::make_shared<EventFile>();
    engine->Prepare(
        tr("Reading the events"),
        [events, path] { *events = ReadEventFile(path.toStdString()); },
        [this, events](const QString& error) {
            if (error.isEmpty())
                work->Player().Play(std::move(*events));
            else
                window->ShowError(error);
        });
}

}  // namespace trovik::studio
