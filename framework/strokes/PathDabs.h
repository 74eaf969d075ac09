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
/// where the distance from the previous dab, measured along the path and its corners, reaches the
/// spacing of the previous dab. The distance walked toward the next dab is carried over from sample
/// to sample. Dabs depend on the path and not on its samples (see ArcPath), nor on when they are
/// requested.
///
/// Off the mesh there are no dabs; where the path returns to the mesh a dab is applied at once if
/// the last one is at least the spacing away. With DabDynamics::airbrush a dab is also applied
/// whenever its time interval has passed since the last dab; dabs of a paused pen are applied as
/// soon as a sample reports the pause.
///
/// A dab's radius is options.radius (or the radius in pixels) modified by
/// BrushOperation::EffectiveBrushSize, tilt and randomness, and at least a hundredth of the
/// unmodified radius. Its pressure is the pen's pressure mapped by the strength curve, and its
/// strength is options.strength at that pressure, scaled with the radius if the tool's strength is
/// a length. Its heading is the direction in which the path continues; for a paused airbrush it is
/// the direction in which the path arrived, or zero at the press. Random values are derived from
/// the loop's seed and the dab number.
///
/// Delay: the dab of the press waits until the pen moves or, with an airbrush, for the next sample.
/// All other dabs wait until the path reaches one step (half a pixel, or a quarter of the spacing)
/// beyond them.
class TROVIK_API PathDabs {
public:
    /// Borrows loop, geometry and tree. Use it between Begin and End of the loop.
    /// \param view  the camera, used in both spaces.
    /// \throw HostError for the reasons given at PathSteps.
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

    /// Applies the dabs that are certain, or as many as fit before the deadline. The clock is read
    /// after each dab, so at least one is applied. The dabs are bit-identical however they are
    /// distributed over calls. \return whether all certain dabs have been applied.
    /// \throw HostError for a path that has become too long by PathSteps::CheckLength, before any
    /// dab is applied, or by PathSteps::Take. Exceptions of PathOptions::poll pass through.
    bool Advance(Deadline deadline = noDeadline);
    /// Ends the path and applies the remaining dabs, or as many as fit before the deadline; further
    /// calls continue. \return whether all dabs have been applied. \throw the exceptions of
    /// Advance.
    bool Finish(Deadline deadline = noDeadline);
    /// Number of main dabs applied.
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
    float SizeOf(const Vector& position, const PathSample& sample);

    StrokeLoop& loop;
    LevelGeometry& geometry;
    const PatchTree& tree;
    StrokeView view;
    PathSpace space;
    ArcPath path;
    PathOptions options;
    DabDynamics dynamics;
    PathSteps steps;

    /// Path length walked so far.
    double walked = 0.0;
    /// World position of the surface at `walked`; empty off the mesh.
    std::optional<Vector> here;
    bool hasBegun = false;
    /// Length walked on the surface since the last dab, and the length at which the next dab is
    /// due.
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

/// Converts a length on the viewport to world units at the depth of a position.
TROVIK_API float WorldLength(const StrokeView& view, float pixels, const Vector& position);

/// Radius of a dab at a world position, in world units, before tilt, pressure and randomness are
/// applied: DabDynamics::radiusPixels if that is above 0, otherwise `radius`.
TROVIK_API float DabRadius(const StrokeView& view,
                           const DabDynamics& dynamics,
                           float radius,
                           const Vector& position);

/// The tilt of the pen as a direction in the view plane. World; zero for an upright pen.
TROVIK_API Vector TiltInView(const StrokeView& view, const Vector& tilt);

}  // namespace trovik
