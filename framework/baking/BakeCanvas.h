// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/images/ImageFile.h"
#include "host/Api.h"

#include <array>
#include <cstdint>
#include <vector>

namespace trovik {

class JobControl;

/// A position in a texture tile: u to the right, v upwards, both from 0 to 1.
using TilePoint = std::array<double, 2>;
/// The value of a map at one position; a map with one channel uses only the first number.
using MapValue = std::array<float, 3>;

/// One tile of a map, into which surfaces are rasterised.
///
/// Texel (x, y), with rows counted from the top, covers u from x / width to (x + 1) / width and v
/// from 1 - (y + 1) / height to 1 - y / height. Each texel has a regular grid of samples. If a
/// surface covers any of them, the value of the texel is the mean of its covered samples.
///
/// Positions are rounded to 1/65536 of a texel, and coverage is computed from the signs of integer
/// edge functions; see Pineda: "A Parallel Algorithm for Polygon Rasterization" (1988). A sample on
/// the edge between two triangles therefore belongs to exactly one of them, and seams have no
/// holes. Where surfaces overlap, the first one is kept.
///
/// Memory per texel: 4 bytes, plus 4 per channel, plus 4 if there is padding.
class TROVIK_API BakeCanvas {
public:
    /// The maximum width and height.
    static constexpr std::uint32_t largestSide = 16384;

    struct Options {
        /// Width and height in texels, 1 to largestSide each.
        std::uint32_t width = 1024;
        std::uint32_t height = 1024;
        /// The number of channels: 1 or 3.
        std::uint32_t channels = 3;
        /// Samples per texel in each direction: 1, 2 or 4.
        std::uint32_t samplesPerSide = 2;
        /// Whether values are directions; if so, the value of each texel is normalised.
        bool directions = false;
        /// Padding width: uncovered texels within this distance, in texels, from an island's edge
        /// are filled.
        std::uint32_t padding = 0;
        /// Whether surfaces that cross an edge of the tile wrap around to the opposite edge;
        /// otherwise they are clipped. With this option, quads must lie in the range from -1 to 2
        /// and be no larger than the tile.
        bool repeat = false;
    };
    explicit BakeCanvas(const Options& options);

    /// Rasterises a quad as four triangles around its centre. Values are interpolated linearly over
    /// each triangle; the value at the centre is the mean of the corner values.
    void AddQuad(const std::array<TilePoint, 4>& corners, const std::array<MapValue, 4>& values);
    /// Fills texels near an edge of a surface. An uncovered texel whose centre is within the
    /// padding distance gets the value of the nearest point on such an edge; if several points are
    /// equally near, the first one is used. Call this after all quads have been added.
    void PadEdge(const TilePoint& from,
                 const TilePoint& to,
                 const MapValue& fromValue,
                 const MapValue& toValue);

    struct Counts {
        std::uint64_t covered = 0;
        std::uint64_t padded = 0;
        /// Number of texels that have a sample covered by more than one surface.
        std::uint64_t overlapping = 0;
    };
    /// Finishes the tile. \param neutral  the value of empty texels.
    /// \throw Cancelled.
    FloatImage Finish(const MapValue& neutral, Counts& counts, JobControl* job = nullptr);
    /// Returns whether the last quad covered a sample that was already covered.
    bool LastOverlapped() const { return lastOverlapped; }

private:
    /// A point in units of 1/65536 texel; y points down.
    struct FixedPoint {
        std::int64_t x;
        std::int64_t y;
    };
    FixedPoint Fixed(const TilePoint& point) const;
    void AddTriangle(std::array<FixedPoint, 3> corners, std::array<const MapValue*, 3> values);
    void TakeSample(std::int64_t x, std::int64_t y, const MapValue& value);

    Options options;
    std::int64_t step;
    unsigned stepBits;
    bool lastOverlapped = false;
    /// For each texel, one bit per covered sample, and overlapBit if a sample was covered twice.
    static constexpr std::uint32_t overlapBit = 1u << 31;
    std::vector<std::uint32_t> taken;
    std::vector<float> sums;
    /// For each texel, the squared distance to the edge from which it was filled; empty without
    /// padding.
    std::vector<float> distances;
};

}  // namespace trovik
