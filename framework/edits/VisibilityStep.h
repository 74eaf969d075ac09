// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/HiddenFaces.h"

#include <memory>
#include <string>
#include <vector>

namespace trovik {

/// The undo step for hiding or showing faces. Undo and redo cost the same as the original
/// operation.
///
/// Memory: 8 bytes for each run of consecutive faces of the highest level.
class TROVIK_API VisibilityStep : public UndoStep {
public:
    /// \param toggled  the faces that have already been passed to ToggleHidden.
    VisibilityStep(std::vector<FaceRun> toggled, const std::string& label);

    void Apply(LevelGeometry& geometry) override;
    uint64_t Bytes() const override;
    std::vector<StepArray> Arrays() override { return {StepArray(runs)}; }

    /// The faces of the highest level whose visibility the step changes, in ascending order;
    /// FacesOnLevel converts them to another level. Empty while the history stores the step in
    /// compressed form.
    const std::vector<FaceRun>& Faces() const { return runs; }

private:
    std::vector<FaceRun> runs;
};

/// Hides or shows faces of the bound level and all their descendants, and returns the undo step
/// without pushing it. All faces of the geometry may be hidden.
/// \param wanted  one value for each face of the bound level.
/// \return null if nothing changes.
/// \throw HostError while a stroke is open. Cost: see FacesToToggle and ToggleHidden.
TROVIK_API std::unique_ptr<VisibilityStep> SetVisibilityAsStep(
    LevelGeometry& geometry, const std::vector<FaceVisibility>& wanted, const std::string& label);

}  // namespace trovik
