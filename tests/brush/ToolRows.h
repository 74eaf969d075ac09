// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "brush/SwiftStroke.h"
#include "brush/ToolCatalogue.h"
#include "framework/nodes/HostKernel.h"
#include "tests/brush/ToolNames.h"

#include <array>

namespace trovik::test {

inline constexpr std::array<Tool, 15> allTools = {Tool::Sculpt,
                                                  Tool::Smear,
                                                  Tool::Pinch,
                                                  Tool::Smooth,
                                                  Tool::Amplify,
                                                  Tool::Flatten,
                                                  Tool::Scrape,
                                                  Tool::Fill,
                                                  Tool::Wax,
                                                  Tool::Bulge,
                                                  Tool::Spray,
                                                  Tool::Repeat,
                                                  Tool::Knife,
                                                  Tool::Foamy,
                                                  Tool::Imprint};

/// Registers the tools unless an earlier test has registered them.
inline void NeedTools() {
    HostKernel::Instance();
    if (smoothConfiguration == nullptr) RegisterTools();
}

/// The tool's catalogue entry.
inline BrushConfiguration* RowOf(Tool tool) {
    NeedTools();
    for (uint32_t i = 0; i < BrushOperation::ConfigurationCount(); ++i) {
        BrushConfiguration* row = BrushOperation::Configuration(i);
        if (row->ID() == static_cast<uint32_t>(tool)) return row;
    }
    return nullptr;
}

}  // namespace trovik::test
