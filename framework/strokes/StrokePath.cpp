// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/StrokePath.h"

#include "framework/mesh/SurfaceNormal.h"
#include "framework/strokes/DabAtHit.h"
#include "framework/strokes/PathSteps.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

constexpr float radiansPerDegree = 0.017453293f;
/// Distance from a mesh to the camera that brushes use in orthographic projection, as a multiple of
/// the distance from the eye to the target. Directions to the camera then deviate by no more than
/// the rounding error of a unit vector.
constexpr float brushCameraFactor = 16777216.0f;
/// Limit of that distance, in world units: the squares of its components must be finite.
constexpr float maxBrushCameraDistance = 1e18f;

struct Axes {
    Vector right, up, back;
};

Axes AxesOf(const StrokeView& view) {
    const Vector back = (view.eye - view.target).Normalized();
    const Vector right = (view.up & back).Normalized();
    return {right, back & right, back};
}

/// Applies a dab where the path is far enough from the previous dab.
class DabSpacer {
public:
    DabSpacer(StrokeLoop& strokeLoop, LevelGeometry& strokeGeometry, const PathOptions& pathOptions)
        : loop(strokeLoop), geometry(strokeGeometry), options(pathOptions) {}

    /// Whether a dab is due at a hit.
    bool IsDue(const PickHit& hit) const {
        // Without this tolerance, rounding could cause every other dab to be skipped.
        return count == 0 || (WorldPositionOf(geometry, hit) - last).Length() >= distance * 0.9999f;
    }

    void ApplyDabAt(const PickHit& hit, float pressure, const Vector& heading) {
        StrokeDab dab = DabAt(geometry, hit);
        dab.size = options.radius;
        dab.pressure = pressure;
        dab.strength = options.strength(pressure);
        dab.heading = heading;
        last = dab.position;
        loop.Dab(dab);
        ++count;
        // The minimum distance ensures that following the path always terminates.
        distance = std::max(loop.Spacing(options.radius, options.spacing), options.radius * 1e-3f);
        if (options.progress) options.progress();
    }

    unsigned Count() const { return count; }

private:
    StrokeLoop& loop;
    LevelGeometry& geometry;
    const PathOptions& options;
    Vector last;
    float distance = 0.0f;
    unsigned count = 0;
};

/// A position on the path.
struct PathPosition {
    Vector position;
    float pressure;
};

PathPosition Between(const PathSample& from, const PathSample& to, float fraction) {
    return {from.position + (to.position - from.position) * fraction,
            from.pressure + (to.pressure - from.pressure) * fraction};
}

/// Number of times a step is bisected to find the position at which a dab is due; the result is
/// accurate to about a thousandth of a step.
constexpr int halvings = 10;

/// Follows the path from sample to sample in steps of at most `step`. `probe(position)` returns the
/// hit there; `heading(hit, along)` converts the direction of a segment to the direction of the
/// stroke on the surface. If a step overshoots, the position within it at which the dab is due is
/// found by bisection.
template <typename Probe, typename Heading>
void ApplyDabsAlong(const std::vector<PathSample>& samples,
                    float step,
                    PathSteps steps,
                    DabSpacer& spacer,
                    Probe probe,
                    Heading heading) {
    if (samples.empty()) return;
    for (const PathSample& sample : samples) steps.Add(sample);
    Vector along;
    for (std::size_t i = 1; i < samples.size() && along == Vector(); ++i)
        along = samples[i].position - samples[0].position;
    std::optional<PickHit> before = probe(samples[0].position);
    if (before) spacer.ApplyDabAt(*before, samples[0].pressure, heading(*before, along));

    for (std::size_t i = 1; i < samples.size(); ++i) {
        const PathSample& from = samples[i - 1];
        const PathSample& to = samples[i];
        const float length = (to.position - from.position).Length();
        if (length != 0.0f) along = to.position - from.position;
        const auto parts = static_cast<unsigned>(std::max(1.0f, std::ceil(length / step)));
        float reached = 0.0f;
        for (unsigned k = 1; k <= parts; ++k) {
            steps.Take();
            const float fraction = static_cast<float>(k) / static_cast<float>(parts);
            std::optional<PickHit> hit = probe(Between(from, to, fraction).position);
            while (hit && spacer.IsDue(*hit)) {
                steps.Take();
                float near = reached;
                float far = fraction;
                PickHit due = *hit;
                // If the path has just returned to the mesh, there is no previous hit from which to
                // measure.
                for (int n = 0; before && n < halvings; ++n) {
                    const float middle = (near + far) * 0.5f;
                    const auto there = probe(Between(from, to, middle).position);
                    if (there && spacer.IsDue(*there)) {
                        far = middle;
                        due = *there;
                    } else {
                        near = middle;
                    }
                }
                spacer.ApplyDabAt(due, Between(from, to, far).pressure, heading(due, along));
                before = due;
                if (far == fraction) break;
                reached = far;
                hit = probe(Between(from, to, fraction).position);
            }
            before = hit;
            reached = fraction;
        }
    }
}

}  // namespace

