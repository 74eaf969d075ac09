// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/ArcPath.h"
#include "framework/strokes/DabDynamics.h"
#include "framework/strokes/PathSteps.h"
#include "framework/strokes/StrokePath.h"

#include <chrono>
#include <optional>

namespace trovik {

/// Applies dabs along a path, spaced by path length on the current surface. Each dab is applied
/// where the path length from the previous dab, measured around corners, reaches the previous dab's
/// spacing. The distance covered towards the next dab is carried over from sample to sample. Dabs
/// depend on the shape of the path, but not on its sampling (see ArcPath) or on when they are
/// requested.
///
/// No dabs are applied off the mesh. Where the path returns to the mesh, a dab is applied
/// immediately if the last dab is at least one spacing away. With DabDynamics::airbrush, a dab is
/// also applied whenever its time interval has passed since the last dab; while the pen is held
/// still, the pending dabs are applied when the next sample arrives.
///
/// A dab's radius is options.radius (or the radius in pixels) modified by
/// BrushOperation::EffectiveBrushSize, tilt and randomness, and at least a hundredth of the
/// unmodified radius. Its pressure is the pen's pressure mapped by the strength curve, and its
/// strength is options.strength at that pressure; it is scaled with the radius if the tool's
/// strength is a length. The dab's heading is the direction in which the path continues. For an
/// airbrush dab during a pause, it is the direction in which the path arrived, or zero if the pen
/// has not moved yet. Random values are derived from the loop's seed and the dab number.
///
/// Delay: the dab at the press point waits until the pen moves or, with an airbrush, for the next
/// sample. Every other dab waits until the path extends one step (half a pixel, or a quarter of the
/// spacing) beyond it.
class TROVIK_API PathDabs {
public:
    /// Borrows `loop`, `geometry` and `tree`. Use the object between the loop's Begin and End.
    /// \param view  the camera, which is used in both coordinate spaces.
    /// \throw HostError under the conditions described for PathSteps.
    PathDabs(StrokeLoop& loop,
             LevelGeometry& geometry,
             const PatchTree& tree,
             const StrokeView& view,
             PathSpace space,
             const PathOptions& options,
             const DabDynamics& dynamics);

    /// Appends a sample to the path without applying dabs.
    void Add(const PathSample& sample) { path.Add(sample); }
    using Deadline = std::chrono::steady_clock::time_point;
    static constexpr Deadline noDeadline = Deadline::max();
    /// Reads the clock unless there is no deadline.
    static bool IsPast(Deadline deadline);

    /// Applies all dabs that are final, or as many of them as the deadline allows. The clock is
    /// read after each dab, so at least one is applied. The dabs are bit-identical regardless of
    /// how they are distributed over calls.
    /// \return whether all final dabs have been applied.
    /// \throw HostError if the path has become too long; thrown by PathSteps::CheckLength before
    /// any dab is applied, or by PathSteps::Take. Exceptions from PathOptions::poll pass through.
    bool Advance(Deadline deadline = noDeadline);
    /// Ends the path and applies the remaining dabs, or as many as fit before the deadline; further
    /// calls apply the rest.
    /// \return whether all dabs have been applied.
    /// \throw the exceptions of Advance.
    bool Finish(Deadline deadline = noDeadline);
    /// Number of dabs applied, not counting mirrored ones.
    unsigned Count() const { return count; }

private:
    bool Go(bool isWhole, Deadline deadline);
    double Step() const;
    std::optional<PickHit> HitAt(const Vector& position) const;
    void Walk(double next);
    void Arrive(double at);
    enum class PauseResult { GoesOn, Waits, Paused };
    PauseResult Pause(bool isWhole, Deadline deadline);
    double DueTime() const;
    void ApplyDabAt(const PickHit& hit, const PathSample& sample);
    float RadiusAt(const Vector& position) const;

    StrokeLoop& loop;
    LevelGeometry& geometry;
    const PatchTree& tree;
    StrokeView view;
    PathSpace space;
    ArcPath path;
    PathOptions options;
    DabDynamics dynamics;
    PathSteps steps;

    /// Path length covered so far.
    double walked = 0.0;
    /// World position of the surface at `walked`; empty off the mesh.
    std::optional<Vector> here;
    bool hasBegun = false;
    /// Distance travelled on the surface since the last dab, and the distance at which the next dab
    /// is due.
    double way = 0.0;
    double spacing = 0.0;
    Vector last;
    double lastTime = 0.0;
    std::size_t corner = 0;
    std::size_t rest = 0;
    /// The next knot of the current pause.
    std::size_t knot = 0;
    unsigned count = 0;
};

/// Converts a viewport length in pixels to world units at the depth of a position.
TROVIK_API float WorldLength(const StrokeView& view, float pixels, const Vector& position);

/// Radius of a dab at a world position, in world units, before tilt, pressure and randomness are
/// applied: DabDynamics::radiusPixels if that is above 0, otherwise `radius`.
TROVIK_API float DabRadius(const StrokeView& view,
                           const DabDynamics& dynamics,
                           float radius,
                           const Vector& position);

/// Radius of a dab at a world position, in world units: DabRadius, modified by pressure, tilt and
/// randomness, and at least a hundredth of the unmodified radius. Draws a random number from the
/// stroke loop's generator if the radius is randomised.
TROVIK_API float DabSize(StrokeLoop& loop,
                         const StrokeView& view,
                         const DabDynamics& dynamics,
                         float radius,
                         const Vector& position,
                         const PathSample& sample);

/// The pen tilt as a direction in the view plane, in world space; zero for an upright pen.
TROVIK_API Vector TiltInView(const StrokeView& view, const Vector& tilt);

}  // namespace trovik
