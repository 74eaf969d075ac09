// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/PathShape.h"
#include "framework/strokes/PathSteps.h"

#include <functional>
#include <memory>
#include <vector>

namespace trovik {

/// One step of shaping a path while it is drawn: samples are added one at a time, and the stage
/// returns those that no later sample can change. The total output does not depend on how the calls
/// are divided.
class PathStage {
public:
    virtual ~PathStage() = default;
    /// Adds a sample and appends the samples that it makes certain to `out`.
    virtual void Add(const PathSample& sample, std::vector<PathSample>& out) = 0;
    /// Ends the path and appends the remaining samples.
    virtual void Finish(std::vector<PathSample>& out) = 0;

    /// Processes a whole path at once.
    std::vector<PathSample> Whole(const std::vector<PathSample>& samples) {
        std::vector<PathSample> out;
        for (const PathSample& sample : samples) Add(sample, out);
        Finish(out);
        return out;
    }
};

/// See Straightened. All samples wait for the end of the path.
std::unique_ptr<PathStage> LineStage();
/// See CurveThrough. The curve segment to a sample waits for the next sample at another position.
/// Adding throws HostError if the curve is divided into more than maxPathSteps chords.
std::unique_ptr<PathStage> CurveStage();
/// See Snapped; the distance must be above 0. No sample waits. For this stage, SmoothingStage and
/// StringStage: `poll` is called regularly during long work, and its exceptions pass through;
/// adding throws HostError for a path that takes more than maxPathSteps steps of a 16th of the
/// length.
std::unique_ptr<PathStage> SnapStage(std::vector<Vector> curve,
                                     float distance,
                                     bool timed,
                                     const StepPoll& poll = StepPoll());
/// See Smoothed; the length must be above 0. A position waits until the pen has moved half the
/// length farther along the path, even if the pen pauses.
std::unique_ptr<PathStage> SmoothingStage(float length,
                                          bool timed,
                                          const StepPoll& poll = StepPoll());
/// See OnString; the length must be above 0. No sample waits.
std::unique_ptr<PathStage> StringStage(float length, bool timed, const StepPoll& poll = StepPoll());

/// Shapes a path while it is drawn: chains the stages of Shaped, each with its delay. Without any
/// stage, samples pass unchanged.
class TROVIK_API PathShaper {
public:
    /// \param poll  called regularly during long work; its exceptions pass through.
    explicit PathShaper(const PathShape& shape = {},
                        bool timed = false,
                        const std::function<void()>& poll = {});
    ~PathShaper();
    PathShaper(PathShaper&&) noexcept;
    PathShaper& operator=(PathShaper&&) noexcept;

    /// \return the samples that have become certain and were not returned before.
    std::vector<PathSample> Add(const std::vector<PathSample>& samples);
    /// Ends the path after the last sample. \return the remaining samples.
    std::vector<PathSample> Finish();

private:
    std::vector<std::unique_ptr<PathStage>> stages;
};

}  // namespace trovik
