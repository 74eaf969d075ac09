// SPDX-License-Identifier: Apache-2.0
#include "window/MainWindow.h"

#include "commands/CommandPalette.h"
#include "commands/FileActions.h"
#include "commands/Keymap.h"
#include "commands/Preferences.h"
#include "commands/ScriptPlayer.h"
#include "commands/StudioActions.h"
#include "commands/StudioScene.h"
#include "commands/ViewModel.h"
#include "panels/Controls.h"
#include "window/JournalNotice.h"
#include "window/MessageBar.h"
#include "window/PanelStack.h"
#include "window/PanelWindows.h"
#include "window/QuickBar.h"
#include "window/ScriptBar.h"
#include "window/StatusNumbers.h"
#include "window/ViewportMenu.h"
#include "window/WelcomeHint.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QFileInfo>
#include <QLineEdit>
#include <QMimeData>
#include <QStatusBar>
#include <QToolBar>
#include <QUrl>

#include <algorithm>

namespace trovik::studio {

MainWindow::MainWindow(Engine& engine,
                       ActionRegistry& registry,
                       ViewModel& view,
                       Preferences& preferences,
                       Keymap& map,
                       QWidget* viewport)
    : scene(std::make_unique<StudioScene>(engine)),
      context{engine, registry, view, preferences, *scene, this},
      keymap(map) {
    setAcceptDrops(true);
    setCentralWidget(viewport);
    viewport->setFocusPolicy(Qt::StrongFocus);
    viewport->installEventFilter(this);
    const auto addKeys = [this](const QString& id) {
        QAction* action = context.actions.Find(id);
        if (action == nullptr) return;
        QWidget* receiver = context.actions.IsForViewport(id) ? centralWidget() : this;
        receiver->addAction(action);
    };
    connect(&registry, &ActionRegistry::Added, this, addKeys);
    for (const ActionInfo& info : registry.Infos()) addKeys(info.id);
    AddActions();
    palette = new CommandPalette(registry, this);
    addToolBar(Qt::TopToolBarArea, new QuickBar(engine, registry, this));
    AddDocks();
    AddStatusBar();
    AddScriptBar();
    message = new MessageBar(viewport);
    new JournalNotice(engine, registry, viewport);
    FillMenus(*this, registry, *files);
    ConnectEngine();
    resize(1440, 900);
    const QByteArray geometry = preferences.Layout("geometry");
    if (!geometry.isEmpty()) restoreGeometry(geometry);
    ShowTitle();
    viewport->setFocus();
}

MainWindow::~MainWindow() = default;

void MainWindow::AddActions() {
    files = new FileActions(context, this);
    AddEditActions(context);
    AddToolActions(context);
    AddStrokeActions(context);
    AddLevelActions(context);
    AddLayerActions(context);
    AddMaskActions(context);
    AddVisibilityActions(context);
    AddGroupActions(context);
    AddSymmetryActions(context);
    AddSurfaceActions(context);
    AddTopologyActions(context);
    AddProjectionActions(context);
    AddAppendActions(context);
    AddViewActions(context);
    AddBookmarkActions(context);
    AddReferenceActions(context);
    AddWindowActions();
}

void MainWindow::AddStatusBar() {
    statusBar()->setSizeGripEnabled(false);
    statusBar()->addWidget(new StatusNumbers(context.engine, context.view, this));
    statusBar()->addPermanentWidget(new JobBar(context.engine, this));
}

void MainWindow::AddScriptBar() {
    auto* bar = new QToolBar(tr("Script"), this);
    bar->setObjectName(QStringLiteral("scriptBar"));
    bar->setMovable(false);
    ScriptPlayer& player = files->Player();
    bar->addWidget(new ScriptBar(
        player,
        [this] { return context.view.grab ? context.view.grab() : QImage(); },
        context.preferences,
        bar));
    addToolBar(Qt::BottomToolBarArea, bar);
    bar->hide();
    connect(&player, &ScriptPlayer::Changed, bar, [bar, &player] {
        const ScriptPlayer::State state = player.GetState();
        if (state == ScriptPlayer::State::Paused || state == ScriptPlayer::State::Playing)
            bar->show();
        if (state == ScriptPlayer::State::Idle) bar->hide();
    });
}

void MainWindow::ConnectEngine() {
    Engine& engine = context.engine;
    connect(&engine, &Engine::Failed, this, &MainWindow::ShowError);
    connect(&engine, &Engine::Noted, this, &MainWindow::ShowNote);
    connect(&engine, &Engine::StateChanged, this, &MainWindow::ShowTitle);
    connect(&engine, &Engine::Opened, this, [this] {
        ShowTitle();
        const std::vector<std::string>& notes = context.engine.Document().notes;
        QStringList lines;
        for (const std::string& note : notes) lines.append(QString::fromStdString(note));
        if (!lines.isEmpty()) ShowNote(lines.join(u'\n'));
    });
    connect(&engine, &Engine::StrokeAdvanced, this, [this] {
        if (welcome != nullptr) welcome->Dismiss();
    });
    connect(scene.get(), &StudioScene::Noted, this, &MainWindow::ShowNote);
    connect(files, &FileActions::Refused, this, &MainWindow::ShowError);
    connect(files, &FileActions::Succeeded, this, &MainWindow::ShowNote);
    connect(&keymap, &Keymap::StoreFailed, this, &MainWindow::ShowError);
}

void MainWindow::ShowTitle() {
    if (!context.engine.HasDocument()) {
        setWindowTitle(tr("Trovik Studio"));
        return;
    }
    const DocumentState& state = context.State();
    const OpenedDocument& document = context.engine.Document();
    const QString name = !state.scenePath.empty()
                             ? QFileInfo(QString::fromStdString(state.scenePath)).fileName()
                         : !document.title.empty()
                             ? QString::fromStdString(document.title)
                             : QFileInfo(QString::fromStdString(document.sourcePath)).fileName();
    setWindowTitle(tr("%1[*] – Trovik Studio").arg(name));
    setWindowModified(state.isModified);
}

void MainWindow::ShowWelcome() {
    if (!context.preferences.ShowsWelcome() || welcome != nullptr) return;
    welcome = new WelcomeHint(context.actions, context.preferences, centralWidget());
}

void MainWindow::ShowViewportMenu(const HoverHit& hit, const QPoint& globalPosition) {
    auto* menu = new ViewportMenu(context, hit, this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(globalPosition);
}

void MainWindow::ShowNote(const QString& text) { message->ShowNote(text); }
void MainWindow::ShowError(const QString& text) { message->ShowError(text); }

void MainWindow::TogglePanels() {
    const QList<QDockWidget*> docks = findChildren<QDockWidget*>();
    const bool anyShown = panelWindows->IsAnyVisible() ||
                          std::any_of(docks.begin(), docks.end(), [](const QDockWidget* dock) {
                              return dock->isVisible();
                          });
    // The dock of an undocked panel is empty.
    for (QDockWidget* dock : docks) dock->setVisible(!anyShown && dock->widget() != nullptr);
    panelWindows->SetVisible(!anyShown);
}

void MainWindow::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (isLaidOut) return;
    isLaidOut = true;
    auto* toolDock = findChild<QDockWidget*>(QStringLiteral("tools"));
    auto* brushDock = findChild<QDockWidget*>(QStringLiteral("brush"));
    auto* panelDock = findChild<QDockWidget*>(QStringLiteral("panels"));
    const int unit = fontMetrics().height();
    resizeDocks({toolDock, brushDock}, {2 * (unit + 20) + 12, 19 * unit}, Qt::Horizontal);
    resizeDocks({brushDock, panelDock}, {height() * 6 / 10, height() * 4 / 10}, Qt::Vertical);
    const QByteArray state = context.preferences.Layout("docks");
    if (!state.isEmpty()) restoreState(state);
    panelWindows->Restore(context.preferences.Layout("undocked"));
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (!mayClose && files->HasUnsavedWork()) {
        event->ignore();
        // Qt ignores close() during a close event.
        const auto closeNow = [this] {
            mayClose = true;
            close();
            mayClose = false;
        };
        QMetaObject::invokeMethod(
            this, [this, closeNow] { files->WhenSaved(closeNow); }, Qt::QueuedConnection);
        return;
    }
    context.preferences.SetLayout("geometry", saveGeometry());
    context.preferences.SetLayout("docks", saveState());
    context.preferences.SetLayout("undocked", panelWindows->State());
    panelWindows->SetVisible(false);
    QMainWindow::closeEvent(event);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
    const QList<QUrl> urls = event->mimeData()->urls();
    if (urls.isEmpty() || !urls.first().isLocalFile()) return;
    event->acceptProposedAction();
    // Deferred, because a dialog may open and block the program from which the file was dragged.
    QMetaObject::invokeMethod(
        this,
        [this, urls] {
            const QString first = urls.first().toLocalFile();
            if (!IsReferenceFile(first)) {
                files->Open(first);
                return;
            }
            for (const QUrl& url : urls) AddReference(context, url.toLocalFile());
            panels->Show(QStringLiteral("references"));
        },
        Qt::QueuedConnection);
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
    // The pointer has returned to the viewport, so letter keys select tools again and are not text
    // input.
    if (watched == centralWidget() && event->type() == QEvent::Enter && !palette->isVisible()) {
        const bool isInPanel = qobject_cast<PanelWindow*>(QApplication::activeWindow()) != nullptr;
        if (isInPanel) activateWindow();
        if (isInPanel || qobject_cast<QLineEdit*>(focusWidget()) != nullptr)
            centralWidget()->setFocus();
    }
    return QMainWindow::eventFilter(watched, event);
}

}  // namespace trovik::studio
