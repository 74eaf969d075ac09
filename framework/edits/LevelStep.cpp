// SPDX-License-Identifier: Apache-2.0
#include "framework/history/TopologyStep.h"
#include "framework/multires/Steps.h"

#include <utility>

namespace trovik {

namespace {

/// The undo step for binding a different level and for changing the contents of levels without
/// adding or removing levels.
class LevelStep : public TopologyStep {
public:
    LevelStep(LevelSwitch done, const LevelGeometry& geometry)
        : change(std::move(done)), boundNow(geometry.BoundIndex()) {}

    void Apply(LevelGeometry& geometry) override {
        // A host may have bound another level since the step was made or last applied.
        if (geometry.BoundIndex() != boundNow) geometry.BindLevel(boundNow);
        geometry.Exchange(change);
        boundNow = geometry.BoundIndex();
        geometry.Bound()->ContentChanged();
    }

    uint64_t Bytes() const override {
        return sizeof(LevelStep) + change.Bytes() + label.capacity();
    }

private:
    LevelSwitch change;
    uint32_t boundNow;
};

}  // namespace

std::unique_ptr<UndoStep> BindLevelAsStep(LevelGeometry& geometry,
                                          uint32_t index,
                                          JobControl* job) {
    LevelSwitch change = geometry.SwitchLevel(index, job);
    auto step = std::make_unique<LevelStep>(std::move(change), geometry);
    step->label = "Level " + std::to_string(index);
    return step;
}

std::unique_ptr<UndoStep> ApplyToBaseAsStep(LevelGeometry& geometry, JobControl* job) {
    if (geometry.BoundIndex() == 0) return nullptr;
    LevelSwitch change = geometry.ApplyToLowerLevels(job);
    if (change.carried.empty()) return nullptr;
    auto step = std::make_unique<LevelStep>(std::move(change), geometry);
    step->label = "Apply to base";
    return step;
}

}  // namespace trovik
