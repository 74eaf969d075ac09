// SPDX-License-Identifier: Apache-2.0
#include "tools/stamps/LatticeNoise.h"
#include "tools/stamps/ShippedStamps.h"
#include "tools/stamps/StampPainting.h"

#include <vector>

namespace trovik::stamps {

namespace {

constexpr int NoisePeriod = 4096;

/// A facet of a stone: the height at the centre is `height` and decreases by `slope` along
/// `heading`.
struct Facet {
    Point2 heading;
    double slope;
    double height;
};

/// A broken stone: the volume below all its facets.
struct Stone {
    Point2 centre;
    double size;
    double base;
    std::uint32_t seed;
    std::vector<Facet> facets;
};

Stone MakeStone(Point2 centre, double size, double base, std::uint32_t seed) {
    Stone stone{centre, size, base, seed, {}};
    RandomSequence numbers(seed);
    const double turn = numbers.Next();
    // Steep facets all around, then a few flat ones on top.
    const int flanks = 5 + static_cast<int>(numbers.Next() * 4.0);
    for (int i = 0; i < flanks; ++i) {
        const double angle = turn + (i + numbers.Between(-0.28, 0.28)) / flanks;
        const double slope = numbers.Between(1.5, 3.6);
        const double reach = size * numbers.Between(0.62, 1.0);
        stone.facets.push_back({Heading(angle), slope, reach * slope});
    }
    const int flats = 3 + static_cast<int>(numbers.Next() * 3.0);
    for (int i = 0; i < flats; ++i) {
        const double angle = turn + (i + numbers.Between(-0.35, 0.35)) / flats;
        const double slope = numbers.Between(0.22, 0.85);
        stone.facets.push_back({Heading(angle), slope, size * numbers.Between(0.55, 0.85)});
    }
    stone.facets.push_back(
        {Heading(numbers.Next()), numbers.Between(0.0, 0.25), size * numbers.Between(0.50, 0.72)});
    return stone;
}

/// Returns the height of the stone at a point, in units of the stamp's side. If the stone is lower
/// than `floor` there, the result is an arbitrary value below `floor`.
double StoneHeight(const Stone& stone, Point2 point, double floor) {
    const Point2 straight = point - stone.centre;
    const double size = stone.size;
    const auto top = [&stone](const Facet& facet, Point2 p) {
        return facet.height - facet.slope * Dot(facet.heading, p);
    };
    // Rejects most stones early: the noise that is added below is less than `lift`.
    const double lift = stone.base + 0.35 * size;
    for (const Facet& facet : stone.facets)
        if (top(facet, straight) + lift < floor) return floor - 1.0;

    const Point2 unit = straight * (1.0 / size);
    const Point2 p = straight + Point2{LayeredNoise(unit * 1.7, NoisePeriod, 3, stone.seed + 1u),
                                       LayeredNoise(unit * 1.7, NoisePeriod, 3, stone.seed + 2u)} *
                                    (0.07 * size);
    double height = size;
    for (const Facet& facet : stone.facets) height = SmoothMin(height, top(facet, p), 0.055 * size);
    height += 0.030 * size * LayeredNoise(unit * 4.0, NoisePeriod, 4, stone.seed + 3u);
    return stone.base + height;
}

/// A size class of stones.
struct Tier {
    int count;
    double smallest;
    double largest;
    /// Largest distance from the centre of the heap.
    double reach;
    /// Minimum distance between two stones, relative to the sum of their sizes.
    double apart;
    /// Height of the heap under the stones.
    double lift;
};

std::vector<Stone> Heap() {
    constexpr Tier tiers[] = {{7, 0.095, 0.135, 0.20, 0.72, 0.050},
                              {22, 0.050, 0.078, 0.31, 0.78, 0.075},
                              {75, 0.022, 0.040, 0.385, 0.85, 0.060},
                              {260, 0.007, 0.016, 0.445, 1.0, 0.0}};
    std::vector<Stone> stones;
    RandomSequence numbers(2718u);
    for (const Tier& tier : tiers) {
        const std::size_t first = stones.size();
        // If a random position is occupied, another one is drawn. If not all stones of a tier fit,
        // the tier has fewer stones.
        for (int thrown = 0; thrown < tier.count * 40; ++thrown) {
            if (stones.size() - first == static_cast<std::size_t>(tier.count)) break;
            const double size = numbers.Between(tier.smallest, tier.largest);
            const Point2 heading = Heading(numbers.Next());
            const double far = tier.reach * std::sqrt(numbers.Next());
            const auto seed = static_cast<std::uint32_t>(numbers.Next() * 4294967295.0);
            const Point2 centre = Point2{0.5, 0.5} + heading * far;
            bool isFree = true;
            for (std::size_t i = first; i < stones.size() && isFree; ++i)
                isFree = Length(stones[i].centre - centre) >= tier.apart * (stones[i].size + size);
            if (!isFree) continue;
            const double base = tier.lift * SmoothStep(0.36, 0.05, far);
            stones.push_back(MakeStone(centre, size, base, seed));
        }
    }
    return stones;
}

}  // namespace

FloatImage PaintRubble() {
    constexpr std::uint32_t size = 1024;
    constexpr std::uint32_t cells = 16;
    const std::vector<Stone> stones = Heap();
    // The stones that may overlap each cell of the image.
    std::vector<std::vector<const Stone*>> near(cells * cells);
    for (std::uint32_t cell = 0; cell < cells * cells; ++cell) {
        const std::uint32_t row = cell / cells;
        const Point2 middle{(cell % cells + 0.5) / cells, (row + 0.5) / cells};
        for (const Stone& stone : stones)
            if (Length(stone.centre - middle) < 1.6 * stone.size + stone.base + 0.75 / cells)
                near[cell].push_back(&stone);
    }
    FloatImage image = PaintHeights(size, 2, [&near](Point2 p) {
        const auto column = static_cast<std::uint32_t>(p.x * cells);
        const auto row = static_cast<std::uint32_t>(p.y * cells);
        // Earth between the stones.
        const double far = Length(p - Point2{0.5, 0.5});
        const double fade = SmoothStep(0.46, 0.16, far);
        double height = fade * (0.045 + 0.012 * LayeredNoise(p * 40.0, NoisePeriod, 4, 5u)) * fade;
        constexpr double crease = 0.0015;
        for (const Stone* stone : near[row * cells + column]) {
            const double top = StoneHeight(*stone, p, height - crease);
            if (top > height - crease) height = SmoothMax(height, top, crease);
        }
        return height * SmoothStep(0.495, 0.470, far);
    });
    const float highest = *std::max_element(image.pixels.begin(), image.pixels.end());
    for (float& value : image.pixels) value = value / highest;
    return image;
}

}  // namespace trovik::stamps
