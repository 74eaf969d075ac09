// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/images/ImageFile.h"
#include "host/Api.h"

#include <array>
#include <cstdint>
#include <vector>

namespace trovik {

class JobControl;

/// A place on a tile of the texture, u to the right and v upwards, 0 to 1.
using TilePoint = std::array<double, 2>;
/// What a map holds at one place; a map of one channel uses the first number.
using MapValue = std::array<float, 3>;

/// One tile of a map while surfaces are laid into it.
///
/// Texel (x, y), rows from the top, covers u from x / width to (x + 1) / width and v from
/// 1 - (y + 1) / height to 1 - y / height. Its samples lie on a regular grid inside it, and a texel
/// that any sample of which meets a surface takes the mean of those that do.
///
/// Places are rounded to 1/65536 of a texel and all decisions made in whole numbers, so a sample on
/// the edge of two triangles belongs to exactly one, and no seam leaves a hole. Where surfaces
/// overlap the first one stays.
///
/// Memory: 4 bytes a texel, 4 for each channel, and 4 with padding.
class TROVIK_API BakeCanvas {
public:
    /// The largest width and height.
    static constexpr std::uint32_t largestSide = 16384;

    struct Options {
        /// 1 to largestSide each.
        std::uint32_t width = 1024;
        std::uint32_t height = 1024;
        /// 1 or 3.
        std::uint32_t channels = 3;
        /// Samples of a texel from side to side: 1, 2 or 4.
        std::uint32_t samplesPerSide = 2;
        /// Values are directions: each texel's is normalised.
        bool directions = false;
        /// Distance from a surface's edge, in texels, up to which free texels are filled.
        std::uint32_t padding = 0;
        /// What lies beyond an edge of the tile comes in over the opposite one; otherwise it is cut
        /// off. Quads then lie within -1 to 2 and are at most as large as the tile.
        bool repeat = false;
    };
    explicit BakeCanvas(const Options& options);

    /// Lays four triangles around the middle of a quad: values run linearly over each, and in the
    /// middle they are the mean of the corners.
    void AddQuad(const std::array<TilePoint, 4>& corners, const std::array<MapValue, 4>& values);
    /// Fills texels beside an edge of a surface: a texel that no surface meets takes the value of
    /// the nearest place on any such edge, when its centre is no farther than the padding. Of
    /// places equally near the first stays. To be called when all quads are there.
    void PadEdge(const TilePoint& from,
                 const TilePoint& to,
                 const MapValue& fromValue,
                 const MapValue& toValue);

    struct Counts {
        std::uint64_t covered = 0;
        std::uint64_t padded = 0;
        /// Texels with a sample that more than one surface meets.
        std::uint64_t overlapping = 0;
    };
    /// Ends the work. \param neutral  for texels that hold nothing.
    /// \throw Cancelled.
    FloatImage Finish(const MapValue& neutral, Counts& counts, JobControl* job = nullptr);
    /// Whether the quad that was laid last met a sample that was taken.
    bool LastOverlapped() const { return lastOverlapped; }

private:
    /// In 65536ths of a texel, y downwards.
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
    /// Per texel one bit for each sample that met a surface, and overlapBit.
    static constexpr std::uint32_t overlapBit = 1u << 31;
    std::vector<std::uint32_t> taken;
    std::vector<float> sums;
    /// Per texel the square of the distance to the edge whose value it has; empty without padding.
    std::vector<float> distances;
};

}  // namespace trovik
