// SPDX-License-Identifier: Apache-2.0
#include "framework/script/ScriptRunner.h"

#include "framework/errors/HostError.h"
#include "framework/jobs/JobControl.h"
#include "framework/json/JsonText.h"
#include "framework/nodes/HostKernel.h"
#include "framework/nodes/PlainText.h"
#include "framework/script/Command.h"
#include "framework/script/ScriptDocument.h"

namespace trovik {

namespace {

bool CallsBrush(const FieldReader& step) {
    for (const CommandEntry& entry : Commands())
        if (entry.traits.callsBrush && step.Has(entry.traits.name)) return true;
    return false;
}

}  // namespace

ScriptRunner::ScriptRunner(const std::string& scriptPath,
                           std::string outputFolder,
                           ScriptProgress listener)
    : givenPath(scriptPath) {
    options.name = DocumentName(scriptPath);
    options.outputFolder = std::move(outputFolder);
    options.progress = std::move(listener);
}

nlohmann::json ScriptRunner::ReadScript(std::vector<JsonFault>* faults) const {
    return ReadStrokeScript(givenPath, faults, variables.empty() ? nullptr : &variables);
}

ScriptResult ScriptRunner::Run() {
    const nlohmann::json json = ReadScript(nullptr);
    const FieldReader script(json, options.name, "");
    const ScriptProgress& progress = options.progress;
    const HUDListening listening([&progress](const std::string& text) {
        if (progress.message) progress.message(PlainText(QString::fromStdString(text)));
    });
    if (!traceOptions.folder.empty()) StartTrace();
    SetUp(script);
    StartJournal(script);
    const FieldReader steps = script.At("steps");
    CountStrokes(steps);
    // The trace ends with the last call into the brush.
    std::size_t lastCall = steps.Size();
    for (std::size_t i = 0; i < steps.Size(); ++i) {
        commands->Prepare(steps.At(i));
        if (CallsBrush(steps.At(i))) lastCall = i;
    }
    if (lastCall == steps.Size()) FinishTrace();
    for (std::size_t i = 0; i < steps.Size(); ++i) {
        const FieldReader step = steps.At(i);
        // The step contained only a comment.
        if (step.Size() == 0) continue;
        if (progress.step) progress.step(i, steps.Size(), NextStepLabel(step));
        try {
            ThrowIfCancelled();
            RunAndReport(step);
        } catch (...) {
            FinishTraceAfterError();
            throw;
        }
        commands->ReportProblems();
        if (trace != nullptr) trace->ThrowIfFailed();
        if (i == lastCall) FinishTrace();
    }
    ThrowIfCancelled();
    Close();
    if (progress.step) progress.step(steps.Size(), steps.Size(), "");
    result.totals = document->Totals();
    result.vertices = document->Geometry().Bound()->VertexCount();
    result.faces = document->Geometry().Bound()->faceCount;
    result.levels = document->Geometry().LevelCount();
    result.files = commands->Context().written;
    return result;
}

void ScriptRunner::ThrowIfCancelled() const {
    ReportOrThrow(options.progress.job, 0, 0, "Running steps");
}

void ScriptRunner::Open(const nlohmann::json& setup) {
    const FieldReader script(setup, options.name, "");
    SetUp(script);
    StartJournal(script);
}

void ScriptRunner::Open(const std::string& name,
                        PolygonMesh polygons,
                        const nlohmann::json& setup) {
    const FieldReader script(setup, options.name, "");
    PrepareProcess(script);
    document = std::make_unique<Document>(name, std::move(polygons), options.progress.job);
    StartCommands();
    SetUpDocument(script);
}

void ScriptRunner::Do(const nlohmann::json& step, std::size_t number) {
    commands->Do(FieldReader(step, options.name, "/steps/" + std::to_string(number)));
    commands->ReportProblems();
}

void ScriptRunner::StartJournal(const FieldReader& script) {
    if (!journalOptions.path.empty()) commands->StartJournal(journalOptions, script.Json());
}

}  // namespace trovik
