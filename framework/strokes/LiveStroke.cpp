// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/LiveStroke.h"

#include <utility>

namespace trovik {

LiveStroke::LiveStroke(StrokeLoop& strokeLoop,
                       LevelGeometry& geometry,
                       const PatchTree& tree,
                       const LiveStrokeSettings& strokeSettings)
    : loop(strokeLoop),
      settings(strokeSettings),
      isTimed(strokeSettings.dynamics.airbrush > 0.0f),
      filter(strokeSettings.limits),
      shaper(strokeSettings.shape, isTimed, strokeSettings.options.poll),
      steps(geometry,
            tree,
            strokeSettings.view,
            strokeSettings.space,
            strokeSettings.options,
            strokeSettings.dynamics),
      dabs(strokeLoop,
           geometry,
           tree,
           strokeSettings.view,
           strokeSettings.space,
           strokeSettings.options,
           strokeSettings.dynamics),
      imprint(strokeLoop,
              geometry,
              tree,
              settings.space == PathSpace::View ? &settings.view : nullptr,
              strokeSettings.mode,
              settings.options) {}

void LiveStroke::Add(const std::vector<PathSample>& samples) {
    if (!samples.empty()) Apply(samples, PathDabs::noDeadline);
}

bool LiveStroke::Add(const std::vector<PathSample>& samples, Budget budget) {
    return Apply(samples, std::chrono::steady_clock::now() + budget);
}

bool LiveStroke::Continue(Budget budget) {
    return Apply({}, std::chrono::steady_clock::now() + budget);
}

bool LiveStroke::Apply(const std::vector<PathSample>& samples, PathDabs::Deadline deadline) {
    if (isOver) return false;
    try {
        // Only Continue applies dabs after the release; samples are ignored.
        if (isReleased) return !samples.empty() || FinishRelease(deadline);
        Take(samples);
        if (settings.mode == DrawMode::AlongPath) return !dabs.Advance(deadline);
        if (samples.empty()) return false;
        imprint.Start(taken.front().position);
        imprint.Drag(taken.back());
        return false;
    } catch (...) {
        isOver = true;
        throw;
    }
}

void LiveStroke::Tick(double time) {
    if (isReleased || taken.empty() || !(time > taken.back().time)) return;
    // In the other modes, a tick has no effect, because placing the copy again would give the same
    // result.
    if (settings.mode != DrawMode::AlongPath) return;
    PathSample sample = taken.back();
    sample.time = time;
    Add(sample);
}

void LiveStroke::Take(const std::vector<PathSample>& samples) {
    if (isOver || isReleased) return;
    for (const PathSample& sample : samples) {
        if (settings.mode == DrawMode::AlongPath)
            steps.Add(sample);
        else
            steps.CheckPosition(sample);
    }
    taken.insert(taken.end(), samples.begin(), samples.end());
    if (settings.mode == DrawMode::AlongPath)
        Pass(settings.isFiltered ? filter.Add(samples) : samples);
}

void LiveStroke::Pass(const std::vector<PathSample>& clean) {
    for (const PathSample& sample : shaper.Add(clean)) dabs.Add(sample);
}

void LiveStroke::Release() {
    if (isOver) return;
    try {
        FinishRelease(PathDabs::noDeadline);
    } catch (...) {
        isOver = true;
        throw;
    }
}

bool LiveStroke::Release(Budget budget) {
    if (isOver) return false;
    try {
        return FinishRelease(std::chrono::steady_clock::now() + budget);
    } catch (...) {
        isOver = true;
        throw;
    }
}

/// \return whether dabs remain.
bool LiveStroke::FinishRelease(PathDabs::Deadline deadline) {
    const bool isFirst = !std::exchange(isReleased, true);
    if (settings.mode == DrawMode::AlongPath) {
        if (isFirst) {
            if (settings.isFiltered) Pass(filter.Finish());
            for (const PathSample& sample : shaper.Finish()) dabs.Add(sample);
        }
        isOver = dabs.Finish(deadline);
        return !isOver;
    }
    isOver = true;
    const auto clean = settings.isFiltered ? Filtered(taken, settings.limits) : taken;
    if (clean.empty()) return false;
    imprint.Start(clean.front().position);
    imprint.Drag(clean.back());
    return false;
}

void LiveStroke::Abandon() {
    isOver = true;
    taken.clear();
    loop.RevertStroke();
}

std::vector<PathSample> LiveStroke::Preview() const {
    auto path = settings.isFiltered ? Filtered(taken, settings.limits) : taken;
    if (settings.mode != DrawMode::AlongPath) return path;
    return Shaped(std::move(path), settings.shape, isTimed);
}

unsigned LiveStroke::Count() const {
    return settings.mode == DrawMode::AlongPath ? dabs.Count() : imprint.Count();
}

}  // namespace trovik
