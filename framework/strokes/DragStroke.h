// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/DabDynamics.h"
#include "framework/strokes/PathSteps.h"
#include "framework/strokes/StrokePath.h"

#include <optional>

namespace trovik {

/// How the pointer of a DragStroke moves the held point.
enum class DragMotion {
    /// In the plane through the held point perpendicular to the view direction or, without a view,
    /// freely in space.
    Free,
    /// Along the surface normal at the held point. In a view, the pointer's motion along the
    /// projected normal counts; where the normal points almost at the viewer, the motion upwards.
    AlongNormal,
    /// An amount, as a length along the surface normal. In a view, the pointer's motion to the
    /// right counts.
    Amount
};

/// Returns the motion that the brush's visible attributes select: Amount if "elasticmode" is not 0,
/// AlongNormal if "alongnormal" is set, and otherwise Free.
TROVIK_API DragMotion DragMotionOf(const BrushOperation& brush);

/// Moves the surface at the press point along with the pointer, within one stroke of the stroke
/// loop. Every dab has the press point as its hit and the position of the pointer as its position,
/// so each motion replaces the previous one; the last motion determines the result.
///
/// Positions are in viewport coordinates or, without a view, in world space. The press point is the
/// surface point at the first position, or without a view the nearest one to it. Only the motion
/// since the first position counts, so the pointer may move off the mesh. If the press misses the
/// mesh, there are no dabs. The radius is determined by the first sample; the pressure of a dab is
/// the highest one since the press, so that lifting the pen does not release the region.
class TROVIK_API DragStroke {
public:
    /// Borrows all arguments except `view`, `options` and `dynamics`. Use the object between the
    /// loop's Begin and End. `options.spacing` is unused.
    /// \param space  View for viewport coordinates.
    DragStroke(StrokeLoop& loop,
               LevelGeometry& geometry,
               const PatchTree& tree,
               const StrokeView& view,
               PathSpace space,
               const PathOptions& options,
               const DabDynamics& dynamics);

    /// Holds the surface at this sample. If another sample was held, the surface is first reverted.
    void Press(const PathSample& sample);
    /// Moves the held point to the sample.
    /// \param pressure  the highest pressure since the press.
    void Drag(const PathSample& sample, float pressure);
    /// Number of dabs applied so far, not counting mirrored ones.
    unsigned Count() const { return count; }

private:
    Vector DisplacementTo(const Vector& pointer) const;

    StrokeLoop& loop;
    LevelGeometry& geometry;
    const PatchTree& tree;
    StrokeView view;
    PathSpace space;
    PathOptions options;
    DabDynamics dynamics;
    std::optional<PathSample> press;
    /// The dab at the press point; empty if the press missed the mesh.
    std::optional<StrokeDab> held;
    /// The random number for the radius, which does not change if the press point does.
    std::optional<float> random;
    /// World-space unit normal at the press point.
    Vector normal;
    unsigned count = 0;
};

}  // namespace trovik
