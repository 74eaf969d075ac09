// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/trace/JsonFields.h"
#include "framework/trace/TraceArrays.h"
#include "host/BrushOperation.h"

#include <string>

namespace trovik {

/// Attributes of the brush as a JSON object. \param buildUpRate  JSON text in place of the
/// attribute's own; empty for that.
TROVIK_API std::string BrushAttributesText(const BrushOperation& brush,
                                           const std::string& buildUpRate = {});
/// "builduprate" as JSON text.
TROVIK_API std::string BuildUpRateText(const BrushOperation& brush);

/// Everything that a brush may ask of the host about itself when a stroke begins: the members of
/// the trace's settings, in their order, from "tool" to "renderers". Falloff table and stamp pixels
/// go into `arrays`. \throw HostError when those cannot be written.
TROVIK_API JsonFields BrushSettingsFields(const BrushOperation& brush, TraceArrays& arrays);

/// "m0" for the first geometry of the scene and so on; JSON null for no mesh or one that is not in
/// the scene.
TROVIK_API std::string MeshIdText(const Mesh* mesh);

/// World position of the active camera.
TROVIK_API std::string CameraText();

}  // namespace trovik
