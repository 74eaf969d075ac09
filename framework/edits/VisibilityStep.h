// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/HiddenFaces.h"

#include <memory>
#include <string>
#include <vector>

namespace trovik {

/// The undo step of hiding and showing faces. Undo and redo cost what hiding cost.
///
/// Memory: 8 bytes for each run of consecutive faces of the highest level.
class TROVIK_API VisibilityStep : public UndoStep {
public:
    /// \param toggled  see ToggleHidden; already applied.
    VisibilityStep(std::vector<FaceRun> toggled, const std::string& label);

    void Apply(LevelGeometry& geometry) override;
    uint64_t Bytes() const override;
    std::vector<StepArray> Arrays() override { return {StepArray(runs)}; }

    /// The faces of the highest level whose visibility the step changes, ascending; FacesOnLevel
    /// gives those of another level. Empty while a history keeps the step compressed.
    const std::vector<FaceRun>& Faces() const { return runs; }

private:
    std::vector<FaceRun> runs;
};

/// Hides and shows faces of the bound level, and all above them, and returns the step of it, not
/// yet pushed. The geometry may show nothing afterwards.
/// \param wanted  one for each face of the bound level. \return null if nothing changes.
/// \throw HostError while a stroke is open. Cost: see FacesToToggle and ToggleHidden.
TROVIK_API std::unique_ptr<VisibilityStep> SetVisibilityAsStep(
    LevelGeometry& geometry, const std::vector<FaceVisibility>& wanted, const std::string& label);

}  // namespace trovik
