// SPDX-License-Identifier: Apache-2.0
#include "commands/ScriptFile.h"

#include "framework/errors/HostError.h"
#include "framework/script/ScriptDocument.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStringList>

#include <algorithm>
#include <iterator>
#include <utility>

namespace trovik::studio {

namespace {

using nlohmann::json;

struct Text {
    Q_DECLARE_TR_FUNCTIONS(ScriptFile)
};

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
        const json::json_pointer field(pointer);
        if (step.contains(field)) Resolve(step.at(field), folder);
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
        return Text::tr("a script has either \"mesh\" or \"scene\", not both");
    // It would also apply to all documents that are opened later.
    if (script.contains("memoryLimit"))
        return Text::tr(
            "the studio does not support \"memoryLimit\"; remove it, or run the "
            "script with trovik sculpt");
    if (opens) return {};
    for (const auto& [name, value] : script.items()) {
        const bool isStep = std::any_of(
            std::begin(setupSteps), std::end(setupSteps), [&, field = name](const char* step) {
                return field == step;
            });
        if (name != "steps" && !isStep)
            return Text::tr(
                       "\"%1\" needs a script with \"mesh\" or \"scene\"; it cannot be "
                       "applied to the open document")
                .arg(QString::fromStdString(name));
    }
    return {};
}

/// The names of a step's commands.
QString TextOf(const json& step) {
    QStringList names;
    for (const auto& [name, value] : step.items())
        if (name != "comment") names << QString::fromStdString(name);
    return names.join(QStringLiteral(", "));
}

}  // namespace

ScriptFile ReadScriptFile(const QString& path) {
    json setup = ReadStrokeScript(path.toStdString());
    const QDir folder = QFileInfo(path).absoluteDir();
    ScriptFile script;
    script.path = path;
    script.opens = setup.contains("mesh") || setup.contains("scene");
    const QString refusal = RefusalOf(setup, script.opens);
    if (!refusal.isEmpty()) throw HostError((path + ": " + refusal).toStdString());
    const auto add = [&](json step) {
        QString text = TextOf(step);
        script.steps.push_back({std::move(step), std::move(text)});
    };
    // The setup of a script that opens no file is applied as steps.
    if (!script.opens)
        for (const char* name : setupSteps)
            if (setup.contains(name)) add({{name, setup[name]}});
    for (json& step : setup.at("steps")) {
        ResolveFiles(step, folder);
        // A step that contained only a comment does nothing.
        if (!step.empty()) add(std::move(step));
    }
    if (!script.opens) return script;
    for (const char* name : {"mesh", "scene"})
        if (setup.contains(name)) Resolve(setup[name], folder);
    script.request.meshPath = setup.value("mesh", std::string());
    script.request.scenePath = setup.value("scene", std::string());
    setup.erase("steps");
    script.request.setup = std::move(setup);
    return script;
}

}  // namespace trovik::studio
