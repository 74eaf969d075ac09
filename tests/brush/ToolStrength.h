// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "brush/ToolCatalogue.h"

namespace trovik::test {

/// Returns whether the tool's strength is a percentage of a distance that the tool measures on the
/// surface. For all other tools, it is a length.
inline bool HasStrengthInPercent(Tool tool) {
    switch (tool) {
        case Tool::Pinch:
        case Tool::Smooth:
        case Tool::Amplify:
        case Tool::Flatten:
        case Tool::Scrape:
        case Tool::Fill:
            return true;
        default:
            return false;
    }
}

}  // namespace trovik::test
