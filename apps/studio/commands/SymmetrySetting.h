// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/DocumentState.h"
#include "framework/strokes/MirrorMaps.h"

#include <nlohmann/json.hpp>

namespace trovik::studio {

/// How strokes are mirrored.
struct SymmetrySetting {
    /// Planes x, y, z; copies about an axis.
    MirrorSetting mirrors;
    bool isTopological = false;

    /// Finds the setting that produces a state's mirror maps. If several settings give the same
    /// maps, planes are preferred to copies about an axis.
    static SymmetrySetting Of(const DocumentState& state);
    bool HasPlane(int axis) const;
    void TogglePlane(int axis);
    /// The value of the step "mirror".
    nlohmann::json ToJson() const;
};

}  // namespace trovik::studio
