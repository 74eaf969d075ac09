// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/trace/JsonFields.h"
#include "framework/trace/TraceArrays.h"
#include "host/BrushOperation.h"

#include <string>

namespace trovik {

/// Attributes of the brush as a JSON object. \param buildUpRate  JSON text that replaces the
/// attribute's value; empty to use that value.
TROVIK_API std::string BrushAttributesText(const BrushOperation& brush,
                                           const std::string& buildUpRate = {});
/// "builduprate" as JSON text.
TROVIK_API std::string BuildUpRateText(const BrushOperation& brush);

/// All host values that a brush may read when a stroke begins: the settings members of the trace,
/// from "tool" to "renderers", in order. Falloff table and stamp pixels are written to `arrays`.
/// \throw HostError if they cannot be written.
TROVIK_API JsonFields BrushSettingsFields(const BrushOperation& brush, TraceArrays& arrays);

/// "m0" for the first geometry of the scene, "m1" for the second and so on; JSON null for no mesh
/// or one that is not in the scene.
TROVIK_API std::string MeshIdText(const Mesh* mesh);

/// World position of the active camera.
TROVIK_API std::string CameraText();

}  // namespace trovik
