// SPDX-License-Identifier: Apache-2.0
#include "framework/edits/ColorStep.h"

#include "framework/multires/LevelGeometry.h"

#include <utility>

namespace trovik {

namespace {

class ColorStep : public UndoStep {
public:
    ColorStep(std::vector<std::array<float, 4>> newColors, bool newHasAlpha, std::string name)
        : colors(std::move(newColors)), hasAlpha(newHasAlpha) {
        label = std::move(name);
    }

    void Apply(LevelGeometry& geometry) override { geometry.ExchangeColors(colors, hasAlpha); }

    uint64_t Bytes() const override {
        return sizeof(ColorStep) + label.capacity() + colors.capacity() * sizeof colors[0];
    }
    std::vector<StepArray> Arrays() override { return {StepArray(colors)}; }

private:
    /// The colours that are not those of the geometry.
    std::vector<std::array<float, 4>> colors;
    bool hasAlpha;
};

}  // namespace

std::unique_ptr<UndoStep> MakeColorStep(std::vector<std::array<float, 4>> colors,
                                        bool hasAlpha,
                                        const std::string& label) {
    return std::make_unique<ColorStep>(std::move(colors), hasAlpha, label);
}

}  // namespace trovik