Ray StrokeView::Through(float x, float y) const {
    const Axes axes = AxesOf(*this);
    const float tangent = std::tan(verticalFieldOfView * 0.5f * radiansPerDegree);
    const auto w = static_cast<float>(width);
    const auto h = static_cast<float>(height);
    const float u = (2.0f * x - w) / h * tangent;
    const float v = (1.0f - 2.0f * y / h) * tangent;
    if (isOrthographic) {
        const float distance = (eye - target).Length();
        return {eye + axes.right * (u * distance) + axes.up * (v * distance), -axes.back};
    }
    return {eye, (axes.right * u + axes.up * v - axes.back).Normalized()};
}

Ray StrokeView::LocalThrough(float x,
                             float y,
                             const LevelGeometry& geometry,
                             const PatchTree& tree) const {
    const Ray world = Through(x, y);
    Ray local;
    geometry.Transform().WorldToLocal(&local.origin, &world.origin, 1.0f);
    geometry.Transform().WorldToLocal(&local.direction, &world.direction, 0.0f);
    return isOrthographic ? StartingBefore(local, tree.Bounds()) : local;
}

Vector StrokeView::PointAtDepthOf(const Vector& depth, const Vector& position) const {
    const Vector forward = (target - eye).Normalized();
    const Ray ray = Through(position.x, position.y);
    const float t = ((depth - ray.origin) | forward) / (ray.direction | forward);
    return ray.origin + ray.direction * t;
}

Vector StrokeView::SightTo(const Vector& position) const {
    return isOrthographic ? target - eye : position - eye;
}

float StrokeView::PixelSizeAt(const Vector& position) const {
    const Vector forward = (target - eye).Normalized();
    const float depth = ((isOrthographic ? target : position) - eye) | forward;
    const float tangent = std::tan(verticalFieldOfView * 0.5f * radiansPerDegree);
    return std::fabs(depth) * tangent * 2.0f / static_cast<float>(height);
}

Matrix StrokeView::BrushCameraToWorld() const {
    Matrix matrix = ToWorld();
    if (!isOrthographic) return matrix;
    const Vector back = (eye - target).Normalized();
    const float distance =
        std::min((eye - target).Length() * brushCameraFactor, maxBrushCameraDistance);
    const Vector far = target + back * distance;
    matrix.m[3][0] = far.x;
    matrix.m[3][1] = far.y;
    matrix.m[3][2] = far.z;
    return matrix;
}

