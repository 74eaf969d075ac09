// SPDX-License-Identifier: Apache-2.0
#include "window/TimeLapseWindow.h"

#include "commands/ScriptPlayer.h"
#include "commands/ViewModel.h"
#include "viewport/ViewportWidget.h"
#include "window/ScriptBar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

namespace trovik::studio {

namespace {

constexpr QSize firstSize(960, 700);

}  // namespace

TimeLapseWindow::TimeLapseWindow(const ActionContext& given, QWidget* parent)
    : QDialog(parent), context(given), engine(std::make_unique<Engine>(std::string())) {
    setWindowTitle(tr("Time Lapse"));
    resize(firstSize);
    viewport = new ViewportWidget(*engine, this);
    player = new ScriptPlayer(*engine, this);
    bar = new ScriptBar(
        *player, [this] { return viewport->Grab(); }, context.preferences, this);
    message = new QLabel(this);
    message->setObjectName(QStringLiteral("hint"));
    message->setWordWrap(true);
    auto* restart = new QPushButton(tr("Restart"), this);
    restart->setAccessibleName(tr("Restart"));
    restart->setToolTip(tr("Starts over, with all actions up to now"));
    auto* camera = new QPushButton(tr("Use Current View"), this);
    camera->setAccessibleName(tr("Use Current View"));
    camera->setToolTip(tr("Uses the camera and the display settings of the main window"));
    // Enter must not discard the position in the time lapse.
    for (QPushButton* button : {restart, camera}) button->setAutoDefault(false);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 6);
    layout->setSpacing(4);
    layout->addWidget(viewport, 1);
    auto* row = new QHBoxLayout;
    row->setContentsMargins(0, 0, 8, 0);
    row->addWidget(bar, 1);
    row->addWidget(camera);
    row->addWidget(restart);
    layout->addLayout(row);
    layout->addWidget(message);
    message->hide();
    connect(restart, &QPushButton::clicked, this, &TimeLapseWindow::Restart);
    connect(camera, &QPushButton::clicked, this, &TimeLapseWindow::TakeCamera);
    connect(engine.get(), &Engine::Opened, this, &TimeLapseWindow::TakeCamera);
    const auto showError = [this](const QString& error) {
        message->setText(error);
        message->show();
    };
    connect(engine.get(), &Engine::Failed, this, showError);
    connect(player, &ScriptPlayer::Refused, this, showError);
    Restart();
}

TimeLapseWindow::~TimeLapseWindow() {
    // They use the engine.
    delete bar;
    delete player;
    delete viewport;
}

void TimeLapseWindow::TakeCamera() {
    viewport->SetSettings(context.view.Settings());
    if (!context.view.pose) return;
    Camera camera = viewport->View();
    camera.SetPose(context.view.pose());
    viewport->SetView(camera);
}

void TimeLapseWindow::Restart() {
    message->hide();
    player->Stop();
    context.engine.SaveActions(
        folder.filePath(QStringLiteral("actions.json")).toStdString(),
        [self = QPointer(this)](const QString& error, const QString&) {
            if (self == nullptr || !error.isEmpty()) return;
            self->player->Load(self->folder.filePath(QStringLiteral("actions.json")));
        });
}

}  // namespace trovik::studio
