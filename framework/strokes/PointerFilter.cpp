// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/PointerFilter.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace trovik {

PointerFilter::PointerFilter(const PointerLimits& pointerLimits) : limits(pointerLimits) {}

std::vector<PathSample> PointerFilter::Add(const std::vector<PathSample>& taken) {
    for (const PathSample& sample : taken) AddOne(sample);
    return Out(false);
}

std::vector<PathSample> PointerFilter::Finish() {
    if (!last.empty()) Place(last.front(), nullptr);
    last.clear();
    Settle(0.0, true);
    return Out(true);
}

void PointerFilter::AddOne(const PathSample& sample) {
    if (last.empty()) {
        last.push_back(sample);
        return;
    }
    PathSample& kept = last.front();
    if (kept.position == sample.position && kept.time == sample.time) {
        if (std::fabs(sample.pressure - before) < std::fabs(kept.pressure - before)) kept = sample;
        return;
    }
    before = kept.pressure;
    const PathSample decided = kept;
    kept = sample;
    Place(decided, &sample);
    Settle(sample.time, false);
}

float PointerFilter::StepTo(std::size_t a, std::size_t b) const {
    return (samples[b].position - samples[a].position).Length();
}

void PointerFilter::Place(const PathSample& sample, const PathSample* next) {
    const std::size_t i = samples.size();
    samples.push_back(sample);
    raw.push_back(sample.time);
    std::size_t to = i;
    while (to > 0 && i - to <= limits.lateSamples && raw[to - 1] > raw[i]) --to;
    if (to == i || i - to > limits.lateSamples || to < settled) return;
    float asItCame = StepTo(i - 1, i);
    float moved = StepTo(i, to);
    if (next != nullptr) {
        asItCame += (next->position - samples[i].position).Length();
        moved += (next->position - samples[i - 1].position).Length();
    }
    if (to > 0) {
        asItCame += StepTo(to - 1, to);
        moved += StepTo(to - 1, i);
    }
    if (!(moved < asItCame)) return;
    const auto turn = [&](auto& list) {
        const auto at = [&](std::size_t k) {
            return list.begin() + static_cast<std::ptrdiff_t>(k);
        };
        std::rotate(at(to), at(i), at(i + 1));
    };
    turn(samples);
    turn(raw);
}

std::vector<PointerFilter::Pool> PointerFilter::Pools() const {
    std::vector<Pool> pools;
    for (std::size_t i = base; i < raw.size(); ++i) {
        pools.push_back({raw[i], i, 1});
        while (pools.size() > 1 && pools[pools.size() - 2].Mean() > pools.back().Mean()) {
            const Pool merged = pools.back();
            pools.pop_back();
            pools.back().sum += merged.sum;
            pools.back().count += merged.count;
        }
    }
    return pools;
}

/// The time at a group's centre is the group's mean; between centres, times are interpolated
/// linearly.
double PointerFilter::TimeOf(std::size_t sample,
                             const std::vector<Pool>& pools,
                             std::size_t pool) const {
    const Pool& own = pools[pool];
    const auto at = static_cast<double>(sample);
    if (own.Middle() == at) return own.Mean();
    const Pool* from = &own;
    const Pool* to = &own;
    if (at > own.Middle())
        to = pool + 1 < pools.size() ? &pools[pool + 1] : nullptr;
    else if (pool > 0)
        from = &pools[pool - 1];
    else
        from = lastPool.empty() ? nullptr : &lastPool.front();
    if (from != nullptr && to != nullptr) {
        const double fraction = (at - from->Middle()) / (to->Middle() - from->Middle());
        return from->Mean() + (to->Mean() - from->Mean()) * fraction;
    }
    // The sample is before the first group's centre or after the last group's, so its time is
    // extrapolated.
    const auto pace = [](const Pool& a, const Pool& b) {
        return (b.Mean() - a.Mean()) / (b.Middle() - a.Middle());
    };
    if (from == nullptr) {
        const double slope = pool + 1 < pools.size() ? pace(own, pools[pool + 1]) : 0.0;
        return own.Mean() - slope * (own.Middle() - at);
    }
    const Pool& first = firstPool.empty() ? pools.front() : firstPool.front();
    const double slope = first.first == own.first ? 0.0 : pace(first, own);
    return own.Mean() + slope * (at - own.Middle());
}

