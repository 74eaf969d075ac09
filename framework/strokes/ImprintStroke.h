// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/StrokePath.h"

namespace trovik {

/// Values of BrushOperation::StrokeDrawMode.
enum class DrawMode : int {
    AlongPath = 0,
    /// One dab centred on the press point; its radius is the distance from there to the pointer.
    FromCenter = 1,
    /// One dab centred halfway between the press point and the pointer, which lie at opposite ends
    /// of its diameter.
    AcrossPoints = 2,
    /// Dabs hold the press point and follow the pointer; see DragStroke.
    Drag = 3,
    /// Dabs along the pointer's path, each from the previous dab's pointer position; see
    /// PullStroke.
    Pull = 4,
};

/// Whether dabs are placed along the path of the pointer, so that its shape (smoothing, lines,
/// curves) has an effect.
inline bool FollowsPath(DrawMode mode) {
    return mode == DrawMode::AlongPath || mode == DrawMode::Pull;
}
/// Whether strokes follow the pointer off the surface.
inline bool LeavesSurface(DrawMode mode) {
    return mode == DrawMode::Drag || mode == DrawMode::Pull;
}

/// Places one copy of the stamp with a press, a drag and a release, all within one stroke of the
/// stroke loop. Each motion reverts the surface and applies the copy again, so that only the last
/// copy remains. The copy's up direction points from the press point to the pointer unless the
/// stamp positioning overrides it. If the pointer does not move, the copy has the brush radius and
/// is placed at the press point.
///
/// Positions are in viewport coordinates or, without a view, in world space; a world position is
/// moved to the nearest point on the surface. In a view, distances are measured in the plane
/// through the dab centre perpendicular to the view direction, so the pointer may leave the mesh.
/// No copy is applied if the dab centre is off the mesh.
class TROVIK_API ImprintStroke {
public:
    /// Borrows all arguments. Use the object between the loop's Begin and End. `options.spacing` is
    /// unused.
    /// \param view  null if positions are in world space.
    ImprintStroke(StrokeLoop& loop,
                  LevelGeometry& geometry,
                  const PatchTree& tree,
                  const StrokeView* view,
                  DrawMode mode,
                  const PathOptions& options);

    void Press(const PathSample& sample);
    /// Records the press point without applying a dab.
    void Start(const Vector& position) { press = position; }
    /// Moves the copy to the sample. The last call places the final copy.
    void Drag(const PathSample& sample);
    /// Number of dabs applied so far, including reverted dabs but not mirrored ones.
    unsigned Count() const { return count; }

private:
    /// Hit, radius and heading of the copy.
    struct Copy {
        PickHit hit;
        float radius = 0.0f;
        Vector heading;
    };
    std::optional<Copy> CopyInView(const Vector& pointer) const;
    std::optional<Copy> CopyOnSurface(const Vector& pointer) const;
    void ApplyCopy(const Copy& copy, float pressure);

    StrokeLoop& loop;
    LevelGeometry& geometry;
    const PatchTree& tree;
    const StrokeView* view;
    DrawMode mode;
    const PathOptions& options;
    Vector press;
    unsigned count = 0;
};

}  // namespace trovik
