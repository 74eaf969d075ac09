// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/PointerFilter.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace trovik {

namespace {

using Samples = std::vector<PathSample>;

Samples WithoutDoubles(const Samples& samples) {
    Samples kept;
    float before = 0.0f;
    for (const PathSample& sample : samples) {
        if (!kept.empty() && kept.back().place == sample.place && kept.back().time == sample.time) {
            const float off = std::fabs(kept.back().pressure - before);
            if (std::fabs(sample.pressure - before) < off) kept.back() = sample;
            continue;
        }
        before = kept.empty() ? 0.0f : kept.back().pressure;
        kept.push_back(sample);
    }
    return kept;
}

float StepTo(const Samples& samples, std::size_t a, std::size_t b) {
    return (samples[b].place - samples[a].place).Length();
}

/// By so many places a sample can be late; one that is later has a wrong time.
constexpr std::size_t latest = 32;

/// Puts a sample that came too late where its time belongs, if that makes the path shorter.
void Order(Samples& samples) {
    for (std::size_t i = 1; i < samples.size(); ++i) {
        std::size_t to = i;
        while (to > 0 && i - to <= latest && samples[to - 1].time > samples[i].time) --to;
        if (to == i || i - to > latest) continue;
        float asItCame = StepTo(samples, i - 1, i);
        float moved = StepTo(samples, i, to);
        if (i + 1 < samples.size()) {
            asItCame += StepTo(samples, i, i + 1);
            moved += StepTo(samples, i - 1, i + 1);
        }
        if (to > 0) {
            asItCame += StepTo(samples, to - 1, to);
            moved += StepTo(samples, to - 1, i);
        }
        if (moved < asItCame) {
            const auto at = [&](std::size_t k) {
                return samples.begin() + static_cast<std::ptrdiff_t>(k);
            };
            std::rotate(at(to), at(i), at(i + 1));
        }
    }
}

/// Neighbours whose times fall share their mean, until none falls; these means stand in the middle
/// of those that share them, and times run evenly from one to the next.
void MakeTimesAscend(Samples& samples) {
    struct Pool {
        double sum;
        std::size_t first;
        std::size_t count;
        double Mean() const { return sum / static_cast<double>(count); }
        double Middle() const {
            return static_cast<double>(first) + 0.5 * static_cast<double>(count - 1);
        }
    };
    std::vector<Pool> pools;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        pools.push_back({samples[i].time, i, 1});
        while (pools.size() > 1 && pools[pools.size() - 2].Mean() > pools.back().Mean()) {
            const Pool last = pools.back();
            pools.pop_back();
            pools.back().sum += last.sum;
            pools.back().count += last.count;
        }
    }
    if (pools.size() == samples.size()) return;
    const Pool& front = pools.front();
    const Pool& back = pools.back();
    const double pace =
        pools.size() == 1 ? 0.0 : (back.Mean() - front.Mean()) / (back.Middle() - front.Middle());
    std::size_t next = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const auto at = static_cast<double>(i);
        while (next < pools.size() && pools[next].Middle() < at) ++next;
        if (next == 0) {
            samples[i].time = front.Mean() - pace * (front.Middle() - at);
        } else if (next == pools.size()) {
            samples[i].time = back.Mean() + pace * (at - back.Middle());
        } else if (pools[next].Middle() == at) {
            samples[i].time = pools[next].Mean();
        } else {
            const Pool& from = pools[next - 1];
            const Pool& to = pools[next];
            const double share = (at - from.Middle()) / (to.Middle() - from.Middle());
            samples[i].time = from.Mean() + (to.Mean() - from.Mean()) * share;
        }
    }
}

void TakeBlot(Samples& samples, const PointerLimits& limits) {
    std::size_t blot = 0;
    for (std::size_t i = 1; i < samples.size() && i <= limits.settleSamples; ++i) {
        if (samples[i].time - samples[0].time > limits.settleTime) break;
        if (samples[i - 1].pressure - samples[i].pressure > limits.pressureJump) blot = i;
    }
    if (blot == 0) return;
    // Pressure rises to the fall's foot as it rises behind it.
    const float rise = blot + 1 < samples.size()
                           ? std::max(0.0f, samples[blot + 1].pressure - samples[blot].pressure)
                           : 0.0f;
    for (std::size_t i = blot; i > 0; --i)
        samples[i - 1].pressure = std::max(0.0f, samples[i].pressure - rise);
}

/// The first sample that can belong to a spike.
std::size_t TailOf(const Samples& samples, const PointerLimits& limits) {
    std::size_t first = samples.size();
    while (first > 1 && samples.size() - first < limits.settleSamples &&
           samples.back().time - samples[first - 1].time <= limits.settleTime)
        --first;
    return first;
}

void TakeSpike(Samples& samples, const PointerLimits& limits) {
    if (samples.size() < 2) return;
    constexpr std::size_t window = 8;
    const std::size_t tail = TailOf(samples, limits);
    for (std::size_t i = tail; i < samples.size(); ++i) {
        float longest = 0.0f;
        for (std::size_t k = i > window ? i - window : 1; k < i; ++k)
            longest = std::max(longest, StepTo(samples, k - 1, k));
        // Two samples alone are a short straight stroke and no jump.
        if (i < 3) continue;
        if (StepTo(samples, i - 1, i) <= std::max(limits.shortestJump, limits.placeJump * longest))
            continue;
        samples.resize(i);
        break;
    }
    for (std::size_t i = std::max<std::size_t>(tail, 1); i < samples.size(); ++i) {
        if (samples[i].pressure - samples[i - 1].pressure <= limits.pressureJump) continue;
        for (std::size_t k = i; k < samples.size(); ++k)
            samples[k].pressure = samples[i - 1].pressure;
        break;
    }
}

}  // namespace

std::vector<PathSample> Filtered(const std::vector<PathSample>& samples,
                                 const PointerLimits& limits) {
    Samples clean = WithoutDoubles(samples);
    Order(clean);
    MakeTimesAscend(clean);
    TakeBlot(clean, limits);
    TakeSpike(clean, limits);
    return clean;
}

}  // namespace trovik
