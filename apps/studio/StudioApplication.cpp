// SPDX-License-Identifier: Apache-2.0
#include "StudioApplication.h"

#include "CommandLineWork.h"
#include "WorkRecovery.h"
#include "commands/FileActions.h"
#include "commands/Keymap.h"
#include "commands/Preferences.h"
#include "commands/StudioScene.h"
#include "commands/SymmetrySetting.h"
#include "events/EventRecorder.h"
#include "input/BrushCursor.h"
#include "input/ViewportInput.h"
#include "viewport/ViewportWidget.h"
#include "window/MainWindow.h"
#include "window/Theme.h"

#include <QFileInfo>
#include <QThreadPool>

namespace trovik::studio {

namespace {

/// Size of the sphere in a new document: 6 144 faces in the base mesh, and 24 576 on level 1.
constexpr uint32_t firstSegments = 32;
constexpr int firstLevels = 1;
/// Brush radius for an imported mesh, in logical pixels.
constexpr double firstRadius = 50.0;

std::optional<CameraMotion> BarrelMotion(const QString& effect) {
    if (effect == QLatin1String("pan")) return CameraMotion::Pan;
    if (effect == QLatin1String("orbit")) return CameraMotion::Orbit;
    return std::nullopt;
}

}  // namespace

StudioApplication::StudioApplication(const CommandLine& line) : commandLine(line) {
    // Reading journals can take a long time, so it runs while the window is created.
    if (MayAsk()) unfinishedWork = StartToFindWork(StudioFolders::Journals());
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
    recovery = std::make_unique<WorkRecovery>(*engine, *viewport, *input, *window);
}

StudioApplication::~StudioApplication() {
    // Tasks that read journals post their results to this object.
    QThreadPool::globalInstance()->waitForDone();
    recovery.reset();
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
    // The engine opens the document while the window system shows the window. Recovery is offered
    // before a file is opened, because the lost work may have started from that file.
    if (MayAsk())
        recovery->Offer(unfinishedWork, [this] { OpenFirst(); });
    else
        OpenFirst();
    window->show();
}

}  // namespace trovik::studio
