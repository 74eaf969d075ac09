// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/edits/VisibilityStep.h"
#include "framework/visibility/FaceChoice.h"

#include <memory>

namespace trovik {

/// An operation that hides or shows faces of a geometry. Faces are selected on the bound level; the
/// operation applies to all levels.
enum class VisibilityChange : int {
    /// Hides the selected faces.
    Hide,
    /// Shows the selected faces and all their descendants.
    Show,
    /// Shows the selected faces and hides all others.
    Isolate,
    /// Shows hidden faces and hides visible ones.
    Invert,
    /// Shows all faces.
    ShowAll,
};

/// Changes the visibility and returns the undo step without pushing it.
/// \param chosen  one byte for each face of the bound level; not used by Invert and ShowAll.
/// \return null if nothing changes.
/// \throw HostError while a stroke is open.
/// Cost: O(faces of the bound level) plus the cost of SetVisibilityAsStep.
TROVIK_API std::unique_ptr<VisibilityStep> ChangeVisibilityAsStep(LevelGeometry& geometry,
                                                                  VisibilityChange change,
                                                                  const FaceChoice& chosen = {});

}  // namespace trovik
