// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/StrokePath.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

struct Axes {
    Vector right, up, back;
};

Axes AxesOf(const StrokeView& view) {
    const Vector back = (view.eye - view.target).Normalized();
    const Vector right = (view.up & back).Normalized();
    return {right, back & right, back};
}

/// Lays a dab where the path has come far enough from the one before.
class DabSpacer {
public:
    DabSpacer(StrokeLoop& strokeLoop, LevelGeometry& strokeGeometry, const PathOptions& pathOptions)
        : loop(strokeLoop), geometry(strokeGeometry), options(pathOptions) {}

    void Offer(const PickHit& hit, float pressure) {
        Vector world;
        geometry.Place().LocalToWorld(&world, &hit.position, 1.0f);
        // A little less than the spacing will do, or rounding would leave out every other dab.
        const float least = options.radius * options.spacing * 0.999f;
        if (count != 0 && (world - last).Length() < least) return;
        last = world;
        StrokeDab dab;
        dab.hit.mesh = geometry.Bound();
        dab.hit.face = hit.face;
        dab.hit.position = hit.position;
        dab.hit.normal = hit.normal;
        dab.position = world;
        dab.size = options.radius;
        dab.pressure = pressure;
        dab.strength = options.strength(pressure);
        loop.Dab(dab);
        ++count;
        if (options.progress) options.progress();
    }

    unsigned Count() const { return count; }

private:
    StrokeLoop& loop;
    LevelGeometry& geometry;
    const PathOptions& options;
    Vector last;
    unsigned count = 0;
};

/// Calls visit(place, pressure) at the first sample and then every `step` along the path.
template <typename Visit>
void AlongPath(const std::vector<PathSample>& samples, float step, Visit visit) {
    if (samples.empty()) return;
    visit(samples[0].place, samples[0].pressure);
    for (std::size_t i = 1; i < samples.size(); ++i) {
        const PathSample& from = samples[i - 1];
        const PathSample& to = samples[i];
        const float length = (to.place - from.place).Length();
        const auto parts = static_cast<unsigned>(std::max(1.0f, std::ceil(length / step)));
        for (unsigned k = 1; k <= parts; ++k) {
            const float share = static_cast<float>(k) / static_cast<float>(parts);
            visit(from.place + (to.place - from.place) * share,
                  from.pressure + (to.pressure - from.pressure) * share);
        }
    }
}

}  // namespace

Ray StrokeView::Through(float x, float y) const {
    const Axes axes = AxesOf(*this);
    const float tangent = std::tan(verticalFieldOfView * 0.5f * 0.017453293f);
    const auto w = static_cast<float>(width);
    const auto h = static_cast<float>(height);
    const float u = (2.0f * x - w) / h * tangent;
    const float v = (1.0f - 2.0f * y / h) * tangent;
    return {eye, (axes.right * u + axes.up * v - axes.back).Normalized()};
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
    // Finer than a pixel, so that the spacing and not the sampling decides where dabs lie.
    constexpr float step = 0.5f;
    AlongPath(samples, step, [&](const Vector& place, float pressure) {
        const Ray world = view.Through(place.x, place.y);
        Ray local;
        geometry.Place().WorldToLocal(&local.origin, &world.origin, 1.0f);
        geometry.Place().WorldToLocal(&local.direction, &world.direction, 0.0f);
        if (const auto hit = tree.Pick(local)) spacer.Offer(*hit, pressure);
    });
    return spacer.Count();
}

unsigned StrokeAlongSurface(StrokeLoop& loop,
                            LevelGeometry& geometry,
                            const PatchTree& tree,
                            const std::vector<PathSample>& samples,
                            const PathOptions& options) {
    DabSpacer spacer(loop, geometry, options);
    const float step = options.radius * options.spacing * 0.25f;
    AlongPath(samples, step, [&](const Vector& place, float pressure) {
        Vector local;
        geometry.Place().WorldToLocal(&local, &place, 1.0f);
        if (const auto hit = tree.Nearest(local)) spacer.Offer(*hit, pressure);
    });
    return spacer.Count();
}

}  // namespace trovik
