// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/PathSample.h"
#include "framework/strokes/StrokeLoop.h"
#include "host/Api.h"

#include <functional>
#include <optional>
#include <vector>

namespace trovik {

/// A viewport's camera and its size in pixels.
///
/// In orthographic projection, all lines of sight are parallel to the view direction. The viewport
/// then shows the part of the plane through `target` that it would show in perspective, and `eye`
/// has no other meaning: surfaces behind it are visible too.
struct TROVIK_API StrokeView {
    Vector eye{0.0f, 0.0f, 5.0f};
    Vector target;
    Vector up{0.0f, 1.0f, 0.0f};
    float verticalFieldOfView = 35.0f;
    int width = 960;
    int height = 720;
    bool isOrthographic = false;

    /// World-space ray through a viewport position; (0, 0) is the upper left corner. It starts at
    /// the eye, or in orthographic projection on the plane through the eye perpendicular to the
    /// view direction.
    Ray Through(float x, float y) const;
    /// The ray of Through in mesh-local space. In orthographic projection, it starts in front of
    /// the whole mesh.
    Ray LocalThrough(float x, float y, const LevelGeometry& geometry, const PatchTree& tree) const;
    /// The point seen at a viewport position, in the plane that contains `depth` (world space) and
    /// is perpendicular to the view direction.
    Vector PointAtDepthOf(const Vector& depth, const Vector& position) const;
    /// World-space line of sight to a position, of any length: from the eye to the position, or in
    /// orthographic projection along the view direction.
    Vector SightTo(const Vector& position) const;
    /// Size of a pixel in world units at the depth of a position; in orthographic projection, it is
    /// the same everywhere.
    float PixelSizeAt(const Vector& position) const;
    /// Camera-to-world transform: the camera looks along its local -z axis, with +y up.
    Matrix ToWorld() const;
    /// Like ToWorld, but meant for brushes, which compute the direction to the viewer from the
    /// position of the camera. In orthographic projection, that position is so far away that the
    /// directions from all points of a mesh are equal to single precision.
    Matrix BrushCameraToWorld() const;
};

/// Moves the origin of a ray along its line so that the ray starts shortly in front of a box. Rays
/// with a zero or non-finite direction, and boxes that are empty or infinite, have no effect.
TROVIK_API Ray StartingBefore(const Ray& ray, const AxisAlignedBoundingBox& box);

/// How dabs are applied along a path.
struct PathOptions {
    /// Brush radius in world units.
    float radius = 1.0f;
    /// Distance between dabs as a fraction of the radius.
    float spacing = 0.25f;
    /// Maps pressure to the strength of a dab.
    std::function<float(float pressure)> strength;
    /// Called after each dab.
    std::function<void()> progress;
    /// Called regularly while the path is followed, whether or not dabs are applied. An exception
    /// from it stops the stroke at that point.
    std::function<void()> poll;
};

/// Applies dabs along viewport samples, spaced by straight-line distance in world space. Each dab
/// uses the surface as changed by the previous dabs; no dabs are applied where the path leaves the
/// mesh. Pressure is interpolated. \return the number of dabs applied, not counting mirrored ones.
/// \throw HostError if the radius or the spacing is out of range, and PathRefused for a path that
/// is too long, both before the first dab; see PathSteps.
TROVIK_API unsigned StrokeAlongView(StrokeLoop& loop,
                                    LevelGeometry& geometry,
                                    const PatchTree& tree,
                                    const StrokeView& view,
                                    const std::vector<PathSample>& samples,
                                    const PathOptions& options);

/// Applies dabs along a path through points in world space; at each position on the path, the
/// nearest point on the mesh is used. Throws the same exceptions as StrokeAlongView.
TROVIK_API unsigned StrokeAlongSurface(StrokeLoop& loop,
                                       LevelGeometry& geometry,
                                       const PatchTree& tree,
                                       const std::vector<PathSample>& samples,
                                       const PathOptions& options);

/// The surface hit at a viewport position.
TROVIK_API std::optional<PickHit> HitThrough(const LevelGeometry& geometry,
                                             const PatchTree& tree,
                                             const StrokeView& view,
                                             const Vector& position);
/// The point on the surface nearest to a world position.
TROVIK_API std::optional<PickHit> HitNear(const LevelGeometry& geometry,
                                          const PatchTree& tree,
                                          const Vector& position);
/// Converts a motion on the viewport, in pixels, to a direction on the surface at the hit, in world
/// space and of any length.
TROVIK_API Vector HeadingInView(const LevelGeometry& geometry,
                                const StrokeView& view,
                                const PickHit& hit,
                                const Vector& along);

}  // namespace trovik
