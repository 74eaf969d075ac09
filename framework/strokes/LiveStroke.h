// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/ImprintStroke.h"
#include "framework/strokes/PathDabs.h"
#include "framework/strokes/PathStage.h"
#include "framework/strokes/PointerFilter.h"

#include <chrono>
#include <memory>
#include <vector>

namespace trovik {

/// How the samples of a pen are converted to dabs.
struct LiveStrokeSettings {
    PathSpace space = PathSpace::View;
    /// The camera, used in both spaces. It does not move during the stroke.
    StrokeView view;
    /// Whether faults of pens and drivers are removed (see PointerFilter).
    bool isFiltered = true;
    PointerLimits limits;
    PathShape shape;
    DabDynamics dynamics;
    PathOptions options;
    DrawMode mode = DrawMode::AlongPath;
};

/// A stroke that is applied while it is drawn: samples are added as the pen reports them, and each
/// dab is applied as soon as no later sample can affect it. Only the times of the samples matter:
/// the dabs are bit-identical however the samples are divided into calls and whenever the calls are
/// made. A recorded stroke is a live stroke with all samples added at once.
///
/// The delay of a dab is the sum of these delays:
///
/// - PointerFilter: `limits.lateTime`, 50 ms of sample time, or 4 samples if that is longer; none
/// if unfiltered
/// - curve: until the next sample at another position
/// - snapping: none
/// - smoothing: half the smoothing length along the path
/// - stabiliser: none
/// - PathDabs: half a pixel of the path, or a quarter of the spacing
/// - straight line: until the release, because its direction depends on its end
///
/// With DrawMode::FromCenter and AcrossPoints the copy follows the pen without delay: each call
/// places it again from the unfiltered samples, and the release places it from the filtered ones.
///
/// While the pen pauses, no samples arrive and no further dab becomes certain. Tick informs the
/// stroke that time passes.
class TROVIK_API LiveStroke {
public:
    /// Borrows loop, geometry and tree. All other members must be called between Begin and End of
    /// the loop. \throw HostError if radius or spacing is out of range, see PathSteps.
    LiveStroke(StrokeLoop& loop,
               LevelGeometry& geometry,
               const PatchTree& tree,
               const LiveStrokeSettings& settings);
    LiveStroke(const LiveStroke&) = delete;
    LiveStroke& operator=(const LiveStroke&) = delete;

    /// Adds the next samples, in the order in which they arrived, and applies the dabs that they
    /// make certain.
    /// \throw PathRefused for a sample that PathSteps rejects, HostError if shaping makes the path
    /// too long; exceptions of the brush pass through. An exception ends the stroke at that point.
    void Add(const std::vector<PathSample>& samples);
    void Add(const PathSample& sample) { Add(std::vector<PathSample>{sample}); }
    using Budget = std::chrono::steady_clock::duration;
    /// Adds samples within a time budget, so that a backlog of large dabs does not delay the next
    /// frame: applies dabs until the budget is spent, at least one. The dabs are bit-identical
    /// however they are distributed over calls. \return whether dabs remain that could be applied
    /// now; the next call applies them first. DrawMode::FromCenter and AcrossPoints move one copy
    /// and ignore the budget.
    bool Add(const std::vector<PathSample>& samples, Budget budget);
    /// Applies dabs that remain from Add or Release. \return whether dabs remain. \throw the
    /// exceptions of Add.
    bool Continue(Budget budget);
    /// Reports that the pen is still at its last position at this time, in the seconds of the
    /// samples; equivalent to adding the last sample again with this time. Does nothing before the
    /// first sample, or if `time` is not later than the last sample. Call it about 60 times a
    /// second while the pen reports nothing: it applies the dabs of an airbrush and releases
    /// samples that were held back by time.
    void Tick(double time);
    /// Applies the remaining dabs after the last sample.
    void Release();
    /// Releases the stroke, which then accepts no samples, and applies dabs within a time budget.
    /// \return whether dabs remain; Continue applies them. Until they are applied, the stroke can
    /// be abandoned.
    bool Release(Budget budget);
    /// Restores the surface bit-exactly to its state before the stroke and discards the samples.
    /// The stroke accepts nothing afterwards.
    void Abandon();

    /// Adds samples without applying dabs, for strokes that are recorded as a whole: a path that is
    /// too long is then rejected before the first dab.
    void Take(const std::vector<PathSample>& samples);

    /// The path along which dabs would be applied if the pen were lifted now; used to draw a
    /// straight line, or a path that lags behind the pen, over the view. Samples are in the same
    /// space as the added ones. Cost: that of recomputing the path of the whole stroke.
    std::vector<PathSample> Preview() const;
    /// Number of main dabs applied so far; a copy that is placed again counts each time.
    unsigned Count() const;

private:
    void Pass(const std::vector<PathSample>& clean);
    bool Apply(const std::vector<PathSample>& samples, PathDabs::Deadline deadline);
    bool FinishRelease(PathDabs::Deadline deadline);

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
    /// No samples follow; dabs may remain.
    bool isReleased = false;
    bool isOver = false;
};

}  // namespace trovik
