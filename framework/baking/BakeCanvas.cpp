// SPDX-License-Identifier: Apache-2.0
#include "framework/baking/BakeCanvas.h"

#include "framework/jobs/JobPhase.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cmath>
#include <limits>
#include <utility>

namespace trovik {

namespace {

constexpr unsigned fixedBits = 16;
constexpr double fixedOne = 65536.0;

/// Divide a value by 2^bits and round the quotient down or up.
std::int64_t Down(std::int64_t value, unsigned bits) { return value >> bits; }
std::int64_t Up(std::int64_t value, unsigned bits) {
    return (value + (std::int64_t{1} << bits) - 1) >> bits;
}

MapValue Mix(const MapValue& a, const MapValue& b, const MapValue& c, const float (&weights)[3]) {
    MapValue mixed;
    for (std::size_t i = 0; i < 3; ++i)
        mixed[i] = (a[i] * weights[0] + b[i] * weights[1]) + c[i] * weights[2];
    return mixed;
}

}  // namespace

BakeCanvas::BakeCanvas(const Options& given)
    : options(given),
      step(static_cast<std::int64_t>(fixedOne) / options.samplesPerSide),
      stepBits(fixedBits - static_cast<unsigned>(std::countr_zero(options.samplesPerSide))),
      taken(std::size_t{options.width} * options.height, 0),
      sums(std::size_t{options.width} * options.height * options.channels, 0.0f) {
    assert(options.width >= 1 && options.width <= largestSide);
    assert(options.height >= 1 && options.height <= largestSide);
    assert(options.channels == 1 || options.channels == 3);
    assert(options.samplesPerSide == 1 || options.samplesPerSide == 2 ||
           options.samplesPerSide == 4);
    if (options.padding > 0) distances.resize(taken.size(), std::numeric_limits<float>::infinity());
}

// Rows are counted from the top. v is rounded first and then converted to a row, so that triangles
// mirrored in v cover mirrored samples. Positions that differ by a whole number of tiles are
// rounded in the same way.
BakeCanvas::FixedPoint BakeCanvas::Fixed(const TilePoint& point) const {
    const auto rounded = [](double part, std::uint32_t size) {
        return static_cast<std::int64_t>(std::floor(part * size * fixedOne + 0.5));
    };
    return {rounded(point[0], options.width),
            (std::int64_t{options.height} << fixedBits) - rounded(point[1], options.height)};
}

void BakeCanvas::AddQuad(const std::array<TilePoint, 4>& corners,
                         const std::array<MapValue, 4>& values) {
    lastOverlapped = false;
    TilePoint middle;
    for (std::size_t i = 0; i < 2; ++i)
        middle[i] = ((corners[0][i] + corners[1][i]) + (corners[2][i] + corners[3][i])) * 0.25;
    MapValue middleValue;
    for (std::size_t i = 0; i < 3; ++i)
        middleValue[i] = ((values[0][i] + values[1][i]) + (values[2][i] + values[3][i])) * 0.25f;
    const FixedPoint centre = Fixed(middle);
    for (std::size_t k = 0; k < 4; ++k) {
        const std::size_t after = (k + 1) & 3u;
        AddTriangle({Fixed(corners[k]), Fixed(corners[after]), centre},
                    {&values[k], &values[after], &middleValue});
    }
}

void BakeCanvas::AddTriangle(std::array<FixedPoint, 3> p, std::array<const MapValue*, 3> values) {
    const auto cross = [](const FixedPoint& a, const FixedPoint& b, const FixedPoint& c) {
        return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
    };
    std::int64_t area = cross(p[0], p[1], p[2]);
    if (area == 0) return;
    if (area < 0) {
        std::swap(p[1], p[2]);
        std::swap(values[1], values[2]);
        area = -area;
    }
    const std::int64_t half = step / 2;
    const auto [lowX, highX] = std::minmax({p[0].x, p[1].x, p[2].x});
    const auto [lowY, highY] = std::minmax({p[0].y, p[1].y, p[2].y});
    const std::int64_t columns = std::int64_t{options.width} * options.samplesPerSide;
    const std::int64_t rows = std::int64_t{options.height} * options.samplesPerSide;
    const auto first = [&](std::int64_t low) {
        const std::int64_t sample = Up(low - half, stepBits);
        return options.repeat ? sample : std::max<std::int64_t>(sample, 0);
    };
    const auto last = [&](std::int64_t high, std::int64_t count) {
        const std::int64_t sample = Down(high - half, stepBits);
        return options.repeat ? sample : std::min(sample, count - 1);
    };
    const std::int64_t firstX = first(lowX);
    const std::int64_t lastX = last(highX, columns);
    const std::int64_t firstY = first(lowY);
    const std::int64_t lastY = last(highY, rows);

    // Edge i is opposite corner i. A sample exactly on an edge belongs to the triangle in which the
    // edge runs downwards or, if it is horizontal, to the left; the adjacent triangle traverses the
    // edge in the opposite direction.
    bool owns[3];
    FixedPoint along[3];
    for (std::size_t i = 0; i < 3; ++i) {
        const FixedPoint& a = p[(i + 1) % 3];
        const FixedPoint& b = p[(i + 2) % 3];
        along[i] = {b.x - a.x, b.y - a.y};
        owns[i] = along[i].y > 0 || (along[i].y == 0 && along[i].x < 0);
    }
    const double fraction = 1.0 / static_cast<double>(area);
    for (std::int64_t y = firstY; y <= lastY; ++y) {
        const FixedPoint start = {firstX * step + half, y * step + half};
        std::int64_t side[3];
        for (std::size_t i = 0; i < 3; ++i) side[i] = cross(p[(i + 1) % 3], p[(i + 2) % 3], start);
        for (std::int64_t x = firstX; x <= lastX; ++x) {
            bool inside = true;
            for (std::size_t i = 0; i < 3; ++i)
                inside = inside && (side[i] > 0 || (side[i] == 0 && owns[i]));
            if (inside) {
                float weights[3];
                for (std::size_t i = 0; i < 3; ++i)
                    weights[i] = static_cast<float>(static_cast<double>(side[i]) * fraction);
                TakeSample(x, y, Mix(*values[0], *values[1], *values[2], weights));
            }
            for (std::size_t i = 0; i < 3; ++i) side[i] -= along[i].y * step;
        }
    }
}

void BakeCanvas::TakeSample(std::int64_t x, std::int64_t y, const MapValue& value) {
    const std::uint64_t n = options.samplesPerSide;
    // Samples lie at most two tiles before the first one, so the sums below are non-negative.
    const std::uint64_t columns = options.width * n;
    const std::uint64_t rows = options.height * n;
    const std::uint64_t column = (static_cast<std::uint64_t>(x) + 2 * columns) % columns;
    const std::uint64_t row = (static_cast<std::uint64_t>(y) + 2 * rows) % rows;
    const std::size_t texel = (row / n) * options.width + column / n;
    const std::uint32_t bit = 1u << ((row % n) * n + column % n);
    if ((taken[texel] & bit) != 0) {
        taken[texel] |= overlapBit;
        lastOverlapped = true;
        return;
    }
    taken[texel] |= bit;
    for (std::size_t i = 0; i < options.channels; ++i)
        sums[texel * options.channels + i] += value[i];
}

void BakeCanvas::PadEdge(const TilePoint& from,
                         const TilePoint& to,
                         const MapValue& fromValue,
                         const MapValue& toValue) {
    if (distances.empty()) return;
    const auto width = static_cast<double>(options.width);
    const auto height = static_cast<double>(options.height);
    const double reach = options.padding;
    const double ax = from[0] * width;
    const double ay = (1.0 - from[1]) * height;
    const double dx = to[0] * width - ax;
    const double dy = (1.0 - to[1]) * height - ay;
    const double square = dx * dx + dy * dy;
    const bool repeat = options.repeat;
    const auto first = [reach, repeat](double a, double d) {
        const double texel = std::ceil(std::min(a, a + d) - reach - 0.5);
        return repeat ? texel : std::max(0.0, texel);
    };
    const auto last = [reach, repeat](double a, double d, double size) {
        const double texel = std::floor(std::max(a, a + d) + reach - 0.5);
        return repeat ? texel : std::min(size - 1.0, texel);
    };
    const auto inside = [repeat](double texel, double size) {
        return static_cast<std::size_t>(repeat ? texel - std::floor(texel / size) * size : texel);
    };
    // The loop counters are whole numbers stored as doubles, because tiled coordinates may exceed
    // the range of integers.
    // NOLINTNEXTLINE(clang-analyzer-security.FloatLoopCounter)
    for (double y = first(ay, dy); y <= last(ay, dy, height); y += 1.0) {
        // NOLINTNEXTLINE(clang-analyzer-security.FloatLoopCounter)
        for (double x = first(ax, dx); x <= last(ax, dx, width); x += 1.0) {
            const std::size_t texel = inside(y, height) * options.width + inside(x, width);
            if (taken[texel] != 0) continue;
            const double px = x + 0.5 - ax;
            const double py = y + 0.5 - ay;
            const double t =
                square > 0.0 ? std::clamp((px * dx + py * dy) / square, 0.0, 1.0) : 0.0;
            const double ex = px - t * dx;
            const double ey = py - t * dy;
            const double distance = ex * ex + ey * ey;
            if (distance > reach * reach || static_cast<float>(distance) >= distances[texel])
                continue;
            distances[texel] = static_cast<float>(distance);
            const auto fraction = static_cast<float>(t);
            for (std::size_t i = 0; i < options.channels; ++i)
                sums[texel * options.channels + i] =
                    fromValue[i] * (1.0f - fraction) + toValue[i] * fraction;
        }
    }
}

FloatImage BakeCanvas::Finish(const MapValue& neutral, Counts& counts, JobControl* job) {
    JobPhase phase(job, "Averaging texels", taken.size());
    FloatImage image;
    image.width = options.width;
    image.height = options.height;
    image.channels = options.channels;
    image.isFloat = true;
    const std::size_t channels = options.channels;
    for (std::size_t texel = 0; texel < taken.size(); ++texel) {
        phase.Add();
        float* values = sums.data() + texel * channels;
        const int samples = std::popcount(taken[texel] & ~overlapBit);
        const bool padded = !distances.empty() && samples == 0 &&
                            distances[texel] < std::numeric_limits<float>::infinity();
        if (samples == 0 && !padded) {
            std::copy_n(neutral.begin(), channels, values);
            continue;
        }
        counts.covered += samples > 0 ? 1u : 0u;
        counts.padded += padded ? 1u : 0u;
        counts.overlapping += (taken[texel] & overlapBit) != 0 ? 1u : 0u;
        if (options.directions) {
            const float length =
                std::sqrt((values[0] * values[0] + values[1] * values[1]) + values[2] * values[2]);
            const float fraction = length > 0.0f ? 1.0f / length : 0.0f;
            for (std::size_t i = 0; i < channels; ++i) values[i] *= fraction;
        } else if (samples > 1) {
            const auto count = static_cast<float>(samples);
            for (std::size_t i = 0; i < channels; ++i) values[i] /= count;
        }
    }
    phase.Finish();
    image.pixels = std::move(sums);
    return image;
}

}  // namespace trovik
