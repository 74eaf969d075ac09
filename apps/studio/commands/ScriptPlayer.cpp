// SPDX-License-Identifier: Apache-2.0
#include "commands/ScriptPlayer.h"

#include "engine/Engine.h"

#include <QPointer>

#include <memory>
#include <utility>

namespace trovik::studio {

ScriptPlayer::ScriptPlayer(Engine& given, QObject* parent) : QObject(parent), engine(given) {
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    connect(&timer, &QTimer::timeout, this, &ScriptPlayer::Advance);
    connect(&engine, &Engine::DabShown, this, &ScriptPlayer::ShowDab);
    connect(&engine, &Engine::OpenRequested, this, &ScriptPlayer::NoteOpen);
}

void ScriptPlayer::Run(const QString& path) { Read(path, State::Running); }

void ScriptPlayer::Load(const QString& path) { Read(path, State::Paused); }

void ScriptPlayer::Read(const QString& path, State first) {
    // A step that waits to show a dab would hold up the request on the engine thread.
    Stop();
    reading = path;
    auto file = std::make_shared<ScriptFile>();
    engine.Prepare(
        tr("Reading the script"),
        [file, path] { *file = ReadScriptFile(path); },
        [self = QPointer(this), file, first, number = ++newestRead](const QString& error) {
            if (self.isNull() || self->newestRead != number) return;
            self->reading.clear();
            if (error.isEmpty())
                self->Begin(std::move(*file), first);
            else
                Q_EMIT self->Refused(error);
        });
}

void ScriptPlayer::Begin(ScriptFile file, State first) {
    if (!file.opens && !engine.HasDocument()) {
        Q_EMIT Refused(
            tr("%1: the script does not name a mesh, and no document is open").arg(file.path));
        return;
    }
    ++script;
    steps = std::move(file.steps);
    next = 0;
    after = first;
    isStepRunning = isDabWaiting = false;
    SetState(State::Running);
    if (!file.opens) {
        WhenOpened();
        return;
    }
    opened = connect(&engine, &Engine::Opened, this, [this] {
        disconnect(opened);
        disconnect(failed);
        WhenOpened();
    });
    failed = connect(&engine, &Engine::Failed, this, [this](const QString& error) {
        disconnect(opened);
        disconnect(failed);
        Finish(error);
    });
    isOpening = true;
    engine.Open(file.request);
    isOpening = false;
}

void ScriptPlayer::NoteOpen() {
    if (isOpening) return;
    if (!reading.isEmpty()) {
        ++newestRead;
        Q_EMIT Refused(tr("%1: the script was not run, because another document was opened while "
                          "it was being read")
                           .arg(std::exchange(reading, {})));
    }
    End(tr("another document was opened"));
}

void ScriptPlayer::WhenOpened() {
    SetState(after);
    if (state == State::Running) RunNext();
}

void ScriptPlayer::RunNext() {
    if (next == steps.size()) {
        Finish({});
        return;
    }
    // A step can be large, and it runs only once.
    nlohmann::json step = std::move(steps[next++].step);
    isStepRunning = true;
    const QString label = tr("Step %1 of %2").arg(next).arg(steps.size());
    const auto done = [this, of = script](const QString& error) {
        if (of == script) StepDone(error);
    };
    engine.RunOfScript(std::move(step),
                       label,
                       state == State::Playing ? Engine::Pace::DabByDab : Engine::Pace::AtOnce,
                       done);
    Q_EMIT Changed();
}

void ScriptPlayer::StepDone(const QString& error) {
    isStepRunning = isDabWaiting = false;
    if (!error.isEmpty()) {
        --next;
        Finish(error);
        return;
    }
    if (state == State::Running) {
        if (after == State::Running || next == steps.size())
            RunNext();
        else
            SetState(after);
        return;
    }
    Q_EMIT Shown();
    Q_EMIT Changed();
    if (state == State::Playing) timer.start(static_cast<int>(1000.0 / speed));
}

void ScriptPlayer::ShowDab() {
    if (!isStepRunning || state == State::Idle) return;
    isDabWaiting = true;
    if (state == State::Running) {
        // The rest of the step runs without showing its dabs.
        engine.ReleaseDabs();
        return;
    }
    Q_EMIT Shown();
    if (state == State::Playing) timer.start(static_cast<int>(1000.0 / speed));
}

void ScriptPlayer::Advance() {
    if (state != State::Playing) return;
    if (isDabWaiting) {
        isDabWaiting = false;
        engine.ContinueDab();
    } else if (!isStepRunning) {
        RunNext();
    }
}

void ScriptPlayer::Play() {
    if (state != State::Paused) return;
    SetState(State::Playing);
    Advance();
}

void ScriptPlayer::Pause() {
    if (state != State::Playing) return;
    timer.stop();
    SetState(State::Paused);
}

void ScriptPlayer::Step() {
    if (state != State::Paused && state != State::Playing) return;
    timer.stop();
    after = State::Paused;
    SetState(State::Running);
    if (isStepRunning)
        engine.ReleaseDabs();
    else
        RunNext();
}

void ScriptPlayer::Stop() { End(tr("stopped")); }

void ScriptPlayer::End(const QString& reason) {
    if (state == State::Idle) return;
    disconnect(opened);
    disconnect(failed);
    timer.stop();
    engine.ReleaseDabs();
    Finish(reason);
}

QString ScriptPlayer::StepText() const {
    const std::size_t shown = isStepRunning ? next - 1 : next;
    return shown < steps.size() ? steps[shown].text : QString();
}

void ScriptPlayer::SetState(State changed) {
    state = changed;
    Q_EMIT Changed();
}

void ScriptPlayer::Finish(const QString& error) {
    const int done = Done();
    ++script;
    isStepRunning = isDabWaiting = false;
    SetState(State::Idle);
    Q_EMIT Finished(done, error);
}

}  // namespace trovik::studio
