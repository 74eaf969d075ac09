// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/PathShape.h"
#include "framework/strokes/PathSteps.h"
#include "host/Api.h"

#include <functional>
#include <memory>
#include <vector>

namespace trovik {

/// One thing that is done to a path while it is drawn: samples go in one by one, and those come out
/// that no later one can change. What comes out in all does not depend on when it is asked for.
class TROVIK_API PathStage {
public:
    virtual ~PathStage() = default;
    /// Takes a sample in, and appends what is certain by it.
    virtual void Add(const PathSample& sample, std::vector<PathSample>& out) = 0;
    /// The path has come to its end; appends the rest.
    virtual void Finish(std::vector<PathSample>& out) = 0;

    /// Everything at once.
    std::vector<PathSample> Whole(const std::vector<PathSample>& samples) {
        std::vector<PathSample> out;
        for (const PathSample& sample : samples) Add(sample, out);
        Finish(out);
        return out;
    }
};

/// See Straightened. Everything waits for the end.
TROVIK_API std::unique_ptr<PathStage> LineStage();
/// See CurveThrough. The way to a sample waits for the next one at another place.
/// Adding throws HostError when the curve is cut into more than maxPathSteps chords.
TROVIK_API std::unique_ptr<PathStage> CurveStage();
/// Each position within `distance` (above 0) of the polyline `curve` moves to the nearest one on
/// it, the first of several; others stay. Where the pen comes near or leaves, the path goes
/// straight between both. Nothing waits.
///
/// For this and the next two stages: `poll` is called now and then during long work, and what it
/// throws passes through; adding throws HostError for a path that takes more than maxPathSteps, of
/// a 16th of the length each. \param timed  times count, see ArcPath.
TROVIK_API std::unique_ptr<PathStage> SnapStage(std::vector<Vector> curve,
                                                float distance,
                                                bool timed,
                                                const StepPoll& poll = StepPoll());
/// Each position becomes the mean of the positions on `length` (above 0) of the way around it;
/// toward the ends of as much as there is on both sides, so that the path begins and ends where it
/// did. A straight way stays as it is. Pressure, tilt and time stay at their length of the way. A
/// position waits until the pen is half the length farther on its way, also where the pen rests.
TROVIK_API std::unique_ptr<PathStage> SmoothingStage(float length,
                                                     bool timed,
                                                     const StepPoll& poll = StepPoll());
/// The path of a weight on a string of this length (above 0), of which the pen holds the other end:
/// it stays while the string is slack and then moves straight toward the pen. It begins where the
/// pen does and ends where it is when the pen is lifted, up to a string's length behind. The exact
/// curve of pursuit, whatever the number of samples. Nothing waits.
TROVIK_API std::unique_ptr<PathStage> StringStage(float length,
                                                  bool timed,
                                                  const StepPoll& poll = StepPoll());

/// A path as a shape wants it while it is drawn: the stages of Shaped one behind the other, each
/// with what it waits for. Without any, samples go through as they are.
class TROVIK_API PathShaper {
public:
    /// \param poll  called now and then during long work; what it throws passes through.
    explicit PathShaper(const PathShape& shape = {},
                        bool timed = false,
                        const std::function<void()>& poll = {});
    ~PathShaper();
    PathShaper(PathShaper&&) noexcept;
    PathShaper& operator=(PathShaper&&) noexcept;

    /// \return what is certain by the samples, and was not returned before.
    std::vector<PathSample> Add(const std::vector<PathSample>& samples);
    /// After the last sample. \return the rest.
    std::vector<PathSample> Finish();

private:
    std::vector<std::unique_ptr<PathStage>> stages;
};

}  // namespace trovik
