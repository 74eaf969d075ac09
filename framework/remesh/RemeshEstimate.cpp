// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/RemeshEstimate.h"

#include "framework/picking/TriangleQueries.h"
#include "framework/tessellation/EdgeOperations.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

/// The area of a triangle of a remeshed surface, as a fraction of that of an equilateral triangle
/// with the target length.
constexpr double relativeArea = 1.04;
constexpr double areaOfUnitLength = relativeArea * 0.43301270189;

/// Calls `keep()` for each triangle whose vertices are all masked, and `take(triangle)`, with
/// mesh-local positions, for the others.
template <typename Keep, typename Take>
void ForEachTriangle(SourceSurface& source, const Keep& keep, const Take& take) {
    const LevelMesh& level = source.Level();
    const std::vector<uint32_t> triangles = TrianglesOf(level);
    for (std::size_t i = 0; i < triangles.size(); i += 3) {
        const uint32_t* v = &triangles[i];
        if (std::all_of(v, v + 3, [&](uint32_t at) { return level.Freeze(at) >= keptMaskAmount; }))
            keep();
        else
            take(Triangle3d{ToDouble(level.Position(v[0])),
                            ToDouble(level.Position(v[1])),
                            ToDouble(level.Position(v[2]))});
    }
}

/// Huge counts become 10^18, which is more than any limit.
uint64_t WholeCount(double count) {
    constexpr double limit = 1e18;
    return count < limit ? static_cast<uint64_t>(count) : static_cast<uint64_t>(limit);
}

/// The number of parts into which a triangle is split at its longest edges.
double PartsOf(const Triangle3d& triangle, double length, double longestLeft) {
    const double area = AreaOf(triangle);
    const double longest = LongestEdgeOf(triangle);
    const double ratio = longest / longestLeft;
    if (!(ratio > 1.0)) return 1.0;
    // The last halving splits some of the edges only.
    const double halvings = std::log2(ratio) + 0.25;
    // As long as the shortest edge is much shorter than the two others, halving these gives three
    // thin faces; later, halving all edges gives four.
    const double height = 2.0 * area / longest;
    const double thinHalvings =
        height > 0.0 ? std::clamp(std::log2(longest / height) - 1.25, 0.0, halvings) : halvings;
    const double parts = std::pow(3.0, thinHalvings) * std::pow(4.0, halvings - thinHalvings);
    return std::max(parts, area / (areaOfUnitLength * length * length));
}

}  // namespace

uint64_t RemeshEstimate::FacesFor(float edgeLength) const {
    const double length = static_cast<double>(edgeLength);
    return keptFaces + WholeCount(freeArea / (areaOfUnitLength * length * length));
}

float RemeshEstimate::LengthFor(uint64_t faces) const {
    const uint64_t changed = std::max<uint64_t>(faces > keptFaces ? faces - keptFaces : 0, 4);
    return static_cast<float>(
        std::sqrt(freeArea / (areaOfUnitLength * static_cast<double>(changed))));
}

RemeshEstimate EstimateRemesh(SourceSurface& source) {
    RemeshEstimate estimate;
    ForEachTriangle(
        source,
        [&] { ++estimate.keptFaces; },
        [&](const Triangle3d& triangle) { estimate.freeArea += AreaOf(triangle); });
    const double scale = 1.0 / static_cast<double>(source.LocalLength(1.0f));
    estimate.freeArea *= scale * scale;
    return estimate;
}

uint64_t FacesWhileSplitting(SourceSurface& source, float edgeLength) {
    const float local = source.LocalLength(edgeLength);
    const double length = static_cast<double>(local);
    const double longestLeft = static_cast<double>(EdgeLengths(local).longest);
    double count = 0.0;
    ForEachTriangle(
        source,
        [&] { count += 1.0; },
        [&](const Triangle3d& triangle) { count += PartsOf(triangle, length, longestLeft); });
    return WholeCount(count);
}

}  // namespace trovik
