// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/DocumentState.h"

#include <string>

namespace trovik::studio {

/// A name that is unique among the layers of the current level: `wanted`, with a number if
/// necessary. Steps select layers by name, so the studio makes names unique.
std::string FreeLayerName(const DocumentState& state, const std::string& wanted);

}  // namespace trovik::studio
