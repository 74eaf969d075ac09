// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/EngineMessages.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace trovik::studio {

/// Whether a step only writes files and does not change the document.
bool OnlyWritesFiles(const nlohmann::json& step);

/// The steps and strokes since a document was opened, as a stroke script whose result is
/// bit-identical. Used only on the engine thread.
class ActionLog {
public:
    /// \param setup  the script, without steps, that opened the document.
    explicit ActionLog(nlohmann::json setup) : script(std::move(setup)) {}

    /// Adds a step that has run. Steps that only write files are omitted.
    void AddStep(const nlohmann::json& step);
    /// Adds a stroke that was released, with its samples and ticks.
    void AddStroke(const StrokeStart& start, uint64_t seed, const std::vector<PenPoint>& points);

    std::size_t StepCount() const { return steps.size(); }
    /// \throw HostError if the file cannot be written.
    void Write(const std::string& path) const;

private:
    nlohmann::json script;
    std::vector<nlohmann::json> steps;
};

/// The script step that sets the document's camera to the view.
nlohmann::json CameraStep(const StrokeView& view);

}  // namespace trovik::studio
