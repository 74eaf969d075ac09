// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/LiveStroke.h"

#include <algorithm>
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
              settings.options),
      drag(strokeLoop,
           geometry,
           tree,
           strokeSettings.view,
           strokeSettings.space,
           strokeSettings.options,
           strokeSettings.dynamics),
      pull(strokeLoop,
           geometry,
           tree,
           strokeSettings.view,
           strokeSettings.space,
           strokeSettings.options,
           strokeSettings.dynamics) {}

void LiveStroke::Place(const std::vector<PathSample>& samples) {
    if (settings.mode == DrawMode::Drag) {
        float pressure = 0.0f;
        for (const PathSample& sample : samples) pressure = std::max(pressure, sample.pressure);
        drag.Press(samples.front());
        drag.Drag(samples.back(), pressure);
        return;
    }
    imprint.Start(samples.front().position);
    imprint.Drag(samples.back());
}

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
        if (settings.mode == DrawMode::Pull) return !pull.Advance(deadline);
        if (!samples.empty()) Place(taken);
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
    if (!FollowsPath(settings.mode)) return;
    PathSample sample = taken.back();
    sample.time = time;
    Add(sample);
}

void LiveStroke::Take(const std::vector<PathSample>& samples) {
    if (isOver || isReleased) return;
    for (const PathSample& sample : samples) {
        if (FollowsPath(settings.mode))
            steps.Add(sample);
        else
            steps.CheckPosition(sample);
    }
    taken.insert(taken.end(), samples.begin(), samples.end());
    if (FollowsPath(settings.mode)) Pass(settings.isFiltered ? filter.Add(samples) : samples);
}

void LiveStroke::Pass(const std::vector<PathSample>& clean) {
    for (const PathSample& sample : shaper.Add(clean)) Follow(sample);
}

void LiveStroke::Follow(const PathSample& sample) {
    if (settings.mode == DrawMode::Pull)
        pull.Add(sample);
    else
        dabs.Add(sample);
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
    if (FollowsPath(settings.mode)) {
        if (isFirst) {
            if (settings.isFiltered) Pass(filter.Finish());
            for (const PathSample& sample : shaper.Finish()) Follow(sample);
        }
        isOver = settings.mode == DrawMode::Pull ? pull.Finish(deadline) : dabs.Finish(deadline);
        return !isOver;
    }
    isOver = true;
    const auto clean = settings.isFiltered ? Filtered(taken, settings.limits) : taken;
    if (!clean.empty()) Place(clean);
    return false;
}

void LiveStroke::Abandon() {
    isOver = true;
    taken.clear();
    loop.RevertStroke();
}

std::vector<PathSample> LiveStroke::Preview() const {
    auto path = settings.isFiltered ? Filtered(taken, settings.limits) : taken;
    if (!FollowsPath(settings.mode)) return path;
    return Shaped(std::move(path), settings.shape, isTimed);
}

unsigned LiveStroke::Count() const {
    switch (settings.mode) {
        case DrawMode::AlongPath:
            return dabs.Count();
        case DrawMode::Drag:
            return drag.Count();
        case DrawMode::Pull:
            return pull.Count();
        default:
            return imprint.Count();
    }
}

}  // namespace trovik
