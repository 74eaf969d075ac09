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

/// Which vertices an operation through the camera reaches.
enum class ViewReach : int {
    /// Those that nothing of the mesh lies in front of.
    Visible,
    /// Those whose normal points to the eye's side of the surface.
    Facing,
    /// All before the eye.
    Through,
};

/// A place on the viewport in pixels, (0, 0) at its upper left corner.
struct ViewPlace {
    float x = 0.0f;
    float y = 0.0f;
};

/// Where the camera shows a place of the world; nothing for one that does not lie before the eye.
/// The reverse of StrokeView::Through.
TROVIK_API std::optional<ViewPlace> PlaceInView(const StrokeView& view, const Vector& world);

/// Shares of the bound level's vertices by where the camera shows them; 0 for those not reached.
/// \param shareAt  0 to 1, by the place on the viewport; may be asked for places outside. Must
/// allow to be called on several threads.
/// \param tree  of the bound level, up to date.
/// Cost: O(vertices), and for the visible ones a pick for each vertex with a share.
TROVIK_API std::vector<float> SharesInView(const LevelGeometry& geometry,
                                           const PatchTree& tree,
                                           const StrokeView& view,
                                           ViewReach reach,
                                           const std::function<float(const ViewPlace&)>& shareAt);

/// A rectangle of the viewport, its left and upper sides included, the others not. Corners in any
/// order.
struct TROVIK_API ViewBox {
    ViewPlace from;
    ViewPlace to;
    bool Holds(const ViewPlace& place) const;
};

/// A closed line on the viewport; its last corner is joined to the first. Inside is what a line to
/// the right leaves by crossing it an odd number of times, so that a loop within a loop is a hole.
class TROVIK_API ViewLasso {
public:
    explicit ViewLasso(std::vector<ViewPlace> lassoCorners) : corners(std::move(lassoCorners)) {}
    bool Holds(const ViewPlace& place) const;

private:
    std::vector<ViewPlace> corners;
};

/// An image stretched over a rectangle of the viewport.
class TROVIK_API ViewImage {
public:
    enum class Channel : int {
        /// 0.2126 red + 0.7152 green + 0.0722 blue of the numbers as the file has them; of a grey
        /// image its value.
        Luminance,
        /// 1 where the image has none.
        Alpha,
    };
    /// \param over  where the image's borders lie.
    ViewImage(const FloatImage& image, Channel channel, bool inverted, const ViewBox& over);
    /// 0 outside. Between the middles of pixels linear, beyond the outermost ones level.
    float ShareAt(const ViewPlace& place) const;

private:
    float Pixel(int64_t column, int64_t row) const;

    uint32_t width;
    uint32_t height;
    ViewBox area;
    std::vector<float> values;
};

}  // namespace trovik
