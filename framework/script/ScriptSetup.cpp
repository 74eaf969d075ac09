// SPDX-License-Identifier: Apache-2.0

/// \file Sets up the process, the document, the view and the tool before the first step of a
/// script.
#include "framework/errors/HostError.h"
#include "framework/errors/Suggestion.h"
#include "framework/files/MeshFiles.h"
#include "framework/history/UndoPreferences.h"
#include "framework/json/JsonFault.h"
#include "framework/memory/MemoryAccount.h"
#include "framework/nodes/HostKernel.h"
#include "framework/nodes/PreferenceFile.h"
#include "framework/pluginhost/PluginLoader.h"
#include "framework/script/ScriptRunner.h"

namespace trovik {

void ScriptRunner::SetUp(const FieldReader& script) {
    CheckHasOneSource(script);
    PrepareProcess(script);
    OpenSource(script);
    SetUpDocument(script);
}

void ScriptRunner::SetUpDocument(const FieldReader& script) {
    ThrowIfCancelled();
    if (script.Has("undoBudget"))
        document->SetUndoBudget(script.At("undoBudget").Json().get<uint64_t>());
    if (script.Has("subdivideBudget"))
        commands->Context().subdivideBudget = script.At("subdivideBudget").Json().get<uint64_t>();
    if (script.Has("preferences")) RunPreferences(script.At("preferences"));
    if (script.Has("transform")) commands->SetUp("transform", script.At("transform"));
    if (script.Has("levels")) commands->SetUp("subdivide", script.At("levels"));
    document->ClearHistory();
    SetView(script);
    if (script.Has("mirror")) commands->SetUp("mirror", script.At("mirror"));
    if (script.Has("seed")) document->Settings().seed = script.At("seed").Json().get<uint64_t>();
    if (script.Has("renderers")) {
        std::vector<float> factors;
        const FieldReader numbers = script.At("renderers");
        for (std::size_t i = 0; i < numbers.Size(); ++i) factors.push_back(numbers.At(i).Number());
        document->SetRenderers(factors);
    }
    document->SetObserver(trace.get());
    SelectFirstTool();
}

void ScriptRunner::CheckHasOneSource(const FieldReader& script) const {
    if (script.Has("mesh") == script.Has("scene"))
        throw HostError(options.name +
                        ": /: a script must have exactly one of \"mesh\" and \"scene\"");
}

void ScriptRunner::PrepareProcess(const FieldReader& script) {
    if (script.Has("scene") && script.Has("levels"))
        script.At("levels").Fail(
            "a scene already has its levels; use the step \"subdivide\" to add more");
    for (const char* field : {"units", "up"})
        if (script.Has("scene") && script.Has(field))
            script.At(field).Fail("a scene file already contains its units and up axis");
    RegisterUndoPreferences();
    HostKernel::Instance().SetTestMode(script.FlagOr("testMode", false));
    if (script.Has("memoryLimit"))
        MemoryAccount::SetLimit(script.At("memoryLimit").Json().get<int64_t>());
    if (preferencesFile.empty()) return;
    // Values are checked against the registered preferences.
    LoadPlugins();
    LoadPreferences(preferencesFile);
    if (!options.progress.message) return;
    for (const auto& [key, ignored] : PendingPreferences())
        options.progress.message(FaultMessage(
            preferencesFile,
            {FieldPointer("", key), "unknown preference" + Suggestion(key, PreferenceKeys())}));
}

void ScriptRunner::OpenSource(const FieldReader& script) {
    const char* source = script.Has("scene") ? "scene" : "mesh";
    const std::string file = InputPath(script.At(source));
    if (options.progress.step)
        options.progress.step(0, script.At("steps").Size(), "opening " + file);
    if (script.Has("scene")) {
        document = Document::OpenScene(file, options.progress.job);
    } else {
        // The schema has already checked these names.
        const MeshSpace given{MetersPerUnit(script.TextOr("units", "")),
                              UpAxisOf(script.TextOr("up", ""))};
        document = std::make_unique<Document>(file, given, options.progress.job);
    }
    StartCommands();
    commands->Context().ReportNotes(file, document->Notes());
}

void ScriptRunner::StartCommands() {
    commands = std::make_unique<CommandRunner>(*document, options);
}

void ScriptRunner::SetView(const FieldReader& script) {
    if (script.Has("camera")) {
        commands->SetUp("camera", script.At("camera"));
    } else if (!script.Has("scene")) {
        static const nlohmann::json none = nlohmann::json::object();
        commands->SetUp("camera", FieldReader(none, options.name, "/camera"));
    }
}

void ScriptRunner::SelectFirstTool() {
    // A scene includes its active tool; selecting that tool again changes nothing. If another brush
    // is active, the sculpting brush still has a tool of its own.
    const BrushOperation& brush = document->Brush();
    const BrushConfiguration* other =
        &brush == &document->SculptBrush() ? nullptr : brush.ActiveConfiguration();
    const BrushConfiguration* tool = document->SculptBrush().ActiveConfiguration();
    if (!document->SelectTool(tool == nullptr ? "Sculpt" : tool->Name().toStdString()))
        throw HostError(options.name + ": the brush has no tool Sculpt");
    if (other != nullptr) document->SelectTool(other->Name().toStdString());
}

void ScriptRunner::RunPreferences(const FieldReader& preferences) {
    for (const auto& [key, value] : preferences.Json().items()) {
        Attribute* attribute = FindPreference(key);
        const FieldReader field = preferences.At(key.c_str());
        if (attribute == nullptr)
            field.Fail("unknown preference" + Suggestion(key, PreferenceKeys()));
        else if (!attribute->SetFromString(QString::fromStdString(value.dump())))
            field.Fail(WrongPreference(*attribute, value.dump()));
    }
    document->ApplyUndoSettings();
}

std::string ScriptRunner::InputPath(const FieldReader& file) const {
    try {
        return ScriptFiles(givenPath, options.outputFolder).Find(file.Text());
    } catch (const HostError& missing) {
        file.Fail(missing.what());
    }
}

}  // namespace trovik
