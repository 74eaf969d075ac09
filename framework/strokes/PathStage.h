// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/PathShape.h"
#include "framework/strokes/PathSteps.h"
#include "host/Api.h"

#include <functional>
#include <memory>
#include <vector>

namespace trovik {

/// One stage of shaping a path while it is drawn: samples are added one at a time, and the stage
/// returns those that no later sample can change. The total output does not depend on how the
/// samples are divided into calls.
class TROVIK_API PathStage {
public:
    virtual ~PathStage() = default;
    /// Adds a sample and appends the samples that become final to `out`.
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

/// See Straightened. This stage holds back all samples until the end of the path.
TROVIK_API std::unique_ptr<PathStage> LineStage();
/// See CurveThrough. The curve segment that ends at a sample is held back until the next sample at
/// another position. Add throws HostError if the curve needs more than maxPathSteps chords.
TROVIK_API std::unique_ptr<PathStage> CurveStage();
/// Moves each position within `distance` (above 0) of the polyline `curve` to the nearest point on
/// it, or to the first such point if there are several; other positions are unchanged. Where the
/// pen approaches or leaves the curve, a straight segment connects the two. No sample is held back.
///
/// The following also applies to SmoothingStage and StabiliserStage. `poll` is called regularly
/// during long work, and its exceptions pass through. Add throws HostError if the path needs more
/// than maxPathSteps steps, where the length of a step is 1/16 of the stage's length parameter.
/// \param timed  whether to store times; see ArcPath.
TROVIK_API std::unique_ptr<PathStage> SnapStage(std::vector<Vector> curve,
                                                float distance,
                                                bool timed,
                                                const StepPoll& poll = StepPoll());
/// Replaces each position with the mean of the path positions within a window of this `length`
/// (above 0) around it. Near the ends, the window shrinks so that it stays centred and within the
/// path, so the first and last positions do not change. A straight path does not change. Pressure,
/// tilt and time keep their original arc lengths. A position is held back until the pen has moved
/// half the length farther along the path, even if the pen pauses.
TROVIK_API std::unique_ptr<PathStage> SmoothingStage(float length,
                                                     bool timed,
                                                     const StepPoll& poll = StepPoll());
/// The stabiliser returns the path of a weight that the pen drags on a cord of this length (above
/// 0). The weight does not move while the cord is slack; once the cord is taut, the weight moves
/// straight towards the pen. The path begins at the pen and ends at the weight's position when the
/// pen is lifted, at most one cord length behind the pen. The result is the exact pursuit curve for
/// any number of samples. No sample is held back.
TROVIK_API std::unique_ptr<PathStage> StabiliserStage(float length,
                                                      bool timed,
                                                      const StepPoll& poll = StepPoll());

/// Shapes a path while it is drawn, by chaining the stages of Shaped. The delays of the stages add
/// up. Without any stage, samples pass through unchanged.
class TROVIK_API PathShaper {
public:
    /// \param poll  called regularly during long work; its exceptions pass through.
    explicit PathShaper(const PathShape& shape = {},
                        bool timed = false,
                        const std::function<void()>& poll = {});
    ~PathShaper();
    PathShaper(PathShaper&&) noexcept;
    PathShaper& operator=(PathShaper&&) noexcept;

    /// \return the samples that are now final and have not been returned yet.
    std::vector<PathSample> Add(const std::vector<PathSample>& samples);
    /// Ends the path after the last sample. \return the remaining samples.
    std::vector<PathSample> Finish();

private:
    std::vector<std::unique_ptr<PathStage>> stages;
};

}  // namespace trovik
