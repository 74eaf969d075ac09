// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/ClassDesc.h"
#include "host/Preferences.h"

/// \file
/// The objects that register this library with the host. They are constructed when the library is
/// loaded, in this order: the descriptor of SwiftStroke, the plug-in record, the preferences, the
/// kernel table, and the descriptor of PatchMap. The tools are registered later, when the host runs
/// the initialiser of the plug-in record.
namespace trovik {

extern const ClassDesc swiftStrokeClass;
extern const ClassDesc patchMapClass;

/// If off, dabs do not extend the host's dirty box and do not notify renderers of changed patches.
extern const Preferences::Bool renderSwiftStroke;
/// Scales the target depth of patches.
extern const Preferences::Float swiftStrokeLevelFactor;
/// Whether planes are sampled from the positions and normals that the vertices had when the stroke
/// first touched them.
extern const Preferences::Bool useOriginalDataForFlatten;
/// Whether the weight of a plane sample is 1 - distance / radius instead of 1.
extern const Preferences::Bool useVertexWeightsForFlatten;
/// These two settings restrict Wax to raising and to lowering the surface, respectively. They have
/// an effect only in test mode.
extern const Preferences::Bool waxFillsOnly;
extern const Preferences::Bool waxScrapesOnly;

}  // namespace trovik
