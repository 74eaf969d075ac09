// SPDX-License-Identifier: Apache-2.0

/// \file Checks a script without sculpting: commands that select tools, settings, mirrors,
/// transforms and cameras are run; for all others, only parameters and files are checked.
#include "framework/errors/HostError.h"
#include "framework/errors/PrintableText.h"
#include "framework/script/ScriptDocument.h"
#include "framework/script/ScriptRunner.h"

#include <algorithm>
#include <charconv>

namespace trovik {

namespace {

/// Runs a check. \return false if it failed, after adding a line that describes the error.
template <typename Work>
bool Attempt(std::vector<std::string>& faults, const Work& work) {
    try {
        work();
        return true;
    } catch (const HostError& error) {
        faults.emplace_back(error.what());
    } catch (Error* error) {
        faults.push_back(PrintableText(error->Message().toStdString()));
        Error::Dispose(error);
    }
    return false;
}

/// The number at the beginning of a string; empty if the string does not begin with a number.
std::optional<std::size_t> Number(const std::string& text) {
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) return std::nullopt;
    return number;
}

/// Removes steps and fields with errors from the script, so that the rest conforms to the schema.
/// The remaining steps keep their indices.
void RemoveFaulty(nlohmann::json& script, const std::vector<JsonFault>& faults) {
    if (!script.is_object()) script = nlohmann::json::object();
    const std::string inSteps = "/steps/";
    for (const JsonFault& fault : faults) {
        if (fault.pointer.empty()) continue;
        const auto step = fault.pointer.rfind(inSteps, 0) == 0
                              ? Number(fault.pointer.substr(inSteps.size()))
                              : std::nullopt;
        if (step && script.contains("steps") && script.at("steps").is_array() &&
            *step < script.at("steps").size())
            script.at("steps").at(*step) = nlohmann::json::object();
        else
            script.erase(fault.pointer.substr(1, fault.pointer.find('/', 1) - 1));
    }
    if (!script.contains("steps")) script["steps"] = nlohmann::json::array();
}

/// The mesh used to check settings and tools if the script does not specify one.
PolygonMesh Cube() {
    PolygonMesh cube;
    cube.positions = {{-1, -1, -1},
                      {1, -1, -1},
                      {-1, 1, -1},
                      {1, 1, -1},
                      {-1, -1, 1},
                      {1, -1, 1},
                      {-1, 1, 1},
                      {1, 1, 1}};
    cube.faceSizes.assign(6, 4);
    cube.faceVertices = {0, 2, 3, 1, 4, 5, 7, 6, 0, 1, 5, 4, 2, 6, 7, 3, 0, 4, 6, 2, 1, 3, 7, 5};
    return cube;
}

}  // namespace

std::vector<std::string> ScriptRunner::Check() {
    std::vector<std::string> faults;
    nlohmann::json json;
    std::vector<JsonFault> inDocument;
    if (!Attempt(faults, [&] { json = ReadScript(&inDocument); })) return faults;
    for (const JsonFault& fault : inDocument)
        faults.push_back(PrintableText(FaultMessage(options.name, fault)));
    // Checked on the original script, because a faulty "mesh" is removed below.
    if (json.is_object())
        Attempt(faults, [&] { CheckHasOneSource(FieldReader(json, options.name, "")); });
    RemoveFaulty(json, inDocument);
    const FieldReader script(json, options.name, "");
    CheckSetUp(script, faults);
    commands->Context().isChecking = true;
    const FieldReader steps = script.At("steps");
    for (std::size_t i = 0; i < steps.Size(); ++i) {
        ThrowIfCancelled();
        commands->Check(steps.At(i),
                        [&](const std::function<void()>& check) { Attempt(faults, check); });
    }
    return faults;
}

void ScriptRunner::CheckSetUp(const FieldReader& script, std::vector<std::string>& faults) {
    Attempt(faults, [&] { PrepareProcess(script); });
    const bool hasSource = script.Has("mesh") != script.Has("scene");
    if (!hasSource || !Attempt(faults, [&] { OpenSource(script); })) {
        document = std::make_unique<Document>(options.name, Cube());
        StartCommands();
    }
    ThrowIfCancelled();
    if (script.Has("preferences"))
        Attempt(faults, [&] { RunPreferences(script.At("preferences")); });
    if (script.Has("transform"))
        Attempt(faults, [&] { commands->SetUp("transform", script.At("transform")); });
    Attempt(faults, [&] { SetView(script); });
    if (script.Has("mirror"))
        Attempt(faults, [&] { commands->SetUp("mirror", script.At("mirror")); });
    SelectFirstTool();
}

}  // namespace trovik
