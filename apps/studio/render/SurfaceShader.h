// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace trovik::studio {

/// Source of the program that draws the surface, without "#version". Defines select its variant:
///
///     FLAT      the normal of the triangle instead of the interpolated one WIRE      lines between
///     the cells of grid patches, from the number of the vertex CAVITY    convex areas lighter,
///     concave ones darker, by the change of the normal from pixel to pixel MASK      frozen
///     vertices darker GROUPS    face groups tinted RINGS     brush rings, by the distance to their
///     centres in the world PLANES    lines where planes of symmetry cut the surface
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