// The corners are projected onto the line in double precision, because the origin can be far away.
Ray StartingBefore(const Ray& ray, const AxisAlignedBoundingBox& box) {
    const double direction[3] = {ray.direction.x, ray.direction.y, ray.direction.z};
    const double origin[3] = {ray.origin.x, ray.origin.y, ray.origin.z};
    const double low[3] = {box.minX, box.minY, box.minZ};
    const double high[3] = {box.maxX, box.maxY, box.maxZ};
    double square = 0.0;
    double nearest = 0.0;
    double farthest = 0.0;
    for (int axis = 0; axis < 3; ++axis) {
        const double d = direction[axis];
        square += d * d;
        nearest += ((d > 0.0 ? low : high)[axis] - origin[axis]) * d;
        farthest += ((d > 0.0 ? high : low)[axis] - origin[axis]) * d;
    }
    // Rounding must not move the nearest corner behind the ray's new origin.
    const double t = (nearest - (farthest - nearest) * 1e-3) / square;
    if (box.IsEmpty() || !std::isfinite(t)) return ray;
    Ray moved = ray;
    moved.origin = {static_cast<float>(origin[0] + direction[0] * t),
                    static_cast<float>(origin[1] + direction[1] * t),
                    static_cast<float>(origin[2] + direction[2] * t)};
    return moved;
}

Matrix StrokeView::ToWorld() const {
    const Axes axes = AxesOf(*this);
    Matrix matrix;
    const Vector rows[4] = {axes.right, axes.up, axes.back, eye};
    for (int r = 0; r < 4; ++r) {
        matrix.m[r][0] = rows[r].x;
        matrix.m[r][1] = rows[r].y;
        matrix.m[r][2] = rows[r].z;
    }
    return matrix;
}

unsigned StrokeAlongView(StrokeLoop& loop,
                         LevelGeometry& geometry,
                         const PatchTree& tree,
                         const StrokeView& view,
                         const std::vector<PathSample>& samples,
                         const PathOptions& options) {
    DabSpacer spacer(loop, geometry, options);
    // Finer than a pixel, so that dab positions depend on the spacing and not on the sampling.
    constexpr float step = 0.5f;
    ApplyDabsAlong(
        samples,
        step,
        PathSteps(geometry, tree, view, PathSpace::View, options),
        spacer,
        [&](const Vector& position) { return HitThrough(geometry, tree, view, position); },
        [&](const PickHit& hit, const Vector& along) {
            return HeadingInView(geometry, view, hit, along);
        });
    return spacer.Count();
}

unsigned StrokeAlongSurface(StrokeLoop& loop,
                            LevelGeometry& geometry,
                            const PatchTree& tree,
                            const std::vector<PathSample>& samples,
                            const PathOptions& options) {
    DabSpacer spacer(loop, geometry, options);
    const float step = options.radius * std::min(options.spacing, 1.0f) * 0.25f;
    ApplyDabsAlong(
        samples,
        step,
        PathSteps(geometry, tree, {}, PathSpace::Surface, options),
        spacer,
        [&](const Vector& position) { return HitNear(geometry, tree, position); },
        [](const PickHit&, const Vector& along) { return along; });
    return spacer.Count();
}

std::optional<PickHit> HitThrough(const LevelGeometry& geometry,
                                  const PatchTree& tree,
                                  const StrokeView& view,
                                  const Vector& position) {
    return tree.Pick(view.LocalThrough(position.x, position.y, geometry, tree));
}

std::optional<PickHit> HitNear(const LevelGeometry& geometry,
                               const PatchTree& tree,
                               const Vector& position) {
    Vector local;
    geometry.Transform().WorldToLocal(&local, &position, 1.0f);
    return tree.Nearest(local);
}

// Projects the motion in the view plane along the line of sight onto the surface. If the surface is
// seen nearly edge-on, returns the motion unchanged.
Vector HeadingInView(const LevelGeometry& geometry,
                     const StrokeView& view,
                     const PickHit& hit,
                     const Vector& along) {
    const Axes axes = AxesOf(view);
    const Vector motion = axes.right * along.x - axes.up * along.y;
    const Vector normal = WorldNormal(geometry.Transform(), hit.normal);
    const Vector sight = view.SightTo(WorldPositionOf(geometry, hit)).Normalized();
    const float facing = sight | normal;
    constexpr float minFacing = 0.05f;
    if (std::fabs(facing) < minFacing) return motion;
    return motion - sight * ((motion | normal) / facing);
}

}  // namespace trovik
