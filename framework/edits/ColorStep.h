// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/history/UndoHistory.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace trovik {

/// Replaces the vertex colours of level 0 and returns the undo step, which is not pushed yet.
/// \param colors  one per vertex of level 0: red, green, blue and alpha from 0 to 1.
/// \param hasAlpha  see SurfaceAttributes.
std::unique_ptr<UndoStep> ReplaceColorsAsStep(LevelGeometry& geometry,
                                              std::vector<std::array<float, 4>> colors,
                                              bool hasAlpha,
                                              const std::string& label);

}  // namespace trovik
