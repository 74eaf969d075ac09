// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/remesh/WallThickness.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace trovik {

/// The walls that `trovik info --min-thickness` reports.
struct ThicknessReport {
    float limit = 0.0f;
    ThinWalls walls;
};

/// One line for users, without the label.
std::string TextOf(const ThicknessReport& report);
nlohmann::json JsonOf(const ThicknessReport& report);

}  // namespace trovik
