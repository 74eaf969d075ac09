// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/EngineMessages.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace trovik::studio {

/// The steps and strokes since a document was opened, as a stroke script that gives the same bits.
/// Used on the engine thread only.
class ActionLog {
public:
    /// \param setup  the script, without steps, that opened the document.
    explicit ActionLog(nlohmann::json setup) : script(std::move(setup)) {}

    /// A step that was done. Steps that only write files are left out.
    void AddStep(const nlohmann::json& step);
    /// A stroke that was released, with the samples and ticks that it was given.
    void AddStroke(const StrokeStart& start, uint64_t seed, const std::vector<PenPoint>& points);

    std::size_t StepCount() const { return steps.size(); }
    /// \throw HostError if the file cannot be written.
    void Write(const std::string& path) const;

private:
    nlohmann::json script;
    std::vector<nlohmann::json> steps;
};

/// The step of stroke scripts that makes the view the document's camera.
nlohmann::json CameraStep(const StrokeView& view);

}  // namespace trovik::studio
