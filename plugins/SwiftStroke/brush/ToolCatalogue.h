// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/BrushOperation.h"

namespace trovik {

/// IDs of the tools in the catalogue.
enum class Tool : uint32_t {
    Sculpt = 0,
    Smear,
    Pinch,
    Smooth,
    Amplify,
    Flatten,
    Scrape,
    Fill,
    Wax,
    Bulge,
    Spray,
    Repeat,
    Knife,
    Foamy,
    Imprint,
};

/// Registers the fifteen tools with the host, in the order of their IDs. The host calls this once
/// after the library is loaded.
void RegisterTools();

/// The catalogue entry of Smooth, which a stroke with ModifierSmooth activates. Null before
/// RegisterTools.
extern BrushConfiguration* smoothConfiguration;

}  // namespace trovik
