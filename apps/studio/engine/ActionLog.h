// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/EngineMessages.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <string>
#include <variant>
#include <vector>

namespace trovik::studio {

/// Whether a step only writes files and does not change the document.
bool OnlyWritesFiles(const nlohmann::json& step);
/// The file that such a step writes; empty for other steps.
std::string FileWrittenBy(const nlohmann::json& step);

/// The samples of a stroke. Each takes 20 bytes, or 28 if the pen was tilted at any time. Values
/// are stored unchanged.
class PackedSamples {
public:
    PackedSamples() = default;
    explicit PackedSamples(const std::vector<PenPoint>& points);

    std::size_t Count() const { return bytes.size() / BytesPerSample(); }
    std::size_t BytesPerSample() const { return hasTilt ? 28 : 20; }
    std::size_t Bytes() const { return bytes.capacity(); }
    PenPoint At(std::size_t index) const;

private:
    bool hasTilt = false;
    std::vector<std::byte> bytes;
};

/// The steps and strokes since a document was opened, as a stroke script whose result is
/// bit-identical. Strokes are kept in binary form; their JSON is made when the script is written.
/// Used only on the engine thread.
class ActionLog {
public:
    /// \param setup  the script, without steps, that opened the document.
    explicit ActionLog(nlohmann::json setup) : script(std::move(setup)) {}

    /// Adds a step that has run. Steps that only write files are omitted.
    void AddStep(const nlohmann::json& step);
    /// Adds a stroke that was released, with its samples and ticks.
    void AddStroke(const StrokeStart& start, uint64_t seed, const std::vector<PenPoint>& points);

    std::size_t StepCount() const { return entries.size(); }
    /// Memory of the samples of all strokes, in bytes.
    std::size_t SampleBytes() const;
    /// \param start  replaces the name of the mesh or scene that the script opens; if empty, the
    /// name is kept. \throw HostError if the file cannot be written.
    void Write(const std::string& path, const std::string& start = {}) const;

private:
    struct Stroke {
        PackedSamples samples;
        uint64_t seed = 0;
        BrushOperation::Modifier modifier = BrushOperation::ModifierNone;
        bool isLine = false;
        float steadyPixels = -1.0f;
    };
    static nlohmann::json ToJson(const Stroke& stroke);

    nlohmann::json script;
    std::vector<std::variant<nlohmann::json, Stroke>> entries;
};

/// The script step that changes the document's camera from one view to another. It specifies the
/// projection only if one of the views is orthographic, because earlier versions do not support
/// that field.
nlohmann::json CameraStep(const StrokeView& from, const StrokeView& to);

}  // namespace trovik::studio
