// SPDX-License-Identifier: Apache-2.0
#include "framework/script/ScriptRunner.h"

#include "framework/brushes/BrushSettings.h"
#include "framework/brushes/Falloff.h"
#include "framework/errors/HostError.h"
#include "framework/errors/Suggestion.h"
#include "framework/errors/WorkStopped.h"
#include "framework/history/UndoPreferences.h"
#include "framework/json/JsonText.h"
#include "framework/memory/MemoryAccount.h"
#include "framework/multires/Steps.h"
#include "framework/nodes/HostKernel.h"
#include "framework/nodes/PlainText.h"
#include "framework/nodes/PreferenceFile.h"
#include "framework/pluginhost/PluginLoader.h"
#include "framework/script/ScriptDocument.h"
#include "framework/script/ToolSettings.h"
#include "framework/script/VisibilityStepRunner.h"

#include <algorithm>

namespace trovik {

namespace {

std::string Listed(const std::vector<std::string>& names) {
    std::string list;
    for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
    return list;
}

/// \param field  where the script asks for it.
template <typename T>
AttributeInstance<T>& BrushAttribute(BrushOperation& brush,
                                     const char* name,
                                     const FieldReader& field) {
    Attribute* attribute = brush.AttributeByName(QString::fromLatin1(name));
    if (attribute == nullptr || attribute->attributeType() != AttributeValue<T>::type)
        field.Fail(std::string("the brush has no setting ") + name);
    return static_cast<AttributeInstance<T>&>(*attribute);
}

}  // namespace

ScriptRunner::ScriptRunner(const std::string& scriptPath,
                           std::string outputFolder,
                           ScriptProgress listener)
    : givenPath(scriptPath),
      path(DocumentName(scriptPath)),
      files(scriptPath, std::move(outputFolder)),
      progress(std::move(listener)) {}

ScriptResult ScriptRunner::Run() {
    const nlohmann::json json = ReadStrokeScript(givenPath);
    const FieldReader script(json, path, "");
    for (const auto& step : json.at("steps")) {
        const auto picture = step.find("picture");
        if (picture != step.end() && picture->value("beforeAfter", false)) wantsBefore = true;
    }
    const HUDListening listening([this](const std::string& text) {
        if (progress.message) progress.message(PlainText(QString::fromStdString(text)));
    });
    if (!traceOptions.folder.empty()) StartTrace();
    SetUp(script);
    StartJournal(script);
    const FieldReader steps = script.At("steps");
    CountStrokes(steps);
    // The trace ends with the last call into the brush.
    std::size_t lastCall = steps.Size();
    for (std::size_t i = 0; i < steps.Size(); ++i)
        if (steps.At(i).Has("stroke") || steps.At(i).Has("tool")) lastCall = i;
    if (lastCall == steps.Size()) FinishTrace();
    for (std::size_t i = 0; i < steps.Size(); ++i) {
        const FieldReader step = steps.At(i);
        // It had only a comment.
        if (step.Size() == 0) continue;
        if (progress.step) progress.step(i, steps.Size(), NextStepLabel(step));
        try {
            StopIfAsked();
            RunAndReport(step);
        } catch (...) {
            FinishTraceAfterError();
            throw;
        }
        TellProblems();
        if (trace != nullptr) trace->ThrowIfFailed();
        if (i == lastCall) FinishTrace();
    }
    StopIfAsked();
    Close();
    if (progress.step) progress.step(steps.Size(), steps.Size(), "");
    result.totals = session->Totals();
    result.vertices = session->Geometry().Bound()->VertexCount();
    result.faces = session->Geometry().Bound()->faceCount;
    result.levels = session->Geometry().LevelCount();
    return result;
}

void ScriptRunner::StopIfAsked() const {
    if (progress.stop && progress.stop()) throw WorkStopped();
}

WriteProgress ScriptRunner::FileProgress() const {
    return [this](uint64_t written, uint64_t total) {
        if (progress.file) progress.file(written, total);
        StopIfAsked();
    };
}

std::function<void()> ScriptRunner::DabProgress() const {
    return [this] {
        if (progress.dab) progress.dab();
        StopIfAsked();
    };
}

void ScriptRunner::SetUp(const FieldReader& script) {
    CheckHasOneSource(script);
    PrepareProcess(script);
    OpenSource(script);
    StopIfAsked();
    if (script.Has("undoBudget"))
        session->SetUndoBudget(script.At("undoBudget").Json().get<uint64_t>());
    if (script.Has("subdivideBudget"))
        subdivideBudget = script.At("subdivideBudget").Json().get<uint64_t>();
    if (script.Has("preferences")) RunPreferences(script.At("preferences"));
    if (script.Has("transform")) RunTransform(script.At("transform"));
    if (script.Has("levels")) Subdivide(script.At("levels"), script.At("levels").Integer());
    session->Geometry().History().Clear();
    SetView(script);
    if (script.Has("mirror")) RunMirror(script.At("mirror"));
    if (script.Has("seed")) session->Settings().seed = script.At("seed").Json().get<uint64_t>();
    if (script.Has("renderers")) {
        std::vector<float> factors;
        const FieldReader numbers = script.At("renderers");
        for (std::size_t i = 0; i < numbers.Size(); ++i) factors.push_back(numbers.At(i).Number());
        session->SetRenderers(factors);
    }
    session->SetObserver(trace.get());
    SelectFirstTool();
}

void ScriptRunner::PrepareProcess(const FieldReader& script) {
    if (script.Has("scene") && script.Has("levels"))
        script.At("levels").Fail("a scene has its levels; the step \"subdivide\" adds more");
    for (const char* field : {"units", "up"})
        if (script.Has("scene") && script.Has(field))
            script.At(field).Fail("a scene knows what its numbers mean");
    RegisterUndoPreferences();
    HostKernel::Instance().SetTestMode(script.FlagOr("testMode", false));
    if (script.Has("memoryLimit"))
        MemoryAccount::SetLimit(script.At("memoryLimit").Json().get<int64_t>());
    if (preferencesFile.empty()) return;
    // Values are checked against the preferences that are registered.
    LoadPlugins();
    LoadPreferences(preferencesFile);
    if (!progress.message) return;
    for (const auto& [key, ignored] : UnclaimedPreferences())
        progress.message(FaultMessage(
            preferencesFile,
            {FieldPointer("", key), "unknown preference" + Suggestion(key, PreferenceKeys())}));
}

void ScriptRunner::OpenSource(const FieldReader& script) {
    if (script.Has("scene"))
        OpenScene(script);
    else
        OpenMesh(script);
}

void ScriptRunner::SetView(const FieldReader& script) {
    if (!script.Has("camera") && script.Has("scene")) return;
    session->View() =
        ReadView(script.Has("camera") ? script.At("camera")
                                      : FieldReader(nlohmann::json::object(), path, "/camera"),
                 session->View());
    session->UpdateCamera();
}

void ScriptRunner::SelectFirstTool() {
    // A scene comes with its tool; choosing it again changes nothing. Where the freeze brush is at
    // work, the other one has its tool, too.
    const bool isFreezing = session->IsFreezing();
    const BrushConfiguration* tool = session->SculptBrush().ActiveConfiguration();
    if (!session->SelectTool(tool == nullptr ? "Sculpt" : tool->Name().toStdString()))
        throw HostError(path + ": the brush has no tool Sculpt");
    if (isFreezing) session->SelectTool(FreezeBrush::Tool()->Name().toStdString());
}

void ScriptRunner::OpenMesh(const FieldReader& script) {
    const std::string mesh = InputPath(script.At("mesh"));
    if (progress.step) progress.step(0, script.At("steps").Size(), "opening " + mesh);
    session = std::make_unique<SculptSession>(mesh, ImportSpace(script));
    ReportNotes(mesh, session->Notes());
}

void ScriptRunner::OpenScene(const FieldReader& script) {
    const std::string scene = InputPath(script.At("scene"));
    if (progress.step) progress.step(0, script.At("steps").Size(), "opening " + scene);
    session = SculptSession::OpenScene(scene);
    ReportNotes(scene, session->Notes());
}

void ScriptRunner::ReportNotes(const std::string& file,
                               const std::vector<std::string>& notes) const {
    if (!progress.message) return;
    for (const std::string& note : notes) progress.message(file + ": " + note);
}

std::string ScriptRunner::ScenePath(const FieldReader& file) {
    if (!IsScenePath(file.Text())) file.Fail("a scene file's name ends in .trovik");
    return OutputPath(file);
}

void ScriptRunner::RunSave(const FieldReader& file) {
    const std::string target = ScenePath(file);
    Save(target);
    NoteWritten(target);
}

void ScriptRunner::RunStep(const FieldReader& step) {
    struct Verb {
        const char* name;
        StepFunction run;
    };
    // A tool may come with its settings; any other step is one thing.
    static constexpr Verb verbs[] = {{"tool", &ScriptRunner::RunTool},
                                     {"set", &ScriptRunner::RunSettings},
                                     {"stroke", &ScriptRunner::RunStroke},
                                     {"undo", &ScriptRunner::RunUndo},
                                     {"redo", &ScriptRunner::RunRedo},
                                     {"subdivide", &ScriptRunner::RunSubdivide},
                                     {"unsubdivide", &ScriptRunner::RunUnsubdivide},
                                     {"deleteLevels", &ScriptRunner::RunDeleteLevels},
                                     {"applyToBase", &ScriptRunner::RunApplyToBase},
                                     {"level", &ScriptRunner::RunLevel},
                                     {"layer", &ScriptRunner::RunLayer},
                                     {"freeze", &ScriptRunner::RunFreeze},
                                     {"transform", &ScriptRunner::RunTransform},
                                     {"mirror", &ScriptRunner::RunMirror},
                                     {"symmetrize", &ScriptRunner::RunSymmetrize},
                                     {"camera", &ScriptRunner::RunCamera},
                                     {"picture", &ScriptRunner::RunPicture},
                                     {"sheet", &ScriptRunner::RunSheet},
                                     {"export", &ScriptRunner::RunExport},
                                     {"bake", &ScriptRunner::RunBake},
                                     {"displace", &ScriptRunner::RunDisplace},
                                     {"save", &ScriptRunner::RunSave},
                                     {"reset", &ScriptRunner::RunReset}};
    stepWarnings.clear();
    for (const Verb& verb : verbs) {
        if (!step.Has(verb.name)) continue;
        session->AnnounceCommand(verb.name);
        (this->*verb.run)(step.At(verb.name));
    }
    const std::string warning = RunVisibilityStep(*session, step);
    if (!warning.empty()) Warn(warning);
}

void ScriptRunner::RunTool(const FieldReader& name) {
    if (!session->SelectTool(name.Text()))
        name.Fail("unknown tool \"" + name.Text() + "\"" +
                  Suggestion(name.Text(), session->ToolNames()));
}

void ScriptRunner::RunSettings(const FieldReader& settings) {
    BrushOperation& brush = session->Brush();
    BrushOperation::Private& host = brush.Settings();
    SceneSettings& strokes = session->Settings();
    strokes.radius = settings.NumberOr("radius", strokes.radius);
    if (settings.Has("spacing")) strokes.spacing = settings.At("spacing").Number() * 0.01f;
    if (settings.Has("strength")) brush.SetBrushStrength(settings.At("strength").Number());
    if (settings.Has("falloff")) SetFalloff(settings.At("falloff"));
    if (settings.Has("direction")) SetDirection(settings.At("direction"));
    if (settings.Has("buildUpRate"))
        BrushAttribute<float>(brush, "builduprate", settings.At("buildUpRate"))
            .SetValue(settings.At("buildUpRate").Number(), true);
    const std::pair<const char*, const char*> flags[] = {{"globalPlane", "globalplane"},
                                                         {"updatePlane", "updateplane"},
                                                         {"affectAllLayers", "affectalllayers"}};
    for (const auto& [field, attribute] : flags)
        if (settings.Has(field))
            BrushAttribute<bool>(brush, attribute, settings.At(field))
                .SetValue(settings.At(field).Flag(), true);
    host.strengthBias = settings.NumberOr("strengthBias", host.strengthBias);
    if (settings.Has("pressureControlsStrength"))
        brush.strokeOptionC.SetValue(settings.At("pressureControlsStrength").Flag(), true);
    if (settings.Has("facing")) {
        const FieldReader facing = settings.At("facing");
        brush.SetFalloffBasedOnFacingAngle(facing.FlagOr("on", true),
                                           facing.NumberOr("start", brush.facingAngleStart),
                                           facing.NumberOr("range", brush.facingAngleRange));
    }
    if (settings.Has("drawFromCenter"))
        BrushAttribute<bool>(brush, "drawfromcenter", settings.At("drawFromCenter"))
            .SetValue(settings.At("drawFromCenter").Flag(), true);
    if (settings.Has("stamp")) SetStamp(settings.At("stamp"));
    SetPen(settings);
}

void ScriptRunner::SetFalloff(const FieldReader& falloff) {
    BrushOperation& brush = session->Brush();
    if (falloff.Json().is_array()) {
        std::vector<float> samples;
        for (std::size_t i = 0; i < falloff.Size(); ++i) samples.push_back(falloff.At(i).Number());
        SetFalloffSamples(brush, samples);
        return;
    }
    const int index =
        falloff.Json().is_string() ? FalloffIndexOf(falloff.Text()) : falloff.Integer();
    if (index < 0 || index >= static_cast<int>(FalloffNames().size()))
        falloff.Fail("unknown falloff; there are " + Listed(FalloffNames()));
    brush.SetFalloffIndex(index);
}

void ScriptRunner::SetDirection(const FieldReader& direction) {
    const auto& names = DirectionNames();
    int mode = -1;
    if (direction.Json().is_string()) {
        const auto found = std::find(names.begin(), names.end(), direction.Text());
        if (found != names.end()) mode = static_cast<int>(found - names.begin());
    } else {
        mode = direction.Integer();
    }
    if (mode < 0 || mode >= static_cast<int>(names.size()))
        direction.Fail("unknown direction; there are " + Listed(names));
    session->Brush().directionAttribute.SetValue(mode, true);
}

void ScriptRunner::RunUndo(const FieldReader& count) {
    for (int i = 0; i < count.Integer(); ++i)
        if (!session->Undo()) count.Fail("there is nothing more to undo");
}

void ScriptRunner::RunRedo(const FieldReader& count) {
    for (int i = 0; i < count.Integer(); ++i)
        if (!session->Redo()) count.Fail("there is nothing more to redo");
}

void ScriptRunner::RunTransform(const FieldReader& transform) {
    const Placement before = session->Geometry().Place();
    Place(transform);
    session->Push(MakeTransformStep(session->Geometry(), before));
}

void ScriptRunner::Place(const FieldReader& transform) {
    Placement& place = session->Geometry().Place();
    if (transform.Has("matrix")) {
        Matrix matrix;
        const FieldReader numbers = transform.At("matrix");
        for (std::size_t i = 0; i < 16; ++i) matrix.m[i / 4][i % 4] = numbers.At(i).Number();
        const bool isAffine = matrix.m[0][3] == 0.0f && matrix.m[1][3] == 0.0f &&
                              matrix.m[2][3] == 0.0f && matrix.m[3][3] == 1.0f;
        if (!isAffine) numbers.Fail("the last column of the matrix is not 0, 0, 0, 1");
        Matrix inverse = matrix;
        bool invertible = false;
        inverse.Invert(&invertible);
        if (!invertible) numbers.Fail("the matrix has no inverse");
        place.SetMatrix(matrix);
        return;
    }
    Vector scale(1.0f, 1.0f, 1.0f);
    if (transform.Has("scale")) {
        const FieldReader factor = transform.At("scale");
        if (factor.Json().is_array()) {
            scale = factor.ThreeNumbers();
        } else {
            scale = Vector(factor.Number(), factor.Number(), factor.Number());
        }
        if (scale.x == 0.0f || scale.y == 0.0f || scale.z == 0.0f)
            factor.Fail("a scale of 0 leaves nothing to sculpt");
    }
    const Vector turn = transform.Has("rotate") ? transform.At("rotate").ThreeNumbers() : Vector();
    const Vector move =
        transform.Has("translate") ? transform.At("translate").ThreeNumbers() : Vector();
    place.Set(scale, turn, move);
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
    session->ApplyUndoSettings();
}

void ScriptRunner::RunReset(const FieldReader& flag) {
    const uint32_t levels = session->Geometry().LevelCount() - 1;
    session->Reset();
    Subdivide(flag, static_cast<int>(levels));
    session->Geometry().History().Clear();
}

std::string ScriptRunner::OutputPath(const FieldReader& file) {
    try {
        return isChecking ? files.Target(file.Text()) : files.MakeTarget(file.Text());
    } catch (const HostError& refused) {
        file.Fail(refused.what());
    }
}

std::string ScriptRunner::InputPath(const FieldReader& file) const {
    try {
        return files.Find(file.Text());
    } catch (const HostError& missing) {
        file.Fail(missing.what());
    }
}

void ScriptRunner::NoteWritten(const std::string& file) {
    result.files.push_back(file);
    files.NoteWritten(file);
}

}  // namespace trovik
