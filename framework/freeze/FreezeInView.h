// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/images/ImageFile.h"
#include "framework/picking/PatchTree.h"
#include "framework/strokes/StrokePath.h"
#include "host/Api.h"

#include <functional>
#include <optional>
#include <vector>

namespace trovik {

/// The vertices that an operation in the view affects.
enum class ViewReach : int {
    /// Vertices that the mesh does not occlude.
    Visible,
    /// Vertices whose normal faces the eye.
    Facing,
    /// All vertices in front of the eye.
    Through,
};

/// A viewport position in pixels; (0, 0) is the upper left corner.
struct ViewPoint {
    float x = 0.0f;
    float y = 0.0f;
};

/// Projects a world position to the viewport; empty if the position is not in front of the eye of a
/// perspective view. This is the inverse of StrokeView::Through.
TROVIK_API std::optional<ViewPoint> ProjectToView(const StrokeView& view, const Vector& world);

/// Returns the mask weights of the bound level's vertices, determined by their viewport positions;
/// 0 for vertices that are not reached.
/// \param weightAt  returns 0 to 1 for a viewport position, which may be outside the viewport.
/// Called concurrently on several threads.
/// \param tree  the up-to-date tree of the bound level. Cost: O(vertices); ViewReach::Visible also
/// requires one pick for each vertex with a positive weight.
TROVIK_API std::vector<float> WeightsInView(const LevelGeometry& geometry,
                                            const PatchTree& tree,
                                            const StrokeView& view,
                                            ViewReach reach,
                                            const std::function<float(const ViewPoint&)>& weightAt);

/// A viewport rectangle, which includes its left and upper sides but not its right and lower ones.
/// The two corners may be given in either order.
struct TROVIK_API ViewBox {
    ViewPoint from;
    ViewPoint to;
    bool Holds(const ViewPoint& position) const;
};

/// A closed polygon in the viewport; the last corner is connected to the first. A point is inside
/// if a horizontal ray to the right crosses the polygon an odd number of times (even-odd rule), so
/// a loop within a loop is a hole. See Shimrat: "Algorithm 112: Position of Point Relative to
/// Polygon" (1962).
class TROVIK_API ViewLasso {
public:
    explicit ViewLasso(std::vector<ViewPoint> lassoCorners) : corners(std::move(lassoCorners)) {}
    bool Holds(const ViewPoint& position) const;

private:
    std::vector<ViewPoint> corners;
};

/// An image stretched over a viewport rectangle.
class TROVIK_API ViewImage {
public:
    enum class Channel : int {
        /// 0.2126 red + 0.7152 green + 0.0722 blue (ITU-R BT.709), computed from the values in the
        /// file; for a grey image, the value itself.
        Luminance,
        /// The alpha value; 1 if the image has no alpha channel.
        Alpha,
    };
    /// \param over  the area that the whole image covers.
    ViewImage(const FloatImage& image, Channel channel, bool inverted, const ViewBox& over);
    /// Returns the weight at a position; 0 outside the area. The weight is interpolated bilinearly
    /// between pixel centres and is constant beyond the outermost centres.
    float WeightAt(const ViewPoint& position) const;

private:
    float Pixel(int64_t column, int64_t row) const;

    uint32_t width;
    uint32_t height;
    ViewBox area;
    std::vector<float> values;
};

}  // namespace trovik
