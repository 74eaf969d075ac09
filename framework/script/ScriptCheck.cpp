// SPDX-License-Identifier: Apache-2.0

/// \file
/// Checking a script without sculpting. Steps that choose tools, settings, mirrors, transforms and
/// cameras are run; of all others the fields and files are checked by the functions that the steps
/// themselves use.
#include "framework/errors/HostError.h"
#include "framework/errors/PrintableText.h"
#include "framework/script/ScriptDocument.h"
#include "framework/script/ScriptRunner.h"
#include "framework/script/VisibilityStepRunner.h"

#include <algorithm>
#include <charconv>

namespace trovik {

namespace {

/// Runs a check; \return false if it failed, which adds a line.
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

/// The number that a text begins with; none if it begins with something else.
std::optional<std::size_t> Number(const std::string& text) {
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) return std::nullopt;
    return number;
}

/// Removes the steps and the fields of the script that have faults, so that the rest is as the
/// schema wants it. Steps keep their numbers.
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

/// What settings and tools are checked on if there is no mesh.
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

void ScriptRunner::CheckHasOneSource(const FieldReader& script) const {
    if (script.Has("mesh") == script.Has("scene"))
        throw HostError(path + ": /: a script opens one of \"mesh\" and \"scene\"");
}

std::vector<std::string> ScriptRunner::Check() {
    std::vector<std::string> faults;
    isChecking = true;
    nlohmann::json json;
    std::vector<JsonFault> inDocument;
    if (!Attempt(faults, [&] { json = ReadStrokeScript(givenPath, &inDocument); })) return faults;
    for (const JsonFault& fault : inDocument)
        faults.push_back(PrintableText(FaultMessage(path, fault)));
    // Of the script as it was written: below, a faulty "mesh" is removed.
    if (json.is_object()) Attempt(faults, [&] { CheckHasOneSource(FieldReader(json, path, "")); });
    RemoveFaulty(json, inDocument);
    const FieldReader script(json, path, "");
    CheckSetUp(script, faults);
    const FieldReader steps = script.At("steps");
    for (std::size_t i = 0; i < steps.Size(); ++i) {
        StopIfAsked();
        CheckStep(steps.At(i), faults);
    }
    return faults;
}

void ScriptRunner::CheckSetUp(const FieldReader& script, std::vector<std::string>& faults) {
    Attempt(faults, [&] { PrepareProcess(script); });
    const bool hasSource = script.Has("mesh") != script.Has("scene");
    if (!hasSource || !Attempt(faults, [&] { OpenSource(script); }))
        session = std::make_unique<SculptSession>(path, Cube());
    StopIfAsked();
    if (script.Has("preferences"))
        Attempt(faults, [&] { RunPreferences(script.At("preferences")); });
    if (script.Has("transform")) Attempt(faults, [&] { RunTransform(script.At("transform")); });
    Attempt(faults, [&] { SetView(script); });
    if (script.Has("mirror")) Attempt(faults, [&] { RunMirror(script.At("mirror")); });
    SelectFirstTool();
}

void ScriptRunner::CheckStep(const FieldReader& step, std::vector<std::string>& faults) {
    struct Verb {
        const char* name;
        StepFunction check;
    };
    static constexpr Verb verbs[] = {{"tool", &ScriptRunner::RunTool},
                                     {"stroke", &ScriptRunner::CheckStroke},
                                     {"freeze", &ScriptRunner::CheckFreeze},
                                     {"transform", &ScriptRunner::RunTransform},
                                     {"mirror", &ScriptRunner::RunMirror},
                                     {"camera", &ScriptRunner::RunCamera},
                                     {"picture", &ScriptRunner::CheckPicture},
                                     {"sheet", &ScriptRunner::CheckSheet},
                                     {"export", &ScriptRunner::CheckExport},
                                     {"bake", &ScriptRunner::CheckBake},
                                     {"displace", &ScriptRunner::CheckDisplace},
                                     {"save", &ScriptRunner::CheckSave}};
    Attempt(faults, [&] { CheckOpenStroke(step); });
    for (const Verb& verb : verbs)
        if (step.Has(verb.name)) Attempt(faults, [&] { (this->*verb.check)(step.At(verb.name)); });
    Attempt(faults, [&] { CheckVisibilityStep(step); });
    if (step.Has("set")) CheckSettings(step.At("set"), faults);
}

// One by one, so that each is reported that is wrong.
void ScriptRunner::CheckSettings(const FieldReader& settings, std::vector<std::string>& faults) {
    const nlohmann::json& all = settings.Json();
    for (const auto& [name, value] : all.items()) {
        nlohmann::json one = {{name, value}};
        // These two exclude each other.
        if (name == "radiusPixels" && all.contains("radius")) one["radius"] = all.at("radius");
        Attempt(faults, [&] { RunSettings(settings.With(one)); });
    }
}

void ScriptRunner::CheckStroke(const FieldReader& stroke) {
    CheckStrokeKinds(stroke);
    leavesStrokeOpen = stroke.FlagOr("open", false);
    CheckPath(stroke);
}

void ScriptRunner::CheckPicture(const FieldReader& picture) {
    CheckPictureKinds(picture);
    if (picture.Has("keep")) kept[picture.At("keep").Text()] = Picture();
    if (picture.Has("camera")) ReadView(picture.At("camera"), session->View());
    for (const std::string& target : PictureTargets(picture)) files.NoteWritten(target);
}

void ScriptRunner::CheckSheet(const FieldReader& sheet) {
    KeptPictures(sheet.At("pictures"));
    files.NoteWritten(OutputPath(sheet.At("file")));
}

void ScriptRunner::CheckExport(const FieldReader& options) {
    const std::string file = OutputPath(options.At("file"));
    ExportSpace(options, file);
    files.NoteWritten(file);
}

void ScriptRunner::CheckBake(const FieldReader& bake) {
    const MapFileOptions file = MapFileOf(bake);
    try {
        BitsFor(file);
    } catch (const HostError& error) {
        bake.Fail(error.what());
    }
    files.NoteWritten(file.path);
}

void ScriptRunner::CheckDisplace(const FieldReader& displace) {
    if (!files.IsWritten(displace.At("file").Text())) InputPath(displace.At("file"));
}

void ScriptRunner::CheckSave(const FieldReader& file) { files.NoteWritten(ScenePath(file)); }

}  // namespace trovik
