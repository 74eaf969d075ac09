// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/ClassDesc.h"
#include "host/Preferences.h"

/// \file
/// The objects by which the host learns of this library. They come into being when it is loaded, in
/// one order: descriptor of SwiftStroke, plug-in record, preferences, kernel table, descriptor of
/// PatchMap. The tools are registered later, when the host runs the plug-in record's initialiser.
namespace trovik {

extern const ClassDesc swiftStrokeClass;
extern const ClassDesc patchMapClass;

/// Off: dabs add nothing to the host's dirty box and send no notices by face.
extern const Preferences::Bool renderSwiftStroke;
/// Factor on the wanted depth of a patch.
extern const Preferences::Float swiftStrokeLevelFactor;
/// Planes are sampled from positions and normals as they were at first touch in the stroke.
extern const Preferences::Bool useOriginalDataForFlatten;
/// Plane samples weigh 1 less their distance over the radius, instead of 1.
extern const Preferences::Bool useVertexWeightsForFlatten;
/// Test mode only: Wax may only raise, or only lower.
extern const Preferences::Bool waxFillsOnly;
extern const Preferences::Bool waxScrapesOnly;

}  // namespace trovik
