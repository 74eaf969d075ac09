// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/edits/VisibilityStep.h"
#include "framework/visibility/FaceChoice.h"

#include <memory>

namespace trovik {

/// What happens to the visibility of a geometry's bound level, and of all levels with it.
enum class VisibilityChange : int {
    /// Chosen faces are hidden.
    Hide,
    /// Chosen faces are shown, with all above them.
    Show,
    /// Chosen faces are shown, all others hidden.
    Isolate,
    /// Hidden faces are shown, visible ones hidden.
    Invert,
    /// Everything is shown.
    ShowAll,
};

/// Changes the visibility and returns the step of it, not yet pushed.
/// \param chosen  one byte for each face of the bound level; not used by Invert and ShowAll.
/// \return null if nothing changes. \throw HostError while a stroke is open.
/// Cost: O(faces of the bound level), and what SetVisibilityAsStep costs.
TROVIK_API std::unique_ptr<VisibilityStep> ChangeVisibilityAsStep(LevelGeometry& geometry,
                                                                  VisibilityChange change,
                                                                  const FaceChoice& chosen = {});

}  // namespace trovik
