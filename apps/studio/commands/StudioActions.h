// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/ActionContext.h"

namespace trovik::studio {

/// \file
/// One function per menu; each adds its actions to the registry of the context. FileActions has its
/// own header, because windows use it.

void AddEditActions(const ActionContext& context);
void AddViewActions(const ActionContext& context);
void AddLevelActions(const ActionContext& context);
void AddLayerActions(const ActionContext& context);
void AddMaskActions(const ActionContext& context);
void AddVisibilityActions(const ActionContext& context);
void AddSymmetryActions(const ActionContext& context);
void AddToolActions(const ActionContext& context);
void AddStrokeActions(const ActionContext& context);

}  // namespace trovik::studio
