// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/PathSample.h"
#include "framework/strokes/StrokeLoop.h"
#include "host/Api.h"

#include <functional>
#include <optional>
#include <vector>

namespace trovik {

/// A viewport: where it is seen from, and its size in pixels.
struct TROVIK_API StrokeView {
    Vector eye{0.0f, 0.0f, 5.0f};
    Vector target;
    Vector up{0.0f, 1.0f, 0.0f};
    float verticalFieldOfView = 35.0f;
    int width = 960;
    int height = 720;

    /// Ray from the eye through a place on the viewport, (0, 0) at its upper left corner. World.
    Ray Through(float x, float y) const;
    /// Camera to world: it looks along its local -z axis with +y up.
    Matrix ToWorld() const;
};

/// How dabs are laid along a path.
struct PathOptions {
    /// Brush radius in world units.
    float radius = 1.0f;
    /// Distance of dabs as a share of the radius.
    float spacing = 0.25f;
    /// Strength of a dab under a pressure.
    std::function<float(float pressure)> strength;
    /// Called after each dab.
    std::function<void()> progress;
    /// Called now and then during the walk, with dabs or without. What it throws ends the walk.
    std::function<void()> poll;
};

/// Lays dabs along samples seen by the camera, at the spacing's distance in a straight line from
/// one to the next. The surface is hit anew for each dab, as it is then; where the path leaves the
/// mesh there are no dabs. Pressure is interpolated. \return the number of main dabs.
/// \throw HostError for radius or spacing out of their bounds, and PathRefused for a path that is
/// too long, both before the first dab; see PathSteps.
TROVIK_API unsigned StrokeAlongView(StrokeLoop& loop,
                                    LevelGeometry& geometry,
                                    const PatchTree& tree,
                                    const StrokeView& view,
                                    const std::vector<PathSample>& samples,
                                    const PathOptions& options);

/// Applies dabs along points on the surface (world; the nearest point of the mesh counts). Errors
/// are those of StrokeAlongView.
TROVIK_API unsigned StrokeAlongSurface(StrokeLoop& loop,
                                       LevelGeometry& geometry,
                                       const PatchTree& tree,
                                       const std::vector<PathSample>& samples,
                                       const PathOptions& options);

/// The surface under a place on the viewport.
TROVIK_API std::optional<PickHit> HitThrough(const LevelGeometry& geometry,
                                             const PatchTree& tree,
                                             const StrokeView& view,
                                             const Vector& place);
/// The place of the surface nearest to a point, world.
TROVIK_API std::optional<PickHit> HitNear(const LevelGeometry& geometry,
                                          const PatchTree& tree,
                                          const Vector& place);
/// A motion on the viewport, in pixels, as a direction on the surface at the hit. World, any
/// length.
TROVIK_API Vector HeadingInView(const LevelGeometry& geometry,
                                const StrokeView& view,
                                const PickHit& hit,
                                const Vector& along);

}  // namespace trovik
