// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/ActionRegistry.h"

#include <vector>

namespace trovik::studio {

/// The category of an action, the part of its ID before the dot, with a capital letter.
QString CategoryTitle(const ActionInfo& info);
/// The actions by category, in the order of the menus. Within a category, their order is kept.
std::vector<ActionInfo> InMenuOrder(std::vector<ActionInfo> infos);

}  // namespace trovik::studio
