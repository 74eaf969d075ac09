// SPDX-License-Identifier: Apache-2.0
#include "commands/ScriptPlayer.h"

#include "engine/Engine.h"

#include <QDir>
#include <QFile>
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

}  // namespace

ScriptPlayer::ScriptPlayer(Engine& given, QObject* parent) : QObject(parent), engine(given) {}

QString ScriptPlayer::Run(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return path + ": " + file.errorString();
    json script;
    OpenRequest request;
    std::vector<json> read;
    try {
        script = json::parse(file.readAll().toStdString());
        const QDir folder = QFileInfo(path).absoluteDir();
        for (const char* name : {"mesh", "scene"})
            if (script.contains(name)) Resolve(script[name], folder);
        request.meshPath = script.value("mesh", std::string());
        request.scenePath = script.value("scene", std::string());
        request.levels = script.value("levels", 0);
        request.units = script.value("units", std::string());
        request.up = script.value("up", std::string());
        for (const char* name : setupSteps)
            if (script.contains(name)) read.push_back({{name, script[name]}});
        for (json step : script.at("steps")) {
            ResolveFiles(step, folder);
            // A step that contains only a comment does nothing.
            if (!(step.size() == 1 && step.contains("comment"))) read.push_back(std::move(step));
        }
    } catch (const json::exception& fault) {
        return path + ": " + QString::fromUtf8(fault.what());
    }
    const bool opens = !request.meshPath.empty() || !request.scenePath.empty();
    if (!opens && !engine.HasDocument())
        return tr("%1: the script does not name a mesh, and no document is open").arg(path);
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
