// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/PathSteps.h"

#include "framework/math/IsFinite.h"
#include "framework/strokes/DabAtHit.h"
#include "framework/strokes/PathDabs.h"
#include "framework/strokes/PathHit.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace trovik {

namespace {

constexpr double viewStep = 0.5;

std::string Text(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", number);
    return text;
}

std::string Text(const Vector& position, PathSpace space) {
    std::string text = "[" + Text(position.x) + ", " + Text(position.y);
    if (space == PathSpace::Surface) text += ", " + Text(position.z);
    return text + "]";
}

double Distance(const Vector& a, const Vector& b) {
    const double x = static_cast<double>(b.x) - a.x;
    const double y = static_cast<double>(b.y) - a.y;
    const double z = static_cast<double>(b.z) - a.z;
    return std::sqrt((x * x + y * y) + z * z);
}

bool IsTooLong(double length, double step) {
    // A path with a zero step or a NaN length also counts as too long.
    return length != 0.0 && !(length / step <= maxPathSteps);
}

std::string Whole(double number) { return std::to_string(static_cast<long long>(number)); }

std::string TooMany(double steps, const std::string& kind) {
    return Text(steps) + " steps of " + kind + "; the maximum for a stroke is " +
           Whole(maxPathSteps);
}

}  // namespace

void CheckSpacing(float spacing) {
    if (spacing >= minSpacing && spacing <= maxSpacing) return;
    throw HostError("the dab spacing is " + Text(spacing * 100.0) +
                    " percent of the radius; it must be " + Text(minSpacing * 100.0) + " to " +
                    Text(maxSpacing * 100.0));
}

void CheckStepCount(double pathLength, double step, const std::string& work) {
    if (IsTooLong(pathLength, step))
        throw HostError("the path takes " +
                        TooMany(pathLength / step, Text(step) + " for " + work));
}

PathSteps::PathSteps(const LevelGeometry& strokeGeometry,
                     const PatchTree& strokeTree,
                     const StrokeView& strokeView,
                     PathSpace pathSpace,
                     const PathOptions& options,
                     const DabDynamics& dynamics)
    : geometry(strokeGeometry),
      tree(strokeTree),
      view(strokeView),
      space(pathSpace),
      radius(options.radius),
      radiusPixels(dynamics.radiusPixels),
      spacing(options.spacing),
      poll(options.poll) {
    if (!(radius > 0.0f) || !std::isfinite(radius))
        throw HostError("the radius is " + Text(radius) + "; it must be above 0");
    CheckSpacing(spacing);
}

double PathSteps::StepLength(const Vector& first) {
    if (step) return *step;
    const auto hit = PathHit(geometry, tree, view, space, first);
    Vector world;
    if (hit) {
        world = WorldPositionOf(geometry, *hit);
    } else if (const AxisAlignedBoundingBox box = tree.Bounds(); !box.IsEmpty()) {
        // A path can begin off the mesh; the centre of the mesh is then close enough for an
        // estimate.
        const Vector middle((box.minX + box.maxX) * 0.5f,
                            (box.minY + box.maxY) * 0.5f,
                            (box.minZ + box.maxZ) * 0.5f);
        geometry.Transform().LocalToWorld(&world, &middle, 1.0f);
    }
    const double pixel = WorldLength(view, 1.0f, world);
    const double size = radiusPixels > 0.0f ? radiusPixels * pixel : radius;
    if (space == PathSpace::Surface) {
        step = 0.25 * std::min(spacing, 1.0f) * size;
    } else {
        // With this argument order, a NaN ratio (at the depth of the eye) yields half a pixel.
        step = std::min(viewStep, static_cast<double>(spacing) * size / pixel);
    }
    return *step;
}

std::string PathSteps::StepText() const {
    const bool isView = space == PathSpace::View;
    std::string text = Text(*step) + (isView ? " pixels" : " units");
    if (isView && *step == viewStep) return text;
    text += " (radius " + (radiusPixels > 0.0f ? Text(radiusPixels) + " pixels" : Text(radius));
    return text + ", spacing " + Text(spacing * 100.0) + " percent)";
}

void PathSteps::CheckPosition(const PathSample& sample) {
    const std::size_t number = samples++;
    const Vector& at = sample.position;
    if (!IsFinite(at)) throw PathRefused(Text(at, space) + " is not finite", number);
    constexpr double farthest = maxPathSteps * viewStep;
    if (space == PathSpace::View && !(std::fabs(at.x) <= farthest && std::fabs(at.y) <= farthest)) {
        throw PathRefused(Text(at, space) + " is more than " + Whole(farthest) +
                              " pixels from the viewport's upper left corner",
                          number);
    }
}

void PathSteps::Add(const PathSample& sample) {
    CheckPosition(sample);
    if (last) {
        const double longer = length + Distance(last->position, sample.position);
        if (longer != 0.0 && IsTooLong(longer, StepLength(start))) {
            throw PathRefused("the path up to " + Text(sample.position, space) + " requires " +
                                  TooMany(longer / *step, StepText()),
                              samples - 1);
        }
        length = longer;
    } else {
        start = sample.position;
    }
    last = sample;
}

void PathSteps::CheckLength(const Vector& first, double pathLength) {
    if (pathLength != 0.0 && IsTooLong(pathLength, StepLength(first)))
        throw HostError("the path takes " + TooMany(pathLength / *step, StepText()));
}

void PathSteps::Take() {
    poll.Take();
    taken += 1.0;
    if (taken > maxPathSteps)
        throw HostError(
            "the stroke took more than " + Whole(maxPathSteps) +
            " steps along its path; the radius or the spacing is too small for this path");
}

}  // namespace trovik
