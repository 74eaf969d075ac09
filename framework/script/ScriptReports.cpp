// SPDX-License-Identifier: Apache-2.0

/// \file Reports each step of a script: its label while it runs, and its result.
#include "framework/script/ScriptRunner.h"

#include <algorithm>
#include <chrono>

namespace trovik {

namespace {

bool BeginsStroke(const nlohmann::json& step) {
    const auto stroke = step.find("stroke");
    return stroke != step.end() && !stroke->value("continue", false);
}

}  // namespace

void ScriptRunner::CountStrokes(const FieldReader& steps) {
    const auto& all = steps.Json();
    strokeCount = static_cast<std::size_t>(std::count_if(all.begin(), all.end(), BeginsStroke));
    strokesBegun = 0;
}

std::string ScriptRunner::NextStepLabel(const FieldReader& step) {
    if (BeginsStroke(step.Json())) ++strokesBegun;
    if (step.Has("tool")) return "tool " + step.At("tool").Text();
    if (!step.Has("stroke")) return step.Json().begin().key();
    return document->Brush().ActiveConfiguration()->Name().toStdString() + ", stroke " +
           std::to_string(strokesBegun) + " of " + std::to_string(strokeCount);
}

void ScriptRunner::RunAndReport(const FieldReader& step) {
    using Clock = std::chrono::steady_clock;
    const StrokeTotals before = document->Totals();
    const Clock::time_point start = Clock::now();
    commands->Do(step);
    const StrokeTotals after = document->Totals();
    const std::vector<std::string>& warnings = commands->Context().warnings;
    StepReport report;
    report.pointer = step.Pointer();
    report.step = step.Has("tool") ? "tool" : step.Json().begin().key();
    report.dabs = after.dabs - before.dabs;
    report.verticesMoved = after.verticesMoved - before.verticesMoved;
    report.milliseconds = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    report.warnings = warnings;
    result.steps.push_back(std::move(report));
    if (warnings.empty()) return;
    std::string reasons;
    for (const std::string& reason : warnings) reasons += (reasons.empty() ? "" : "; ") + reason;
    if (strict) step.Fail(reasons);
    if (options.progress.warning)
        options.progress.warning(options.name + ": " + step.Pointer() + ": " + reasons);
}

}  // namespace trovik
