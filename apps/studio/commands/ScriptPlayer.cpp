// SPDX-License-Identifier: Apache-2.0
#include "commands/ScriptPlayer.h"

#include "engine/Engine.h"
#include "framework/errors/HostError.h"
#include "framework/script/ScriptDocument.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

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

ScriptPlayer::ScriptPlayer(Engine& given, QObject* parent) : QObject(parent), engine(given) {}

QString ScriptPlayer::Run(const QString& path) {
    json script;
    try {
        script = ReadStrokeScript(path.toStdString());
    } catch (const HostError& fault) {
        return QString::fromUtf8(fault.what());
    }
    const QDir folder = QFileInfo(path).absoluteDir();
    const bool opens = script.contains("mesh") || script.contains("scene");
    const QString refusal = RefusalOf(script, opens);
    if (!refusal.isEmpty()) return path + ": " + refusal;
    if (!opens && !engine.HasDocument())
        return tr("%1: it names no mesh, and none is open").arg(path);
    std::vector<json> read;
    // The setup of a script that opens no file is applied as steps.
    if (!opens)
        for (const char* name : setupSteps)
            if (script.contains(name)) read.push_back({{name, script[name]}});
    for (json& step : script.at("steps")) {
        ResolveFiles(step, folder);
        // A step that contained only a comment does nothing.
        if (!step.empty()) read.push_back(std::move(step));
    }
    OpenRequest request;
    if (opens) {
        for (const char* name : {"mesh", "scene"})
            if (script.contains(name)) Resolve(script[name], folder);
        request.meshPath = script.value("mesh", std::string());
        request.scenePath = script.value("scene", std::string());
        script.erase("steps");
        request.setup = std::move(script);
    }
    Stop();
    steps = std::move(read);
    next = 0;
    isRunning = true;
    if (!opens) {
        Next();
        return {};
    }
    opened = connect(&engine, &Engine::Opened, this, [this] {
        disconnect(opened);
        disconnect(failed);
        Next();
    });
    failed = connect(&engine, &Engine::Failed, this, [this](const QString& error) {
        disconnect(opened);
        disconnect(failed);
        Finish(error);
    });
    engine.Open(request);
    return {};
}

void ScriptPlayer::Next() {
    if (!isRunning) return;
    if (next == steps.size()) {
        Finish({});
        return;
    }
    const json step = steps[next++];
    engine.Run(step, tr("Step %1 of %2").arg(next).arg(steps.size()), [this](const QString& error) {
        if (!isRunning) return;
        if (!error.isEmpty())
            Finish(error);
        else
            Next();
    });
}

void ScriptPlayer::Stop() {
    if (!isRunning) return;
    disconnect(opened);
    disconnect(failed);
    Finish(tr("stopped"));
}

void ScriptPlayer::Finish(const QString& error) {
    isRunning = false;
    const int done = static_cast<int>(next) - (error.isEmpty() ? 0 : 1);
    Q_EMIT Finished(std::max(done, 0), error);
}

}  // namespace trovik::studio
