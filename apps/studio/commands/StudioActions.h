// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/ActionContext.h"

namespace trovik::studio {

/// \file
/// One function per menu; each adds its actions to the registry of the context. FileActions has its
/// own header, because windows use it.

void AddEditActions(const ActionContext& context);
void AddViewActions(const ActionContext& context);
void AddBookmarkActions(const ActionContext& context);
void AddReferenceActions(const ActionContext& context);
/// Adds a reference image to the scene. If the camera looks along an axis, the image is locked to
/// that view. Files that cannot be read are reported by StudioScene::Noted.
void AddReference(const ActionContext& context, const QString& path);
/// Whether a file has the extension of an image that can be a reference.
bool IsReferenceFile(const QString& path);
void AddLevelActions(const ActionContext& context);
void AddLayerActions(const ActionContext& context);
void AddMaskActions(const ActionContext& context);
void AddVisibilityActions(const ActionContext& context);
void AddGroupActions(const ActionContext& context);
void AddSymmetryActions(const ActionContext& context);
void AddSurfaceActions(const ActionContext& context);
void AddTopologyActions(const ActionContext& context);
void AddProjectionActions(const ActionContext& context);
/// Asks for the settings of a projection onto the surface of a mesh file, and runs it.
void AskProjection(const ActionContext& context, const QString& path);
void AddAppendActions(const ActionContext& context);
/// Asks for the transform and the space of a mesh file, and appends it.
void AskAppending(const ActionContext& context, const QString& path);
void AddToolActions(const ActionContext& context);
void AddStrokeActions(const ActionContext& context);

}  // namespace trovik::studio
