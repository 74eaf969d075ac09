// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/brushes/DabDynamics.h"
#include "framework/brushes/StrokePath.h"

namespace trovik {

/// What the places of samples are.
enum class PathSpace { View, Surface };

/// Lays dabs along a path by the length of its way on the surface, as the surface is then: each
/// dab lies where the way from the one before, over the corners of the path, has the length of the
/// spacing of the dab before. What was walked toward the next dab is carried over from sample to
/// sample. Dabs depend on the path and not on the samples that tell it, see ArcPath.
///
/// Off the mesh there are no dabs; where the path comes back a dab is laid at once if the last one
/// is at least the spacing away. With DabDynamics::airbrush a dab is also laid whenever so much
/// time has gone since the last.
///
/// A dab's radius is options.radius (or the one in pixels) under
/// BrushOperation::EffectiveBrushSize, tilt and chance, at least a hundredth of it; its pressure is
/// what the curve for strength makes of the pen's, and its strength that of options for it, scaled
/// with the radius where the tool's strength is a length. Chance follows from the loop's seed and
/// the number of the dab.
///
/// \param view  the camera, in either space. \return the number of main dabs. \throw HostError for
/// a path that is too long, by some hundred million dabs, before the first dab.
TROVIK_API unsigned StrokeAlongPath(StrokeLoop& loop,
                                    LevelGeometry& geometry,
                                    const PatchTree& tree,
                                    const StrokeView& view,
                                    PathSpace space,
                                    const std::vector<PathSample>& samples,
                                    const PathOptions& options,
                                    const DabDynamics& dynamics);

/// World units of a length on the viewport at a place's depth.
TROVIK_API float WorldLength(const StrokeView& view, float pixels, const Vector& place);

/// The lean of the pen as a direction in the plane of the view. World; zero for an upright pen.
TROVIK_API Vector LeanInView(const StrokeView& view, const Vector& tilt);

}  // namespace trovik
