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

/// What becomes of a pen's samples on their way to dabs.
struct LiveStrokeSettings {
    PathSpace space = PathSpace::View;
    /// The camera, in either space. It stays where it is for the stroke.
    StrokeView view;
    /// Whether the faults of pens are taken out.
    bool isFiltered = true;
    PointerLimits limits;
    PathShape shape;
    DabDynamics dynamics;
    PathOptions options;
    DrawMode mode = DrawMode::AlongPath;
};

/// A stroke while it is drawn: samples go in as the pen reports them, and dabs are laid as soon as
/// no later sample can change them. The times that count are those of the samples; when the calls
/// are made, and how many samples each brings, changes no bit of any dab, and a recorded stroke is
/// the same thing with all its samples at once.
///
/// What a dab waits for is the sum of what these wait for:
///
/// - PointerFilter: `limits.lateTime`, 50 ms, by the times of the samples, or 4 samples if that is
///   longer; unfiltered nothing
/// - curve: the next sample at another place
/// - snapping: nothing
/// - smoothing: half its length of the way
/// - string: nothing
/// - PathDabs: half a pixel of the way, or a quarter of the spacing
/// - straight line: the release, since where it lies hangs on its end
///
/// With DrawMode::FromCenter and AcrossPoints the copy follows the pen at once: it is placed anew
/// at each call, by the samples as they come, and at the release by the filtered ones.
///
/// A pen that rests reports nothing, and no more becomes certain. Tick tells that time goes on
/// there.
class TROVIK_API LiveStroke {
public:
    /// Borrows loop, geometry and tree. Everything else is called between Begin and End of the
    /// loop. \throw HostError for radius or spacing out of their bounds, see PathSteps.
    LiveStroke(StrokeLoop& loop,
               LevelGeometry& geometry,
               const PatchTree& tree,
               const LiveStrokeSettings& settings);
    LiveStroke(const LiveStroke&) = delete;
    LiveStroke& operator=(const LiveStroke&) = delete;

    /// Takes the next samples, in the order in which they came, and lays what is certain by them.
    /// \throw PathRefused for a sample that PathSteps does not take, HostError for a path that has
    /// become too long by its shape; whatever the brush throws. After that the stroke has ended
    /// where it was.
    void Add(const std::vector<PathSample>& samples);
    void Add(const PathSample& sample) { Add(std::vector<PathSample>{sample}); }
    using Budget = std::chrono::steady_clock::duration;
    /// The same within a time budget, so that a backlog of large dabs does not delay the next
    /// frame: applies dabs until the budget is spent, at least one. How dabs are spread over calls
    /// changes no bit of them. \return whether dabs remain that could be applied now; the next call
    /// applies them first. DrawMode::FromCenter and AcrossPoints move one copy and ignore the
    /// budget.
    bool Add(const std::vector<PathSample>& samples, Budget budget);
    /// Applies dabs that Add left. \return as Add. \throw as Add.
    bool Continue(Budget budget);
    /// The pen was still where it was last at this time, in the seconds of the samples: the same as
    /// the last sample once more with this time. Nothing before the first sample, and for a time
    /// that is not later than its own. To be called while the pen reports nothing, some 60 times a
    /// second: an airbrush lays dabs by it, and what was held back for time comes out.
    void Tick(double time);
    /// After the last sample: lays the rest.
    void Release();
    /// Puts the surface back to the bits of before the stroke, and forgets the samples. The stroke
    /// takes nothing more.
    void Abandon();

    /// Takes samples and lays nothing yet, for strokes that are known as a whole: then a path that
    /// is too long is refused before the first dab.
    void Take(const std::vector<PathSample>& samples);

    /// The path that dabs would be laid along if the pen were lifted now: for a line, or a path
    /// that lags behind its pen, to be drawn over the picture. Samples are in the space of those
    /// that came. Cost: that of the path of the whole stroke.
    std::vector<PathSample> Preview() const;
    /// Main dabs laid until now; copies that were placed anew count each time.
    unsigned Count() const;

private:
    void Pass(const std::vector<PathSample>& clean);
    bool Apply(const std::vector<PathSample>& samples, PathDabs::Deadline deadline);

    StrokeLoop& loop;
    LiveStrokeSettings settings;
    bool isTimed;
    /// As they came.
    std::vector<PathSample> taken;
    PointerFilter filter;
    PathShaper shaper;
    /// Of the path as it is drawn.
    PathSteps steps;
    PathDabs dabs;
    ImprintStroke imprint;
    bool isOver = false;
};

}  // namespace trovik
