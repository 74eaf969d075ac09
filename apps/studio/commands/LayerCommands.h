// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/DocumentState.h"

#include <string>

namespace trovik::studio {

/// A name that no layer of the current level has: `wanted`, or that with a number. Steps select
/// layers by name, so the studio gives each its own.
std::string FreeLayerName(const DocumentState& state, const std::string& wanted);

}  // namespace trovik::studio
