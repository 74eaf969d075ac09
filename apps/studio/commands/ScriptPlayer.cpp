// SPDX-License-Identifier: Apache-2.0
#include "commands/ScriptPlayer.h"

#include "engine/Engine.h"
#include "framework/errors/HostError.h"
#include "framework/script/ScriptDocument.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <iterator>

namespace trovik::studio {

namespace {

using nlohmann::json;

/// Replaces a file name with its absolute path if the folder contains the file.
void Resolve(json& name, const QDir& folder) {
    if (!name.is_string()) return;
    const QString path = QString::fromStdString(name.get<std::string>());
    if (QFileInfo(path).isRelative() && folder.exists(path))
        name = folder.absoluteFilePath(path).toStdString();
}

/// The files that a step reads: pen streams, stamps, mask images, displacement maps.
void ResolveFiles(json& step, const QDir& folder) {
    const auto at = [&](const char* pointer) {
        const json::json_pointer place(pointer);
        if (step.contains(place)) Resolve(step.at(place), folder);
    };
    at("/stroke/pen");
    at("/set/stamp");
    at("/set/stamp/path");
    at("/mask/image/file");
    at("/displace/file");
}

/// Setup fields that are also steps, in the order in which they are applied.
constexpr const char* setupSteps[] = {"transform", "mirror", "camera"};

/// Why the studio cannot set up a script; empty if it can.
QString RefusalOf(const json& script, bool opens) {
    if (script.contains("mesh") && script.contains("scene"))
        return ScriptPlayer::tr("a script has either \"mesh\" or \"scene\", not both");
    // It would also apply to all documents that are opened later.
    if (script.contains("memoryLimit"))
        return ScriptPlayer::tr(
            "the studio does not support \"memoryLimit\"; remove it, or run the "
            "script with trovik sculpt");
    if (opens) return {};
    for (const auto& [name, value] : script.items()) {
        const bool isStep = std::any_of(
            std::begin(setupSteps), std::end(setupSteps), [&, field = name](const char* step) {
                return field == step;
            });
        if (name != "steps" && !isStep)
            return ScriptPlayer::tr(
                       "\"%1\" needs a script with \"mesh\" or \"scene\"; it cannot be "
                       "applied to the open document")
                .arg(QString::fromStdString(name));
    }
    return {};
}

}  // namespace

ScriptPlayer::ScriptPlayer(Engine& given, QObject* parent) : QObject(parent), engine(given) {
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    connect(&timer, &QTimer::timeout, this, &ScriptPlayer::Advance);
    connect(&engine, &Engine::DabShown, this, &ScriptPlayer::ShowDab);
}

QString ScriptPlayer::Run(const QString& path) { return Read(path, State::Running); }

QString ScriptPlayer::Load(const QString& path) { return Read(path, State::Paused); }

QString ScriptPlayer::Read(const QString& path, State first) {
    json setup;
    try {
        setup = ReadStrokeScript(path.toStdString());
    } catch (const HostError& fault) {
        return QString::fromUtf8(fault.what());
    }
    const QDir folder = QFileInfo(path).absoluteDir();
    const bool opens = setup.contains("mesh") || setup.contains("scene");
    const QString refusal = RefusalOf(setup, opens);
    if (!refusal.isEmpty()) return path + ": " + refusal;
    if (!opens && !engine.HasDocument())
        return tr("%1: the script does not name a mesh, and no document is open").arg(path);
    std::vector<json> readSteps;
    // The setup of a script that opens no file is applied as steps.
    if (!opens)
        for (const char* name : setupSteps)
            if (setup.contains(name)) readSteps.push_back({{name, setup[name]}});
    for (json& step : setup.at("steps")) {
        ResolveFiles(step, folder);
        // A step that contained only a comment does nothing.
        if (!step.empty()) readSteps.push_back(std::move(step));
    }
    OpenRequest request;
    if (opens) {
        for (const char* name : {"mesh", "scene"})
            if (setup.contains(name)) Resolve(setup[name], folder);
        request.meshPath = setup.value("mesh", std::string());
        request.scenePath = setup.value("scene", std::string());
        setup.erase("steps");
        request.setup = std::move(setup);
    }
    Stop();
    ++script;
    steps = std::move(readSteps);
    next = 0;
    after = first;
    isStepRunning = isDabWaiting = false;
    SetState(State::Running);
    if (!opens) {
        WhenOpened();
        return {};
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
    engine.Open(request);
    return {};
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
    const json step = steps[next++];
    isStepRunning = true;
    const QString label = tr("Step %1 of %2").arg(next).arg(steps.size());
    const auto done = [this, of = script](const QString& error) {
        if (of == script) StepDone(error);
    };
    engine.RunOfScript(
        step, label, state == State::Playing ? Engine::Pace::DabByDab : Engine::Pace::AtOnce, done);
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

void ScriptPlayer::Stop() {
    if (state == State::Idle) return;
    disconnect(opened);
    disconnect(failed);
    timer.stop();
    engine.ReleaseDabs();
    Finish(tr("stopped"));
}

QString ScriptPlayer::StepText() const {
    const std::size_t shown = isStepRunning ? next - 1 : next;
    if (shown >= steps.size()) return {};
    QStringList names;
    for (const auto& [name, value] : steps[shown].items())
        if (name != "comment") names << QString::fromStdString(name);
    return names.join(QStringLiteral(", "));
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
