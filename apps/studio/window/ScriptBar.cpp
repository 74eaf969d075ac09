// SPDX-License-Identifier: Apache-2.0
#include "window/ScriptBar.h"

#include "commands/Preferences.h"
#include "commands/ScriptPlayer.h"
#include "panels/Controls.h"
#include "panels/ValueSlider.h"
#include "resources/Icons.h"
#include "window/FrameWriter.h"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

namespace trovik::studio {

namespace {

using State = ScriptPlayer::State;

constexpr double firstSpeed = 60.0;

}  // namespace

ScriptBar::ScriptBar(ScriptPlayer& given,
                     std::function<QImage()> grabFrame,
                     Preferences& stored,
                     QWidget* parent)
    : QWidget(parent), player(given), grab(std::move(grabFrame)), preferences(stored) {
    setAccessibleName(tr("Script"));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(6, 3, 6, 3);
    layout->setSpacing(4);
    const auto add = [&](const char* icon, const QString& name, const QString& tip) {
        QToolButton* button = MakeIconButton(QString::fromLatin1(icon), name, tip, this);
        layout->addWidget(button);
        return button;
    };
    play = add("play", tr("Play"), {});
    step = add("step", tr("Next step"), tr("Runs the next step, and pauses"));
    stop = add("stop", tr("Stop"), tr("Completes the current step and ends the script"));
    film = add("record",
               tr("Save frames"),
               tr("Saves an image of each dab to a folder, until switched off"));
    film->setCheckable(true);
    speed = new ValueSlider(tr("Speed"), tr("Dabs per second"), this);
    ValueSlider::Range range;
    range.least = 1.0;
    range.most = 1000.0;
    range.isLogarithmic = true;
    range.isWhole = true;
    range.unit = tr("dabs/s");
    speed->SetRange(range);
    speed->SetValue(firstSpeed);
    speed->setFixedWidth(13 * fontMetrics().height());
    layout->addWidget(speed);
    text = new QLabel(this);
    layout->addWidget(text, 1);
    player.SetSpeed(firstSpeed);
    connect(play, &QToolButton::clicked, this, [this] {
        if (player.GetState() == State::Playing)
            player.Pause();
        else
            player.Play();
    });
    connect(step, &QToolButton::clicked, this, [this] { player.Step(); });
    connect(stop, &QToolButton::clicked, this, [this] { player.Stop(); });
    connect(film, &QToolButton::clicked, this, &ScriptBar::ToggleFilm);
    const auto setSpeed = [this](double value) { player.SetSpeed(value); };
    connect(speed, &ValueSlider::Dragged, this, setSpeed);
    connect(speed, &ValueSlider::Edited, this, setSpeed);
    connect(&player, &ScriptPlayer::Changed, this, &ScriptBar::Refresh);
    connect(&player, &ScriptPlayer::Shown, this, &ScriptBar::TakeFrame);
    connect(&player, &ScriptPlayer::Finished, this, &ScriptBar::EndFilm);
    Refresh();
}

ScriptBar::~ScriptBar() = default;

void ScriptBar::ToggleFilm() {
    if (frames != nullptr) {
        EndFilm();
        return;
    }
    const QString purpose = QStringLiteral("frames");
    const QString folder = QFileDialog::getExistingDirectory(
        this, tr("Folder for the Frames"), preferences.LastFolder(purpose));
    if (!folder.isEmpty()) {
        preferences.SetLastFolder(purpose, folder);
        BeginFilm(folder);
    }
    Refresh();
}

void ScriptBar::BeginFilm(const QString& folder) {
    frames = std::make_unique<FrameWriter>(folder);
    TakeFrame();
}

void ScriptBar::TakeFrame() {
    if (frames == nullptr) return;
    const QImage frame = grab();
    if (!frame.isNull()) frames->Add(frame);
    Refresh();
}

void ScriptBar::EndFilm() {
    if (frames == nullptr) return;
    report = frames->Finish() ? tr("%1 frames in %2").arg(frames->Count()).arg(frames->Folder())
                              : tr("%1: not all frames could be written").arg(frames->Folder());
    frames.reset();
    Refresh();
}

void ScriptBar::Refresh() {
    const State state = player.GetState();
    const bool isPlaying = state == State::Playing;
    const bool isLoaded = isPlaying || state == State::Paused;
    play->setIcon(Icon(isPlaying ? QStringLiteral("pause") : QStringLiteral("play")));
    play->setAccessibleName(isPlaying ? tr("Pause") : tr("Play"));
    play->setToolTip(isPlaying ? tr("Pauses after this dab") : tr("Plays the script dab by dab"));
    play->setEnabled(isLoaded);
    step->setEnabled(isLoaded);
    stop->setEnabled(state != State::Idle);
    film->setChecked(frames != nullptr);
    if (state == State::Idle) {
        text->setText(report);
        return;
    }
    const QString name = player.StepText();
    QString shown =
        name.isEmpty()
            ? tr("All %1 steps are done").arg(player.StepCount())
            : tr("Step %1 of %2: %3").arg(player.Done() + 1).arg(player.StepCount()).arg(name);
    if (frames != nullptr) shown += tr("   ·   %1 frames").arg(frames->Count());
    text->setText(shown);
}

}  // namespace trovik::studio
