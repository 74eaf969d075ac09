// SPDX-License-Identifier: Apache-2.0
#include "framework/freeze/FreezeInView.h"

#include "framework/freeze/BilinearValue.h"
#include "framework/mesh/SurfaceNormal.h"
#include "framework/threads/WorkerThreads.h"

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

/// Tolerance of the visibility test, as a fraction of the distance from the eye to the vertex. A
/// vertex is hidden only if the surface is hit at least this far in front of it, because rounding
/// can place a hit on the vertex's own faces slightly in front of it.
constexpr float sightTolerance = 1e-4f;

/// A viewport's camera, prepared for projecting many positions.
class Projection {
public:
    explicit Projection(const StrokeView& view)
        : camera(view.ToWorld()),
          eye(view.eye),
          distance(view.isOrthographic ? (view.eye - view.target).Length() : 0.0f),
          width(static_cast<float>(view.width)),
          height(static_cast<float>(view.height)),
          tangent(std::tan(view.verticalFieldOfView * 0.5f * 0.017453293f)) {}

    std::optional<ViewPoint> Place(const Vector& world) const {
        const Vector way = world - eye;
        const auto along = [&](int row) {
            return (camera.m[row][0] * way.x + camera.m[row][1] * way.y) + camera.m[row][2] * way.z;
        };
        const float depth = distance > 0.0f ? distance : -along(2);
        if (!(depth > 0.0f)) return std::nullopt;
        const float u = along(0) / depth / tangent;
        const float v = along(1) / depth / tangent;
        return ViewPoint{(u * height + width) * 0.5f, (1.0f - v) * height * 0.5f};
    }

private:
    Matrix camera;
    Vector eye;
    /// The depth used for all positions in orthographic projection; 0 in perspective projection.
    float distance;
    float width;
    float height;
    float tangent;
};

/// Visibility tests between vertices and the eye, in mesh-local space.
class Sight {
public:
    Sight(const LevelGeometry& geometry, const PatchTree& patchTree, const StrokeView& view)
        : level(*geometry.Bound()),
          tree(patchTree),
          bounds(patchTree.Bounds()),
          isOrthographic(view.isOrthographic) {
        geometry.Transform().WorldToLocal(&eye, &view.eye, 1.0f);
        const Vector sight = view.target - view.eye;
        geometry.Transform().WorldToLocal(&forward, &sight, 0.0f);
    }

    bool Reaches(uint32_t vertex, ViewReach reach) const {
        switch (reach) {
            case ViewReach::Through:
                return true;
            case ViewReach::Facing:
                return IsFacing(vertex);
            case ViewReach::Visible:
                return IsVisible(vertex);
        }
        return false;
    }

private:
    // The sign of the dot product of a normal and a vector is invariant under any transformation.
    bool IsFacing(uint32_t vertex) const {
        const Vector normal = Unpacked(level.vertexNormals.array[vertex]);
        const Vector toEye = isOrthographic ? -forward : eye - level.Position(vertex);
        return (toEye | normal) > 0.0f;
    }
    bool IsVisible(uint32_t vertex) const {
        const Vector position = level.Position(vertex);
        const Vector from =
            isOrthographic ? StartingBefore({position, forward}, bounds).origin : eye;
        const auto hit = tree.Pick({from, position - from, 1.0f});
        return !hit || hit->t >= 1.0f - sightTolerance || level.CornerOf(hit->face, vertex) >= 0;
    }

    const LevelMesh& level;
    const PatchTree& tree;
    AxisAlignedBoundingBox bounds;
    bool isOrthographic;
    Vector eye;
    Vector forward;
};

}  // namespace

std::optional<ViewPoint> ProjectToView(const StrokeView& view, const Vector& world) {
    return Projection(view).Place(world);
}

std::vector<float> WeightsInView(const LevelGeometry& geometry,
                                 const PatchTree& tree,
                                 const StrokeView& view,
                                 ViewReach reach,
                                 const std::function<float(const ViewPoint&)>& weightAt) {
    const LevelMesh& level = *geometry.Bound();
    const Projection projection(view);
    const Sight sight(geometry, tree, view);
    const Matrix& toWorld = geometry.Transform().ToWorld();
    std::vector<float> weights(level.VertexCount(), 0.0f);
    LimitWorkerThreads();
    const tbb::blocked_range<uint32_t> all(0, level.VertexCount(), 4096);
    tbb::parallel_for(all, [&](const tbb::blocked_range<uint32_t>& some) {
        for (uint32_t v = some.begin(); v != some.end(); ++v) {
            const auto point = projection.Place(toWorld.AffineTransform(level.Position(v), 1.0f));
            if (!point) continue;
            const float weight = weightAt(*point);
            if (weight > 0.0f && sight.Reaches(v, reach)) weights[v] = weight;
        }
    });
    return weights;
}

bool ViewBox::Holds(const ViewPoint& point) const {
    return point.x >= std::min(from.x, to.x) && point.x < std::max(from.x, to.x) &&
           point.y >= std::min(from.y, to.y) && point.y < std::max(from.y, to.y);
}

// A side includes its upper end but not its lower end, so that a corner at the same height as the
// position is counted only once.
bool ViewLasso::Holds(const ViewPoint& point) const {
    bool inside = false;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const ViewPoint& a = corners[i];
        const ViewPoint& b = corners[(i + 1) % corners.size()];
        if ((a.y <= point.y) == (b.y <= point.y)) continue;
        if (point.x < a.x + (point.y - a.y) / (b.y - a.y) * (b.x - a.x)) inside = !inside;
    }
    return inside;
}

ViewImage::ViewImage(const FloatImage& image, Channel channel, bool inverted, const ViewBox& over)
    : width(image.width), height(image.height), area(over) {
    const std::size_t count = std::size_t{width} * height;
    const bool isColour = image.channels >= 3;
    const uint32_t alphaAt = isColour ? 3 : 1;
    values.resize(count, 1.0f);
    for (std::size_t i = 0; i < count; ++i) {
        const float* pixel = image.pixels.data() + i * image.channels;
        if (channel == Channel::Luminance) {
            values[i] = isColour ? (0.2126f * pixel[0] + 0.7152f * pixel[1]) + 0.0722f * pixel[2]
                                 : pixel[0];
        } else if (alphaAt < image.channels) {
            values[i] = pixel[alphaAt];
        }
        values[i] = std::clamp(values[i], 0.0f, 1.0f);
        if (inverted) values[i] = 1.0f - values[i];
    }
}

float ViewImage::Pixel(int64_t column, int64_t row) const {
    const int64_t x = std::clamp(column, int64_t{0}, int64_t{width} - 1);
    const int64_t y = std::clamp(row, int64_t{0}, int64_t{height} - 1);
    return values[static_cast<std::size_t>(y) * width + static_cast<std::size_t>(x)];
}

float ViewImage::WeightAt(const ViewPoint& point) const {
    if (!area.Holds(point) || values.empty()) return 0.0f;
    const float left = std::min(area.from.x, area.to.x);
    const float top = std::min(area.from.y, area.to.y);
    const float spanX = std::max(area.from.x, area.to.x) - left;
    const float spanY = std::max(area.from.y, area.to.y) - top;
    const float u = (point.x - left) / spanX * static_cast<float>(width) - 0.5f;
    const float v = (point.y - top) / spanY * static_cast<float>(height) - 0.5f;
    return BilinearValue(u, v, [this](int64_t column, int64_t row) { return Pixel(column, row); });
}

}  // namespace trovik
