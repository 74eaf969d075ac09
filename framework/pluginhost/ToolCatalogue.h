// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

/// \file The process-wide catalogue of tools. BrushOperation declares the functions that plug-ins
/// use.
namespace trovik {

/// The names of the host's own tools (FreezeBrush, GrabBrush), which plug-ins cannot use.
inline constexpr const char* hostToolNames[] = {"Freeze", "Grab", "ElasticGrab", "SnakeHook"};

/// Removes all tools from the catalogue except the first `count`. The objects stay valid.
void KeepFirstTools(uint32_t count);

}  // namespace trovik
