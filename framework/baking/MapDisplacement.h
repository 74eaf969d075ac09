// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/baking/MapText.h"
#include "framework/multires/LevelGeometry.h"

#include <optional>
#include <string>

namespace trovik {

class JobControl;

/// Specifies how a displacement map is applied to a level. Missing values are taken from the
/// description in the file (MapText). If the file has no description, the map is a scalar
/// displacement with scale 1 and with mid 0.5 for integer pixels and 0 for floating-point pixels.
struct DisplacementOptions {
    /// An image file; with `<UDIM>` in its name, one file per tile.
    std::string path;
    /// Displacement (reads the first channel) or Vector (reads the first three channels).
    std::optional<MapKind> kind = {};
    std::optional<MapSpace> space = {};
    /// A pixel value v represents the displacement (v - mid) * scale, in mesh units.
    std::optional<float> mid = {};
    std::optional<float> scale = {};
    /// Multiplies every displacement.
    float strength = 1.0f;
    /// Whether the image repeats outside 0 to 1, with interpolation across its edges; otherwise,
    /// UVs outside this range are rejected.
    bool repeat = false;
};

/// Displaces the vertices of the bound level by a map, as one undo step. See Cook: "Shade Trees"
/// (1984).
///
/// The map is read at the UVs of each vertex, with bilinear interpolation between texel centres and
/// constant values beyond the outermost centres. A scalar moves the vertex along its normal. A
/// vector is given either in the frame at the vertex (SurfaceFrames of the current surface) or in
/// mesh-local coordinates. A vertex on a UV seam is moved by the mean of the values at its UVs, so
/// that the surface does not tear. The mask weight reduces the displacement. If a layer is active,
/// the displacement is recorded in the layer, so the layer's strength scales it.
/// \return the number of vertices moved; if it is 0, there is no undo step.
/// \throw HostError, with nothing changed, if the mesh has no UVs or UVs outside the map, if the
/// image is missing, has too few channels or is a normal map, or if the active layer is hidden or
/// locked. Error if an allocation fails. Cancelled, with nothing changed; the operation cannot be
/// cancelled once the first vertex has moved.
TROVIK_API std::uint64_t DisplaceByMap(LevelGeometry& geometry,
                                       const DisplacementOptions& options,
                                       JobControl* job = nullptr);

}  // namespace trovik
