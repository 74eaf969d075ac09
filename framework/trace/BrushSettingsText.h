// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/trace/JsonFields.h"
#include "framework/trace/TraceArrays.h"
#include "host/BrushOperation.h"

#include <string>

namespace trovik {

/// Returns the brush's attributes as a JSON object.
/// \param buildUpRate  JSON text that replaces the value of the build-up rate attribute; if empty,
/// the value itself is written.
TROVIK_API std::string BrushAttributesText(const BrushOperation& brush,
                                           const std::string& buildUpRate = {});
/// Returns the value of the "builduprate" attribute as JSON text.
TROVIK_API std::string BuildUpRateText(const BrushOperation& brush);

/// Returns all host values that a brush may read when a stroke begins. They are the settings
/// members of a trace line, from "tool" to "renderers", in order. The falloff table and the stamp
/// pixels are written to `arrays`.
/// \throw HostError if they cannot be written.
TROVIK_API JsonFields BrushSettingsFields(const BrushOperation& brush, TraceArrays& arrays);

/// Returns "m0" for the first geometry in the scene, "m1" for the second, and so on; JSON null if
/// `mesh` is null or not in the scene.
TROVIK_API std::string MeshIdText(const Mesh* mesh);

/// Returns the world position of the active camera as JSON text.
TROVIK_API std::string CameraText();

}  // namespace trovik
