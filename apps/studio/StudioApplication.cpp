// SPDX-License-Identifier: Apache-2.0
#include "StudioApplication.h"

#include "CommandLineWork.h"
#include "commands/FileActions.h"
#include "commands/Keymap.h"
#include "commands/Preferences.h"
#include "commands/StudioScene.h"
#include "commands/SymmetrySetting.h"
#include "engine/JournalFolder.h"
#include "events/EventRecorder.h"
#include "framework/errors/HostError.h"
#include "input/BrushCursor.h"
#include "input/TabletTester.h"
#include "input/ViewportInput.h"
#include "viewport/ViewportWidget.h"
#include "window/MainWindow.h"
#include "window/RecoveryDialog.h"
#include "window/Theme.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QThreadPool>

namespace trovik::studio {

namespace {

/// The sphere of a new document: 24 576 faces in the base mesh, four times as many on each further
/// level.
constexpr uint32_t firstSegments = 32;
constexpr int firstLevels = 1;
/// Brush radius for an imported mesh, in logical pixels.
constexpr double firstRadius = 50.0;

/// How long after a change a thumbnail of the document is stored for the recovery dialog.
constexpr int pictureDelayMilliseconds = 15000;
constexpr QSize pictureSize(760, 440);

std::optional<CameraMotion> BarrelMotion(const QString& effect) {
    if (effect == QLatin1String("pan")) return CameraMotion::Pan;
    if (effect == QLatin1String("orbit")) return CameraMotion::Orbit;
    return std::nullopt;
}

}  // namespace

StudioApplication::StudioApplication(const CommandLine& line) : commandLine(line) {
    const QString settingsPath = commandLine.hasNoPreferences
                                     ? scratch.filePath(QStringLiteral("studio.ini"))
                                     : Preferences::UsualPath();
    preferences = std::make_unique<Preferences>(settingsPath);
    ApplyTheme(preferences->Theme(), preferences->UiScale());
    engine = std::make_unique<Engine>(
        commandLine.hasNoJournal ? std::string() : StudioFolders::Journals().toStdString());
    actions = std::make_unique<ActionRegistry>(nullptr);
    // Actions are added before the window is created, because the window adds them to its menus.
    AddSelectionActions();
    AddTabletTester();
    AddEventActions();
    view = std::make_unique<ViewModel>();
    viewport = new ViewportWidget(*engine);
    const QString keysPath = commandLine.hasNoPreferences
                                 ? QString()
                                 : StudioFolders::Config() + QStringLiteral("/keymap.json");
    keymap = std::make_unique<Keymap>(*actions, keysPath);
    window =
        std::make_unique<MainWindow>(*engine, *actions, *view, *preferences, *keymap, viewport);
    input = new ViewportInput(*engine, *actions, *viewport);
    const EventTarget target{*engine, *actions, *viewport, *input};
    recorder = std::make_unique<EventRecorder>(target);
    work = std::make_unique<CommandLineWork>(commandLine, target, *window);
    connect(&work->Player(), &EventPlayer::Noted, window.get(), &MainWindow::ShowNote);
    connect(&window->Files(), &FileActions::Refused, work.get(), &CommandLineWork::Fail);
    connect(recorder.get(), &EventRecorder::Interrupted, this, [this] {
        recorder->Stop();
        window->ShowNote(tr("Event recording has ended because another document was opened."));
    });
    if (const QString problem = keymap->Load(); !problem.isEmpty()) window->ShowError(problem);
    if (commandLine.viewportWidth > 0) viewport->setFixedWidth(commandLine.viewportWidth);
    if (commandLine.viewportHeight > 0) viewport->setFixedHeight(commandLine.viewportHeight);
    ConnectView();
    ConnectInput();
    ApplyPreferences();
    connect(preferences.get(), &Preferences::Changed, this, &StudioApplication::ApplyPreferences);
    connect(engine.get(), &Engine::Opened, this, &StudioApplication::WhenOpened);
    connect(engine.get(), &Engine::StateChanged, this, &StudioApplication::ShowSymmetry);
    pictureTimer.setSingleShot(true);
    pictureTimer.setInterval(pictureDelayMilliseconds);
    connect(&pictureTimer, &QTimer::timeout, this, &StudioApplication::StorePicture);
    connect(engine.get(), &Engine::StateChanged, this, [this] {
        if (engine->State()->isModified && !pictureTimer.isActive()) pictureTimer.start();
    });
}

StudioApplication::~StudioApplication() {
    // Tasks that read journals post their results to this object.
    QThreadPool::globalInstance()->waitForDone();
    work.reset();
    recorder.reset();
    // Destroy the window first: its dialogs and panels use the other objects.
    window.reset();
}

void StudioApplication::ConnectView() {
    view->grab = [this] { return viewport->Grab(); };
    view->pose = [this] { return viewport->View().Pose(); };
    view->bounds = [this] { return viewport->WorldBounds(); };
    connect(view.get(), &ViewModel::PoseRequested, viewport, [this](const CameraPose& pose) {
        Camera camera = viewport->View();
        camera.SetPose(pose);
        viewport->SetView(camera);
    });
    // Bookmarks, documents and played events change the projection too.
    connect(viewport, &ViewportWidget::CameraChanged, view.get(), [this] {
        view->SetOrthographic(viewport->View().IsOrthographic());
        view->SetFieldOfView(viewport->View().FieldOfView());
    });
    connect(view.get(), &ViewModel::SettingsChanged, viewport, [this] {
        viewport->SetSettings(view->Settings());
    });
    view->SetSettings(viewport->Settings());
    connect(&window->Scene(), &StudioScene::Changed, viewport, [this] {
        viewport->SetReferences(window->Scene().References());
    });
    connect(view.get(), &ViewModel::FrameRequested, viewport, &ViewportWidget::FrameAll);
    connect(view.get(), &ViewModel::OrthographicChanged, viewport, [this](bool on) {
        Camera camera = viewport->View();
        camera.SetOrthographic(on);
        viewport->SetView(camera);
    });
    connect(view.get(), &ViewModel::FieldOfViewChanged, viewport, [this](float degrees) {
        Camera camera = viewport->View();
        if (camera.FieldOfView() == degrees) return;
        camera.SetFieldOfView(degrees);
        viewport->SetView(camera);
    });
    connect(view.get(),
            &ViewModel::LookRequested,
            viewport,
            [this](const Vector& direction, const Vector& up) {
                Camera camera = viewport->View();
                camera.LookAlong(direction, up);
                viewport->SetView(camera);
            });
    connect(viewport, &ViewportWidget::FrameDrawn, view.get(), [this] {
        view->SetPenLatency(viewport->PenLatency());
    });
}

void StudioApplication::ConnectInput() {
    connect(input, &ViewportInput::HudChanged, viewport, &ViewportWidget::SetHudLines);
    connect(input, &ViewportInput::Refused, window.get(), &MainWindow::ShowNote);
    connect(input, &ViewportInput::MenuRequested, window.get(), [this](const QPoint& position) {
        window->ShowViewportMenu(input->Cursor().Hit(), position);
    });
}

void StudioApplication::ApplyPreferences() {
    ApplyTheme(preferences->Theme(), preferences->UiScale());
    input->SetNavigation(NavigationPreset::Named(preferences->Navigation()));
    input->SetEraser(preferences->Eraser() == QLatin1String("smooth")
                         ? BrushOperation::ModifierSmooth
                         : BrushOperation::ModifierInvert);
    input->SetBarrel(BarrelMotion(preferences->BarrelButton()));
    engine->SetPreferences(
        {{"Undo Budget", preferences->UndoBudget()}, {"Undo File", preferences->UsesUndoFile()}});
    input->Router().SetPenPosition(preferences->PenPosition() == QLatin1String("pointer")
                                       ? PointerRouter::PenPosition::Cursor
                                       : PointerRouter::PenPosition::Device);
}

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
                  .run = [this] { RecordEvents(); }});
    actions->Add({.id = "file.playEvents",
                  .text = tr("Play Events…"),
                  .description = tr("Plays an event file on the open document. Escape stops it."),
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
    try {
        work->Player().Play(ReadEventFile(path.toStdString()));
    } catch (const HostError& error) {
        window->ShowError(QString::fromStdString(error.what()));
    }
}

void StudioApplication::ShowSymmetry() {
    Overlays overlays = viewport->Shown();
    overlays.symmetryPlanes.clear();
    const SymmetrySetting symmetry = SymmetrySetting::Of(*engine->State());
    for (int axis = 0; axis < 3; ++axis)
        if (symmetry.HasPlane(axis)) overlays.symmetryPlanes.push_back(axis);
    viewport->SetOverlays(overlays);
}

void StudioApplication::WhenOpened() {
    const OpenedDocument& document = engine->Document();
    Camera camera = viewport->View();
    camera.SetView(document.view);
    const bool isNewView =
        document.scenePath.empty() && !document.isRecovered && !document.isFromScript;
    if (isNewView) camera.Frame(document.bounds);
    viewport->SetView(camera);
    // A radius in pixels is suitable for a mesh of any size.
    if (isNewView)
        engine->Run({{"set", {{"radiusPixels", firstRadius * viewport->devicePixelRatioF()}}}});
}

void StudioApplication::FindRecovery() {
    const QString folder = StudioFolders::Journals();
    // Reading journals can take a long time.
    QThreadPool::globalInstance()->start([this, folder] {
        auto works = std::make_shared<std::vector<RecoverableWork>>(FindRecoverableWork(folder));
        RemoveLeftovers(folder.toStdString());
        QMetaObject::invokeMethod(
            this,
            [this, works] {
                if (!OfferRecovery(std::move(*works))) OpenFirst();
            },
            Qt::QueuedConnection);
    });
}

bool StudioApplication::OfferRecovery(std::vector<RecoverableWork> works) {
    if (works.empty()) return false;
    RecoveryDialog dialog(works, window.get());
    dialog.exec();
    if (dialog.Chosen() == RecoveryDialog::Choice::Recover) {
        OpenRequest request;
        request.journalPath = dialog.Journal().toStdString();
        request.title = tr("Recovered").toStdString();
        engine->Open(request);
        return true;
    }
    if (dialog.Chosen() != RecoveryDialog::Choice::Discard) return false;
    RemoveJournal(dialog.Journal().toStdString());
    std::erase_if(works,
                  [&](const RecoverableWork& one) { return one.journalPath == dialog.Journal(); });
    return OfferRecovery(std::move(works));
}

void StudioApplication::StorePicture() {
    if (!engine->HasDocument() || engine->Document().journalPath.empty()) return;
    // Reading back the frame would take too long during a stroke.
    if (input->HasGesture()) {
        pictureTimer.start();
        return;
    }
    const QString path = QString::fromStdString(PicturePathOf(engine->Document().journalPath));
    const QImage image = viewport->grabFramebuffer();
    // Scaling and compression take longer than a frame.
    QThreadPool::globalInstance()->start([image, path] {
        image.scaled(pictureSize, Qt::KeepAspectRatio, Qt::SmoothTransformation).save(path);
    });
}

bool StudioApplication::MayAsk() const {
    return !commandLine.quits && commandLine.events.empty() && !commandLine.hasNoJournal;
}

void StudioApplication::OpenFirst() {
    if (!commandLine.file.empty()) {
        window->Files().Open(
            QFileInfo(QString::fromStdString(commandLine.file)).absoluteFilePath());
        return;
    }
    window->Files().OpenPrimitive(Primitive::Sphere, firstSegments, firstLevels);
    if (MayAsk()) window->ShowWelcome();
}

void StudioApplication::Start() {
    window->show();
    // Offers recovery before opening a file, because the lost work may have started from that file.
    if (MayAsk())
        FindRecovery();
    else
        OpenFirst();
}

}  // namespace trovik::studio