void PointerFilter::Settle(double newest, bool isWhole) {
    const std::vector<Pool> pools = Pools();
    std::size_t pool = 0;
    while (settled < samples.size()) {
        while (pools[pool].first + pools[pool].count <= settled) ++pool;
        const Pool& own = pools[pool];
        const bool isForced = isWhole || samples.size() - settled > limits.lateSamples;
        if (!isForced) {
            double until = std::max(raw[settled], own.Mean());
            // If the group has several samples, the mean of the next group must be old enough, too.
            if (own.count > 1) {
                if (pool + 1 == pools.size()) break;
                until = std::max(until, pools[pool + 1].Mean());
            }
            if (!(newest - until >= limits.lateTime)) break;
        }
        double time = TimeOf(settled, pools, pool);
        if (settled > 0) time = std::max(time, samples[settled - 1].time);
        samples[settled].time = time;
        ++settled;
        const bool isThrough = settled == own.first + own.count;
        // The times in a group longer than the limit are wrong, so the group is split here.
        if (!isThrough && settled - base <= limits.lateSamples) continue;
        lastPool = {isThrough ? own
                              : Pool{own.Mean() * static_cast<double>(settled - own.first),
                                     own.first,
                                     settled - own.first}};
        if (firstPool.empty()) firstPool = lastPool;
        base = settled;
        if (!isThrough) {
            Settle(newest, isWhole);
            return;
        }
    }
}

bool PointerFilter::RemoveBlot(bool isWhole) {
    std::size_t blot = 0;
    std::size_t i = 1;
    for (; i < settled && i <= limits.settleSamples; ++i) {
        if (samples[i].time - samples[0].time > limits.settleTime) break;
        if (samples[i - 1].pressure - samples[i].pressure > limits.pressureJump) blot = i;
    }
    const bool isSeen = i > limits.settleSamples || i < settled;
    if (!isWhole && (!isSeen || (blot > 0 && blot + 1 >= settled))) return false;
    if (blot == 0) return true;
    // The new pressures before the drop rise at the same rate as those after it.
    const float rise = blot + 1 < samples.size()
                           ? std::max(0.0f, samples[blot + 1].pressure - samples[blot].pressure)
                           : 0.0f;
    for (std::size_t k = blot; k > 0; --k)
        samples[k - 1].pressure = std::max(0.0f, samples[k].pressure - rise);
    return true;
}

void PointerFilter::RemoveSpike() {
    if (samples.size() < 2) return;
    constexpr std::size_t window = 8;
    std::size_t tail = samples.size();
    while (tail > 1 && samples.size() - tail < limits.settleSamples &&
           samples.back().time - samples[tail - 1].time <= limits.settleTime)
        --tail;
    for (std::size_t i = tail; i < samples.size(); ++i) {
        float longest = 0.0f;
        for (std::size_t k = i > window ? i - window : 1; k < i; ++k)
            longest = std::max(longest, StepTo(k - 1, k));
        // With so few samples, a long step is part of a short, straight stroke rather than a jump.
        if (i < 3) continue;
        if (StepTo(i - 1, i) <= std::max(limits.minJumpPixels, limits.positionJump * longest))
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

bool PointerFilter::IsBeforeTail(std::size_t sample) const {
    return sample == 0 || samples.size() + last.size() - sample > limits.settleSamples ||
           samples[settled - 1].time - samples[sample].time > limits.settleTime;
}

std::vector<PathSample> PointerFilter::Out(bool isWhole) {
    std::vector<PathSample> out;
    if (!isBlotDone) isBlotDone = RemoveBlot(isWhole);
    if (!isBlotDone) return out;
    if (isWhole) RemoveSpike();
    const std::size_t end = isWhole ? samples.size() : settled;
    for (; given < end && (isWhole || IsBeforeTail(given)); ++given) out.push_back(samples[given]);
    return out;
}

std::vector<PathSample> Filtered(const std::vector<PathSample>& samples,
                                 const PointerLimits& limits) {
    PointerFilter filter(limits);
    std::vector<PathSample> clean = filter.Add(samples);
    const std::vector<PathSample> rest = filter.Finish();
    clean.insert(clean.end(), rest.begin(), rest.end());
    return clean;
}

}  // namespace trovik
