// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/ArcPath.h"
#include "framework/strokes/DabDynamics.h"
#include "framework/strokes/PathSteps.h"
#include "framework/strokes/StrokePath.h"

#include <chrono>
#include <optional>

namespace trovik {

/// Lays dabs along a path by the length of its way on the surface, as the surface is then: each
/// dab lies where the way from the one before, over the corners of the path, has the length of the
/// spacing of the dab before. What was walked toward the next dab is carried over from sample to
/// sample. Dabs depend on the path and not on the samples that tell it, see ArcPath, nor on when
/// they are asked for.
///
/// Off the mesh there are no dabs; where the path comes back a dab is laid at once if the last one
/// is at least the spacing away. With DabDynamics::airbrush a dab is also laid whenever so much
/// time has gone since the last; those of a resting pen as soon as a sample tells that it rests.
///
/// A dab's radius is options.radius (or the one in pixels) under
/// BrushOperation::EffectiveBrushSize, tilt and chance, at least a hundredth of it; its pressure is
/// what the curve for strength makes of the pen's, and its strength that of options for it, scaled
/// with the radius where the tool's strength is a length. Its heading is the way that the path goes
/// on, and under an airbrush that rests the way that it came: none at the press. Chance follows
/// from the loop's seed and the number of the dab.
///
/// What waits: the dab of the press until the pen moves or, with an airbrush, the next sample; all
/// others until the path is known a step (half a pixel, or a quarter of the spacing) beyond them.
class TROVIK_API PathDabs {
public:
    /// Borrows loop, geometry and tree, between Begin and End of the loop.
    /// \param view  the camera, in either space. \throw HostError as PathSteps does.
    PathDabs(StrokeLoop& loop,
             LevelGeometry& geometry,
             const PatchTree& tree,
             const StrokeView& view,
             PathSpace space,
             const PathOptions& options,
             const DabDynamics& dynamics);

    /// The path goes on to the sample. Lays nothing yet.
    void Add(const PathSample& sample) { path.Add(sample); }
    using Deadline = std::chrono::steady_clock::time_point;
    static constexpr Deadline noDeadline = Deadline::max();

    /// Applies the dabs that are certain, or as many as fit before the deadline; the clock is read
    /// after each dab, so at least one is applied. How dabs are spread over calls changes no bit of
    /// them. \return whether all that are certain have been applied.
    /// \throw HostError for a path that has become too long by PathSteps::CheckLength, before any
    /// dab is applied, or by PathSteps::Take. Exceptions of PathOptions::poll pass through.
    bool Advance(Deadline deadline = noDeadline);
    /// The path has come to its end: lays the rest. \throw as Advance.
    void Finish();
    /// Main dabs that were laid.
    unsigned Count() const { return count; }

private:
    bool Go(bool isWhole, Deadline deadline);
    double Step() const;
    std::optional<PickHit> HitAt(const Vector& place) const;
    void Walk(double next);
    void Arrive(double at);
    enum class RestResult { GoesOn, Waits, Paused };
    RestResult Rest(bool isWhole, Deadline deadline);
    double DueTime() const;
    void Lay(const PickHit& hit, const PathSample& sample);
    float RadiusAt(const Vector& place) const;
    float SizeOf(const Vector& place, const PathSample& sample);

    StrokeLoop& loop;
    LevelGeometry& geometry;
    const PatchTree& tree;
    StrokeView view;
    PathSpace space;
    ArcPath path;
    PathOptions options;
    DabDynamics dynamics;
    PathSteps steps;

    /// Length of the path that is done.
    double walked = 0.0;
    /// The surface there; nothing off the mesh.
    std::optional<Vector> here;
    bool hasBegun = false;
    /// Length of the way on the surface since the last dab, and the one at which the next is due.
    double way = 0.0;
    double spacing = 0.0;
    Vector last;
    double lastTime = 0.0;
    std::size_t corner = 0;
    std::size_t rest = 0;
    /// The next knot of a rest.
    std::size_t knot = 0;
    unsigned count = 0;
};

/// World units of a length on the viewport at a place's depth.
TROVIK_API float WorldLength(const StrokeView& view, float pixels, const Vector& place);

/// The lean of the pen as a direction in the plane of the view. World; zero for an upright pen.
TROVIK_API Vector LeanInView(const StrokeView& view, const Vector& tilt);

}  // namespace trovik
