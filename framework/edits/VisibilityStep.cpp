// SPDX-License-Identifier: Apache-2.0
#include "framework/edits/VisibilityStep.h"

#include <utility>

namespace trovik {

VisibilityStep::VisibilityStep(std::vector<FaceRun> toggled, const std::string& stepLabel)
    : runs(std::move(toggled)) {
    label = stepLabel;
}

void VisibilityStep::Apply(LevelGeometry& geometry) {
    ToggleHidden(geometry, runs);
    geometry.Bound()->ContentChanged();
}

uint64_t VisibilityStep::Bytes() const {
    return sizeof(VisibilityStep) + runs.capacity() * sizeof(FaceRun) + label.capacity();
}

std::unique_ptr<VisibilityStep> SetVisibilityAsStep(LevelGeometry& geometry,
                                                    const std::vector<FaceVisibility>& wanted,
                                                    const std::string& label) {
    geometry.RefuseInStroke("hiding faces");
    auto step = std::make_unique<VisibilityStep>(FacesToToggle(geometry, wanted), label);
    if (step->Faces().empty()) return nullptr;
    step->Apply(geometry);
    return step;
}

}  // namespace trovik
