// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/DragStroke.h"
#include "framework/strokes/ImprintStroke.h"
#include "framework/strokes/PathDabs.h"
#include "framework/strokes/PathStage.h"
#include "framework/strokes/PointerFilter.h"
#include "framework/strokes/PullStroke.h"

#include <chrono>
#include <memory>
#include <vector>

namespace trovik {

/// How pen samples are converted to dabs.
struct LiveStrokeSettings {
    PathSpace space = PathSpace::View;
    /// The camera, which is used in both coordinate spaces. It must not move during the stroke.
    StrokeView view;
    /// Whether faults of the pen and its driver are removed (see PointerFilter).
    bool isFiltered = true;
    PointerLimits limits;
    PathShape shape;
    DabDynamics dynamics;
    PathOptions options;
    DrawMode mode = DrawMode::AlongPath;
};

/// A stroke that is applied while it is drawn: samples are added as the pen reports them, and each
/// dab is applied as soon as no later sample can affect it. Only the samples and their timestamps
/// matter: the dabs are bit-identical regardless of how the samples are divided into calls and when
/// the calls are made. A recorded stroke is a live stroke with all samples added at once.
///
/// A dab's delay is the sum of these delays:
///
/// - PointerFilter: the longer of `limits.lateTime` (50 ms of sample time) and 4 samples; none if
///   unfiltered
/// - curve: until the next sample at another position
/// - snapping: none
/// - smoothing: half the smoothing length along the path
/// - stabiliser: none
/// - PathDabs: half a pixel along the path, or a quarter of the spacing
/// - straight line: until the release, because the line's direction depends on the last position
///
/// With DrawMode::FromCenter and AcrossPoints, the copy follows the pen without delay: each call
/// places it again at the unfiltered samples, and the release places it at the filtered ones. In
/// the same way, the held point follows the pen without delay with DrawMode::Drag. DrawMode::Pull
/// applies dabs along the filtered and shaped path, like DrawMode::AlongPath.
///
/// While the pen pauses, no samples arrive and no further dab becomes final. Call Tick to report
/// that time has passed.
class TROVIK_API LiveStroke {
public:
    /// Borrows `loop`, `geometry` and `tree`. All other members must be called between the loop's
    /// Begin and End. \throw HostError if the radius or the spacing is out of range; see PathSteps.
    LiveStroke(StrokeLoop& loop,
               LevelGeometry& geometry,
               const PatchTree& tree,
               const LiveStrokeSettings& settings);
    LiveStroke(const LiveStroke&) = delete;
    LiveStroke& operator=(const LiveStroke&) = delete;

    /// Adds the next samples, in the order in which they arrived, and applies the dabs that become
    /// final.
    /// \throw PathRefused for a sample that PathSteps rejects; HostError if shaping makes the path
    /// too long. Exceptions from the brush pass through. After an exception, no more dabs of the
    /// stroke are applied.
    void Add(const std::vector<PathSample>& samples);
    void Add(const PathSample& sample) { Add(std::vector<PathSample>{sample}); }
    using Budget = std::chrono::steady_clock::duration;
    /// Adds samples and applies dabs within a time budget, so that a backlog of large dabs does not
    /// delay the next frame. At least one dab is applied, and more until the budget is spent. The
    /// dabs are bit-identical regardless of how they are distributed over calls. \return whether
    /// final dabs are left over; the next call applies them first. With DrawMode::FromCenter and
    /// AcrossPoints and Drag, the budget is ignored, because only one dab is applied.
    bool Add(const std::vector<PathSample>& samples, Budget budget);
    /// Applies dabs that Add or Release left over.
    /// \return whether dabs remain.
    /// \throw the exceptions of Add.
    bool Continue(Budget budget);
    /// Reports that the pen is still at its last position at `time`, which is in seconds on the
    /// same clock as the timestamps of the samples. Equivalent to adding the last sample again with
    /// this time. Does nothing before the first sample, or if `time` is not later than the last
    /// sample. Call it about 60 times a second while the pen reports nothing: it applies the dabs
    /// of an airbrush and releases samples whose delay has passed.
    void Tick(double time);
    /// Applies the remaining dabs after the last sample.
    void Release();
    /// Ends the input of the stroke, which then accepts no more samples, and applies dabs within a
    /// time budget.
    /// \return whether dabs remain; Continue applies them. Until they are applied, the stroke can
    /// be abandoned.
    bool Release(Budget budget);
    /// Restores the surface bit-exactly to its state before the stroke and discards the samples.
    /// The stroke then accepts no further input.
    void Abandon();

    /// Adds samples without applying dabs, for strokes that are recorded as a whole: a path that is
    /// too long is then rejected before the first dab.
    void Take(const std::vector<PathSample>& samples);

    /// Returns the path along which dabs would be applied if the pen were lifted now. Useful as an
    /// overlay for a straight line, or for a path that lags behind the pen. The samples are in the
    /// same space as the added ones. Cost: each call computes the path of the whole stroke again.
    std::vector<PathSample> Preview() const;
    /// Number of dabs applied so far, not counting mirrored dabs; each placement of a stamp copy
    /// counts as one.
    unsigned Count() const;

private:
    void Pass(const std::vector<PathSample>& clean);
    void Follow(const PathSample& sample);
    bool Apply(const std::vector<PathSample>& samples, PathDabs::Deadline deadline);
    bool FinishRelease(PathDabs::Deadline deadline);
    /// Places the stamp copy again, or moves the held point again. The last dab replaces all
    /// previous ones.
    void Place(const std::vector<PathSample>& samples);

    StrokeLoop& loop;
    LiveStrokeSettings settings;
    bool isTimed;
    /// The unfiltered samples.
    std::vector<PathSample> taken;
    PointerFilter filter;
    PathShaper shaper;
    /// Checks the path before it is shaped.
    PathSteps steps;
    PathDabs dabs;
    ImprintStroke imprint;
    DragStroke drag;
    PullStroke pull;
    /// No more samples will be added, but dabs may remain to be applied.
    bool isReleased = false;
    bool isOver = false;
};

}  // namespace trovik
