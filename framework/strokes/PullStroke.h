// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/DabDynamics.h"
#include "framework/strokes/PathDabs.h"
#include "framework/strokes/PathSteps.h"

#include <deque>
#include <optional>

namespace trovik {

/// Applies dabs along the path of a pointer that pulls material through space. The pointer moves in
/// the plane through the press point perpendicular to the view direction or, without a view, freely
/// in space. Each dab has the pointer's position at the previous dab as its hit, and the current
/// one as its position. A dab is applied when the pointer is one spacing away from the previous dab
/// along its path, and at the end of the path.
///
/// Positions are in viewport coordinates or, without a view, in world space. The path begins at the
/// first sample on the mesh or, without a view, at the surface point nearest to the first sample.
/// Dabs depend only on the samples and not on when they are requested.
class TROVIK_API PullStroke {
public:
    /// Borrows `loop`, `geometry` and `tree`. Use the object between the loop's Begin and End.
    PullStroke(StrokeLoop& loop,
               LevelGeometry& geometry,
               const PatchTree& tree,
               const StrokeView& view,
               PathSpace space,
               const PathOptions& options,
               const DabDynamics& dynamics);

    /// Appends a sample to the path without applying dabs.
    void Add(const PathSample& sample) { waiting.push_back(sample); }
    /// Applies all dabs that are final, or as many of them as the deadline allows; see PathDabs.
    /// \return whether all final dabs have been applied.
    /// \throw HostError after maxPathSteps dabs. Exceptions from PathOptions::poll pass through.
    bool Advance(PathDabs::Deadline deadline = PathDabs::noDeadline);
    /// Ends the path and applies the remaining dabs, or as many as fit before the deadline.
    /// \return whether all dabs have been applied.
    bool Finish(PathDabs::Deadline deadline = PathDabs::noDeadline);
    /// Number of dabs applied so far, not counting mirrored ones.
    unsigned Count() const { return count; }

private:
    bool Begin(const PathSample& sample);
    Vector WorldOf(const PathSample& sample) const;
    void ApplyDab(const Vector& to, const PathSample& sample);

    StrokeLoop& loop;
    LevelGeometry& geometry;
    const PatchTree& tree;
    StrokeView view;
    PathSpace space;
    PathOptions options;
    DabDynamics dynamics;
    PathSteps steps;
    /// The samples that the path has not reached yet.
    std::deque<PathSample> waiting;
    /// World position of the press point; empty before the path begins.
    std::optional<Vector> press;
    /// Without a view, the vector from the first sample to the press point.
    Vector offset;
    /// The last sample that the path has passed, and the pointer's world position on the way to the
    /// next one.
    PathSample passed;
    Vector here;
    /// Pointer's world position at the previous dab, and the path length since then.
    Vector last;
    double way = 0.0;
    double spacing = 0.0;
    unsigned count = 0;
};

}  // namespace trovik
