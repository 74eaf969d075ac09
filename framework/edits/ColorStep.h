// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/history/UndoHistory.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace trovik {

/// Returns an undo step that replaces the vertex colours of level 0. It is neither applied nor
/// pushed yet. Applying it cannot fail. \param colors  one per vertex of level 0: red, green, blue
/// and alpha from 0 to 1. \param hasAlpha  see SurfaceAttributes.
TROVIK_API std::unique_ptr<UndoStep> MakeColorStep(std::vector<std::array<float, 4>> colors,
                                                   bool hasAlpha,
                                                   const std::string& label);

}  // namespace trovik
