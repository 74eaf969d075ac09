// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/StrokePath.h"

namespace trovik {

/// Values of BrushOperation::StrokeDrawMode.
enum class DrawMode : int {
    AlongPath = 0,
    /// One dab in the place of the press, its radius the distance from press to pointer.
    FromCenter = 1,
    /// One dab in the middle between press and pointer, both on its rim.
    AcrossPoints = 2,
};

/// One copy of the stamp, placed by press, drag and release, within one stroke of the loop: each
/// motion puts the surface back and places the copy anew, so that only the last stays. Its top
/// points from the press to the pointer, unless the stamp's positioning says otherwise. A drag
/// without a length places a copy of the brush's radius at the press.
///
/// Places are on the viewport, or, without a view, in world space, where the nearest place of the
/// surface counts. In a view distances are those in the plane through the dab's middle that lies
/// square to the view, so the pointer may leave the mesh; where the dab's middle is off the mesh
/// there is no copy.
class TROVIK_API ImprintStroke {
public:
    /// Borrows all, between Begin and End of the loop. `options.spacing` is unused.
    /// \param view  null for places in world space.
    ImprintStroke(StrokeLoop& loop,
                  LevelGeometry& geometry,
                  const PatchTree& tree,
                  const StrokeView* view,
                  DrawMode mode,
                  const PathOptions& options);

    void Press(const PathSample& sample);
    /// Takes the place of the press and lays nothing yet.
    void Start(const Vector& place) { press = place; }
    /// The release is the last of them.
    void Drag(const PathSample& sample);
    /// Main dabs made, those that were put back included.
    unsigned Count() const { return count; }

private:
    /// Where the copy lies; nothing when that is off the mesh.
    struct Copy {
        PickHit hit;
        float radius = 0.0f;
        Vector heading;
    };
    std::optional<Copy> CopyInView(const Vector& pointer) const;
    std::optional<Copy> CopyOnSurface(const Vector& pointer) const;
    void Lay(const Copy& copy, float pressure);

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
