// SPDX-License-Identifier: Apache-2.0
#include "engine/ActionLog.h"

#include "framework/io/OutputFile.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

namespace trovik::studio {

namespace {

constexpr const char* writingSteps[] = {"save", "export", "render", "contactSheet", "bake"};

nlohmann::json Numbers(const Vector& vector) { return {vector.x, vector.y, vector.z}; }

}  // namespace

nlohmann::json CameraStep(const StrokeView& from, const StrokeView& to) {
    nlohmann::json camera = {{"eye", Numbers(to.eye)},
                             {"target", Numbers(to.target)},
                             {"up", Numbers(to.up)},
                             {"fieldOfView", to.verticalFieldOfView},
                             {"width", to.width},
                             {"height", to.height}};
    if (from.isOrthographic || to.isOrthographic) camera["orthographic"] = to.isOrthographic;
    return {{"camera", camera}};
}

bool OnlyWritesFiles(const nlohmann::json& step) {
    return std::any_of(std::begin(writingSteps), std::end(writingSteps), [&](const char* name) {
        return step.contains(name);
    });
}

std::string FileWrittenBy(const nlohmann::json& step) {
    for (const char* name : writingSteps) {
        const auto found = step.find(name);
        if (found == step.end()) continue;
        const nlohmann::json file =
            found->is_object() ? found->value("file", nlohmann::json()) : *found;
        if (file.is_string()) return file.get<std::string>();
    }
    return {};
}

PackedSamples::PackedSamples(const std::vector<PenPoint>& points) {
    hasTilt = std::any_of(points.begin(), points.end(), [](const PenPoint& point) {
        return point.tiltX != 0.0f || point.tiltY != 0.0f;
    });
    bytes.resize(points.size() * BytesPerSample());
    std::byte* next = bytes.data();
    const auto put = [&next](const auto& value) {
        std::memcpy(next, &value, sizeof value);
        next += sizeof value;
    };
    for (const PenPoint& point : points) {
        for (const float value : {point.x, point.y, point.pressure}) put(value);
        put(point.milliseconds);
        if (!hasTilt) continue;
        put(point.tiltX);
        put(point.tiltY);
    }
}

PenPoint PackedSamples::At(std::size_t index) const {
    const std::byte* next = bytes.data() + index * BytesPerSample();
    const auto take = [&next](auto& value) {
        std::memcpy(&value, next, sizeof value);
        next += sizeof value;
    };
    PenPoint point;
    for (float* value : {&point.x, &point.y, &point.pressure}) take(*value);
    take(point.milliseconds);
    if (!hasTilt) return point;
    take(point.tiltX);
    take(point.tiltY);
    return point;
}

void ActionLog::AddStep(const nlohmann::json& step) {
    if (!OnlyWritesFiles(step)) entries.emplace_back(step);
}

void ActionLog::AddStroke(const StrokeStart& start,
                          uint64_t seed,
                          const std::vector<PenPoint>& points) {
    entries.emplace_back(
        Stroke{PackedSamples(points), seed, start.modifier, start.isLine, start.steadyPixels});
}

std::size_t ActionLog::SampleBytes() const {
    std::size_t sum = 0;
    for (const auto& entry : entries)
        if (const auto* stroke = std::get_if<Stroke>(&entry)) sum += stroke->samples.Bytes();
    return sum;
}

nlohmann::json ActionLog::ToJson(const Stroke& stroke) {
    nlohmann::json pen = nlohmann::json::array();
    for (std::size_t i = 0; i < stroke.samples.Count(); ++i) {
        const PenPoint point = stroke.samples.At(i);
        nlohmann::json sample = {point.x, point.y, point.pressure, point.milliseconds};
        if (point.tiltX != 0.0f || point.tiltY != 0.0f) {
            sample.push_back(point.tiltX);
            sample.push_back(point.tiltY);
        }
        pen.push_back(std::move(sample));
    }
    nlohmann::json path = {{"interactive", true}};
    if (stroke.isLine) path["line"] = true;
    if (stroke.steadyPixels >= 0.0f) path["stabiliser"] = stroke.steadyPixels;
    nlohmann::json fields = {
        {"pen", std::move(pen)}, {"path", std::move(path)}, {"seed", stroke.seed}};
    if (stroke.modifier == BrushOperation::ModifierSmooth) fields["modifier"] = "smooth";
    if (stroke.modifier == BrushOperation::ModifierInvert) fields["modifier"] = "invert";
    return {{"stroke", std::move(fields)}};
}

// One step at a time: the JSON of all strokes at once would take many times the memory of the
// samples.
void ActionLog::Write(const std::string& path, const std::string& start) const {
    OutputFile file(path);
    file.Write("{\n");
    for (const auto& [name, value] : script.items()) {
        if (name == "steps") continue;
        const bool isStart = !start.empty() && (name == "mesh" || name == "scene");
        file.Write(nlohmann::json(name).dump() + ": " +
                   (isStart ? nlohmann::json(start) : value).dump() + ",\n");
    }
    file.Write("\"steps\": [");
    bool isFirst = true;
    for (const auto& entry : entries) {
        file.Write(std::exchange(isFirst, false) ? "\n" : ",\n");
        const auto* stroke = std::get_if<Stroke>(&entry);
        file.Write((stroke != nullptr ? ToJson(*stroke) : std::get<nlohmann::json>(entry)).dump());
    }
    file.Write("\n]}\n");
    file.Commit();
}

}  // namespace trovik::studio
