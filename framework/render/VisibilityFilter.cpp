// SPDX-License-Identifier: Apache-2.0
#include "framework/render/VisibilityFilter.h"

#include "framework/jobs/JobPhase.h"

#include <tbb/parallel_for.h>

#include <algorithm>
#include <cstddef>
#include <thread>

namespace trovik {

namespace {

/// Cubic B-spline over five pixels.
constexpr float kernel[5] = {1.0f / 16.0f, 4.0f / 16.0f, 6.0f / 16.0f, 4.0f / 16.0f, 1.0f / 16.0f};
constexpr int radius = 2;
/// Distance between the taps of each pass, in pixels. filterReach is the radius times the sum of
/// these distances and the distance for the variance estimate, which is 1.
constexpr int passes[] = {1, 2, 4};
static_assert(filterReach == radius * (1 + 1 + 2 + 4));

/// Two pixels belong to different surfaces if 1 minus the cosine of the angle between their normals
/// exceeds this.
constexpr float normalLimit = 0.10f;
/// Maximum distance from the plane of the surface, in pixels per pixel of distance in the image.
constexpr float planeLimit = 0.6f;
/// Squared differences up to this limit, in units of the variance, count as noise.
constexpr float noiseLimit = 9.0f;
/// Squared difference that counts as noise regardless of the variance: about one byte step.
constexpr float minNoise = 2e-5f;

/// Falls off smoothly from 1 at 0 to 0 at 1, and stays 0 beyond 1.
float Falloff(float square) {
    const float rest = 1.0f - square;
    return rest > 0.0f ? rest * rest : 0.0f;
}

/// A rectangle of pixels with their guides.
class Field {
public:
    Field(int fieldWidth, int fieldHeight, const std::vector<PixelGuide>& fieldGuides)
        : width(fieldWidth), height(fieldHeight), guides(fieldGuides) {}

    std::size_t At(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
               static_cast<std::size_t>(x);
    }

    /// Calls `take(pixel, weight)` for each pixel around (x, y) that shows the same surface,
    /// including the pixel itself.
    template <typename Take>
    void ForEachAround(int x, int y, int step, Take take) const {
        const PixelGuide& here = guides[At(x, y)];
        const float planeScale =
            1.0f / (here.footprint * planeLimit * static_cast<float>(radius * step));
        for (int row = -radius; row <= radius; ++row) {
            const int otherY = y + row * step;
            if (otherY < 0 || otherY >= height) continue;
            for (int column = -radius; column <= radius; ++column) {
                const int otherX = x + column * step;
                if (otherX < 0 || otherX >= width) continue;
                const std::size_t pixel = At(otherX, otherY);
                const PixelGuide& there = guides[pixel];
                if (!(there.footprint > 0.0f)) continue;
                const float turned = (1.0f - (here.normal | there.normal)) / normalLimit;
                const float off = ((there.position - here.position) | here.normal) * planeScale;
                const float weight = kernel[row + radius] * kernel[column + radius] *
                                     Falloff(turned * turned) * Falloff(off * off);
                if (weight > 0.0f) take(pixel, weight);
            }
        }
    }

    /// Calls `work(x, y)` on all threads, once for each pixel that shows a surface. The phase
    /// checks for cancellation between rows, and counts all rows at the end.
    template <typename Work>
    void ForEach(JobPhase& phase, Work work) const {
        const std::thread::id caller = std::this_thread::get_id();
        tbb::parallel_for(0, height, [&](int y) {
            if (std::this_thread::get_id() == caller) phase.Poll();
            for (int x = 0; x < width; ++x)
                if (guides[At(x, y)].footprint > 0.0f) work(x, y);
        });
        phase.Add(static_cast<uint64_t>(height));
    }

private:
    int width;
    int height;
    const std::vector<PixelGuide>& guides;
};

/// A weighted mean of visibilities and its variance.
struct Mean {
    float sum = 0.0f;
    float weights = 0.0f;
    float variance = 0.0f;

    void Add(float value, float ofVariance, float weight) {
        sum += value * weight;
        weights += weight;
        variance += ofVariance * weight * weight;
    }
    void Store(float& value, float& ofVariance) const {
        if (!(weights > 0.0f)) return;
        value = sum / weights;
        ofVariance = variance / (weights * weights);
    }
};

/// Returns the variance of `mean`, a fraction of unoccluded rays that is estimated from `count`
/// rays.
float BinomialVariance(float mean, float count) {
    return count > 0.0f ? std::max(0.0f, mean * (1.0f - mean)) / count : 0.0f;
}

}  // namespace

void FilterVisibility(int width,
                      int height,
                      const std::vector<PixelGuide>& guides,
                      std::vector<PixelVisibility>& values,
                      JobControl* job) {
    JobPhase phase(
        job, "Smoothing shadows", (1 + std::size(passes)) * static_cast<uint64_t>(height), 1);
    const Field field(width, height, guides);
    std::vector<PixelVisibility> next = values;
    field.ForEach(phase, [&](int x, int y) {
        Mean openness, key;
        field.ForEachAround(x, y, 1, [&](std::size_t pixel, float weight) {
            const PixelVisibility& there = values[pixel];
            openness.Add(there.openness, 0.0f, weight * there.opennessCount);
            key.Add(there.key, 0.0f, weight * there.keyCount);
        });
        PixelVisibility& here = next[field.At(x, y)];
        float mean = here.openness;
        float unused = 0.0f;
        openness.Store(mean, unused);
        here.opennessVariance = BinomialVariance(mean, here.opennessCount);
        mean = here.key;
        key.Store(mean, unused);
        here.keyVariance = BinomialVariance(mean, here.keyCount);
        // None of this pixel's rays were above the horizon, so the neighbours' value is the best
        // estimate.
        if (here.keyCount == 0.0f) here.key = mean;
    });
    values.swap(next);

    for (const int step : passes) {
        field.ForEach(phase, [&](int x, int y) {
            const PixelVisibility& here = values[field.At(x, y)];
            Mean openness, key;
            field.ForEachAround(x, y, step, [&](std::size_t pixel, float weight) {
                const PixelVisibility& there = values[pixel];
                const float opennessStep = there.openness - here.openness;
                const float opennessNoise =
                    noiseLimit * (here.opennessVariance + there.opennessVariance) + minNoise;
                openness.Add(there.openness,
                             there.opennessVariance,
                             weight * there.opennessCount *
                                 Falloff(opennessStep * opennessStep / opennessNoise));
                const float keyStep = there.key - here.key;
                const float keyNoise =
                    noiseLimit * (here.keyVariance + there.keyVariance) + minNoise;
                key.Add(there.key,
                        there.keyVariance,
                        weight * there.keyCount * Falloff(keyStep * keyStep / keyNoise));
            });
            PixelVisibility& result = next[field.At(x, y)];
            result = here;
            openness.Store(result.openness, result.opennessVariance);
            key.Store(result.key, result.keyVariance);
        });
        values.swap(next);
    }
    phase.Finish();
}

}  // namespace trovik
