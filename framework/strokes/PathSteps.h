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

/// The most steps that one stroke may take along its path, dabs included. At some microseconds a
/// step the longest path takes about a minute.
inline constexpr double maxPathSteps = 1e7;
/// Bounds of the spacing of dabs, as a fraction of the radius.
inline constexpr float minSpacing = 0.001f;
inline constexpr float maxSpacing = 10.0f;

/// What the samples of a path are.
enum class PathSpace { View, Surface };

/// A path that is refused because of one of its samples.
class TROVIK_API PathRefused : public HostError {
public:
    PathRefused(const std::string& message, std::size_t refusedSample)
        : HostError(message), sample(refusedSample) {}
    /// Index of the sample, counted from the first one of the stroke.
    std::size_t sample;
};

/// \throw HostError naming the spacing unless it lies within minSpacing to maxSpacing.
TROVIK_API void CheckSpacing(float spacing);

/// \throw HostError naming both lengths when a path takes more than maxPathSteps.
/// \param work  what the steps are for.
TROVIK_API void CheckStepCount(double pathLength, double step, const std::string& work);

/// Calls a function once in so many steps, so that long work can be stopped by its exception.
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

/// Keeps the walk along one stroke's path within maxPathSteps. A walk takes steps of half a pixel
/// of the view, or of a quarter of the spacing on the surface, and one for each dab.
class TROVIK_API PathSteps {
public:
    /// Borrows geometry and tree.
    /// \throw HostError unless the radius is finite and above 0, and the spacing within its bounds.
    PathSteps(const LevelGeometry& geometry,
              const PatchTree& tree,
              const StrokeView& view,
              PathSpace space,
              const PathOptions& options,
              const DabDynamics& dynamics = {});

    /// The path as it was drawn goes on to the sample. From the second one on the steps to it are
    /// predicted from the radius at the path's beginning. \throw PathRefused for a sample that is
    /// not finite, lies outside of what steps from the viewport's corner reach, or makes the path
    /// too long.
    void Add(const PathSample& sample);
    /// The bounds of one sample alone, for strokes that do not follow their path.
    void CheckPlace(const PathSample& sample);
    /// \throw HostError for a path of this length, in the samples' units, that begins at `first`.
    void CheckLength(const Vector& first, double length);
    /// One step, or one dab, is done. Now and then this calls PathOptions::poll. \throw HostError
    /// when there were more than maxPathSteps: dabs can be smaller than at the path's beginning.
    void Take();

private:
    /// Length of the path for one step or dab, whichever is shorter.
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
