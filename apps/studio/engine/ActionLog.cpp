// SPDX-License-Identifier: Apache-2.0
#include "engine/ActionLog.h"

#include "framework/io/OutputFile.h"

namespace trovik::studio {

namespace {

nlohmann::json Numbers(const Vector& vector) { return {vector.x, vector.y, vector.z}; }

}  // namespace

nlohmann::json CameraStep(const StrokeView& view) {
    return {{"camera",
             {{"eye", Numbers(view.eye)},
              {"target", Numbers(view.target)},
              {"up", Numbers(view.up)},
              {"fieldOfView", view.verticalFieldOfView},
              {"width", view.width},
              {"height", view.height}}}};
}

bool OnlyWritesFiles(const nlohmann::json& step) {
    for (const char* name : {"save", "export", "render", "contactSheet", "bake"})
        if (step.contains(name)) return true;
    return false;
}

void ActionLog::AddStep(const nlohmann::json& step) {
    if (!OnlyWritesFiles(step)) steps.push_back(step);
}

void ActionLog::AddStroke(const StrokeStart& start,
                          uint64_t seed,
                          const std::vector<PenPoint>& points) {
    nlohmann::json pen = nlohmann::json::array();
    for (const PenPoint& point : points) {
        nlohmann::json sample = {point.x, point.y, point.pressure, point.milliseconds};
        if (point.tiltX != 0.0f || point.tiltY != 0.0f) {
            sample.push_back(point.tiltX);
            sample.push_back(point.tiltY);
        }
        pen.push_back(std::move(sample));
    }
    nlohmann::json path = {{"interactive", true}};
    if (start.isLine) path["line"] = true;
    if (start.steadyPixels >= 0.0f) path["stabiliser"] = start.steadyPixels;
    nlohmann::json stroke = {{"pen", std::move(pen)}, {"path", std::move(path)}, {"seed", seed}};
    if (start.modifier == BrushOperation::ModifierSmooth) stroke["modifier"] = "smooth";
    if (start.modifier == BrushOperation::ModifierInvert) stroke["modifier"] = "invert";
    steps.push_back({{"stroke", std::move(stroke)}});
}

void ActionLog::Write(const std::string& path) const {
    nlohmann::json document = script;
    document["steps"] = steps;
    OutputFile file(path);
    file.Write(document.dump(1));
    file.Put('\n');
    file.Commit();
}

}  // namespace trovik::studio
