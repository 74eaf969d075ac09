// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "brush/ToolCatalogue.h"

namespace trovik::test {

/// Whether the tool's strength is a share in percent of a way that it finds on the surface; with
/// the others it is a length.
inline bool TakesStrengthInPercent(Tool tool) {
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
