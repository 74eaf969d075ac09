// SPDX-License-Identifier: Apache-2.0
#include "CommandLineWork.h"

#include "engine/Engine.h"
#include "framework/errors/HostError.h"
#include "viewport/ViewportWidget.h"

#include <QApplication>
#include <QFileInfo>
#include <QWidget>

#include <cstdio>

namespace trovik::studio {

namespace {

constexpr int pollMilliseconds = 20;

}  // namespace

CommandLineWork::CommandLineWork(const CommandLine& line,
                                 const EventTarget& eventTarget,
                                 QWidget& shownWindow)
    : commandLine(line), target(eventTarget), window(shownWindow), player(eventTarget) {
    if (!IsNeeded()) return;
    connect(&target.engine, &Engine::Failed, this, &CommandLineWork::Fail);
    connect(&player, &EventPlayer::Finished, this, [this](const QString& error) {
        if (!error.isEmpty()) Fail(error);
        stage = Stage::Save;
        poll.start();
    });
    connect(
        &target.engine,
        &Engine::Opened,
        this,
        [this] {
            if (stage == Stage::Open) Begin();
        },
        Qt::QueuedConnection);
    poll.setInterval(pollMilliseconds);
    connect(&poll, &QTimer::timeout, this, [this] {
        if (IsSettled()) Continue();
    });
}

bool CommandLineWork::IsNeeded() const {
    return !commandLine.events.empty() || !commandLine.save.empty() ||
           !commandLine.screenshot.empty() || commandLine.quits;
}

bool CommandLineWork::IsSettled() const {
    return target.engine.IsIdle() && !target.engine.IsBusy() && target.viewport.IsComplete();
}

void CommandLineWork::Begin() {
    stage = Stage::Events;
    poll.start();
}

// Runs one stage whenever the engine and the viewport have become idle.
void CommandLineWork::Continue() {
    if (stage == Stage::Events) {
        poll.stop();
        if (commandLine.events.empty()) {
            stage = Stage::Save;
            poll.start();
            return;
        }
        try {
            player.SetDrawsFrames(!commandLine.skipsFrames);
            player.Play(ReadEventFile(commandLine.events));
        } catch (const HostError& error) {
            Fail(QString::fromStdString(error.what()));
            stage = Stage::Done;
            poll.start();
        }
    } else if (stage == Stage::Save) {
        stage = Stage::Screenshot;
        if (!commandLine.save.empty())
            target.engine.Save(QFileInfo(QString::fromStdString(commandLine.save))
                                   .absoluteFilePath()
                                   .toStdString());
    } else if (stage == Stage::Screenshot) {
        stage = Stage::Done;
        const QString path = QString::fromStdString(commandLine.screenshot);
        if (!path.isEmpty() && !window.grab().save(path))
            Fail(tr("%1: cannot be written").arg(path));
    } else {
        poll.stop();
        if (commandLine.quits) QApplication::exit(0);
    }
}

void CommandLineWork::Fail(const QString& error) {
    if (!IsNeeded()) return;
    std::fprintf(stderr, "trovik-studio: %s\n", qPrintable(error));
    if (!commandLine.quits) return;
    poll.stop();
    stage = Stage::Done;
    QApplication::exit(1);
}

}  // namespace trovik::studio
