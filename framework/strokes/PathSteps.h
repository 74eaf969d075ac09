// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/errors/HostError.h"
#include "framework/strokes/DabDynamics.h"
#include "framework/strokes/StrokePath.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace trovik {

/// The maximum number of steps along the path of one stroke, including dabs. At a few microseconds
/// per step, the longest path is processed in about a minute.
inline constexpr double maxPathSteps = 1e7;
/// The range of the dab spacing, as a fraction of the radius.
inline constexpr float minSpacing = 0.001f;
inline constexpr float maxSpacing = 10.0f;

/// The coordinate space of path samples.
enum class PathSpace { View, Surface };

/// Thrown for a path that is rejected because of one of its samples.
class TROVIK_API PathRefused : public HostError {
public:
    PathRefused(const std::string& message, std::size_t refusedSample)
        : HostError(message), sample(refusedSample) {}
    /// Index of the sample, counted from the first one of the stroke.
    std::size_t sample;
};

/// \throw HostError if the spacing is not between minSpacing and maxSpacing; the message states the
/// range.
TROVIK_API void CheckSpacing(float spacing);

/// \throw HostError if a path needs more than maxPathSteps steps; the message states the number of
/// steps and their length.
/// \param work  the purpose of the steps, for the message.
TROVIK_API void CheckStepCount(double pathLength, double step, const std::string& work);

/// Calls a function once every 256 steps; an exception from it stops the work.
class StepPoll {
public:
    explicit StepPoll(std::function<void()> polled = {}) : call(std::move(polled)) {}
    void Take() {
        if ((++count & 255u) == 0 && call) call();
    }

private:
    std::function<void()> call;
    uint64_t count = 0;
};

/// Limits the number of steps along the path of one stroke to maxPathSteps. A step is half a pixel
/// in the view, or a quarter of the spacing on the surface; each dab counts as one step.
class TROVIK_API PathSteps {
public:
    /// Borrows `geometry` and `tree`.
    /// \throw HostError unless the radius is finite and above 0 and the spacing is in range.
    PathSteps(const LevelGeometry& geometry,
              const PatchTree& tree,
              const StrokeView& view,
              PathSpace space,
              const PathOptions& options,
              const DabDynamics& dynamics = {});

    /// Appends a sample of the path as drawn, before smoothing. From the second sample on, the
    /// number of steps is predicted from the dab radius at the start of the path.
    /// \throw PathRefused for a sample that is not finite, is farther from the viewport's corner
    /// than maxPathSteps steps, or makes the path too long.
    void Add(const PathSample& sample);
    /// Checks that a single sample is within bounds, for strokes that do not place dabs along their
    /// path.
    void CheckPosition(const PathSample& sample);
    /// \throw HostError if a path that starts at `first` and has this length, in the units of the
    /// samples, is too long.
    void CheckLength(const Vector& first, double length);
    /// Counts one step or one dab and regularly calls PathOptions::poll.
    /// \throw HostError after more than maxPathSteps steps. Add cannot always predict this, because
    /// dabs can become smaller than at the start of the path.
    void Take();

private:
    /// The length of one step or the dab spacing, whichever is shorter.
    double StepLength(const Vector& first);
    std::string StepText() const;

    const LevelGeometry& geometry;
    const PatchTree& tree;
    StrokeView view;
    PathSpace space;
    float radius;
    float radiusPixels;
    float spacing;
    StepPoll poll;
    std::optional<double> step;
    std::optional<PathSample> last;
    Vector start;
    double length = 0.0;
    std::size_t samples = 0;
    double taken = 0.0;
};

}  // namespace trovik
