// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace trovik::studio {

/// Source of the program that draws the surface, without "#version". Defines select its variant:
///
/// - FLAT: uses the normal of the triangle instead of the interpolated normal.
/// - WIRE: draws lines between the cells of grid patches, computed from the vertex number.
/// - CAVITY: brightens convex areas and darkens concave ones, according to the change of the normal
///   from pixel to pixel.
/// - MASK: darkens masked vertices.
/// - GROUPS: tints face groups.
/// - RINGS: draws brush rings, computed from the world-space distance to their centres.
/// - PLANES: draws lines where planes of symmetry cut the surface.
///
/// Lighting is computed in linear colours and encoded as sRGB at the end, for a framebuffer without
/// its own conversion. Lines are blended after that.
extern const char* const surfaceVertexShader;
extern const char* const surfaceFragmentShader;

/// Draws face edges as lines; used with bucket layouts.
extern const char* const edgeVertexShader;
extern const char* const edgeFragmentShader;

/// Writes the number of the triangle's first vertex in the layout, and the depth along the view
/// direction as the bits of a float.
extern const char* const idVertexShader;
extern const char* const idFragmentShader;

}  // namespace trovik::studio
