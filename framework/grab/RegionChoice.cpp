// SPDX-License-Identifier: Apache-2.0
#include "framework/grab/RegionChoice.h"

#include "framework/mesh/UnfrozenFraction.h"
#include "framework/mesh/VertexNeighbours.h"
#include "framework/multires/LevelGeometry.h"
#include "framework/strokes/DabWeights.h"

#include <algorithm>

namespace trovik {

namespace {

/// Distances from a point, in world space.
class DistanceFrom {
public:
    DistanceFrom(const LevelMesh& ofLevel, const Vector& fromCenter)
        : level(ofLevel), toWorld(GeometryOf(ofLevel).Transform().ToWorld()), center(fromCenter) {}
    float operator()(uint32_t vertex) const {
        return toWorld.AffineTransform(level.Position(vertex) - center, 0.0f).Length();
    }

private:
    const LevelMesh& level;
    const Matrix& toWorld;
    Vector center;
};

/// Collects the faces that have a corner within the radius.
class FacesWithin final : public FaceEnumerator {
public:
    FacesWithin(const LevelMesh& walkedLevel, const DistanceFrom& fromCenter, float ballRadius)
        : level(walkedLevel), distance(fromCenter), radius(ballRadius) {}

    bool Tester(Mesh*, uint32_t face) override {
        const std::size_t corners = level.CornersPerFace();
        const uint32_t* v = level.faceVertexIndices.array + face * corners;
        return std::any_of(v, v + corners, [this](uint32_t at) { return distance(at) <= radius; });
    }
    void Operator(Mesh*, uint32_t face) override { faces.push_back(face); }

    std::vector<uint32_t> faces;

private:
    const LevelMesh& level;
    const DistanceFrom& distance;
    float radius;
};

}  // namespace

WeightedVertices ChooseRegion(LevelMesh& level,
                              const BrushOperation& brush,
                              const Store<float>& falloff,
                              RegionReach reach,
                              uint32_t face,
                              const Vector& center,
                              float radius) {
    const DistanceFrom distance(level, center);
    const FacingFactors facing(brush, level, brush.UsesFalloffBasedOnFacingAngle());
    WeightedVertices region;
    const auto add = [&](uint32_t vertex) {
        const float from = distance(vertex);
        // Also false for a position that is not a number.
        if (!(from <= radius)) return;
        const float weight = FalloffAt(falloff, from, radius) * facing.At(vertex) *
                             UnfrozenFraction(level.FreezeOfTools(vertex));
        if (!(weight > 0.0f)) return;
        region.vertices.push_back(vertex);
        region.weights.push_back(weight);
    };
    if (reach == RegionReach::Distance) {
        for (uint32_t vertex = 0; vertex < level.VertexCount(); ++vertex) add(vertex);
        return region;
    }
    FacesWithin walk(level, distance, radius);
    level.EnumerateFaces(face, &walk, 0);
    // The walk itself moves nothing, so the pick tree must not be refitted after it.
    level.ClearLastWalks();
    std::sort(walk.faces.begin(), walk.faces.end());
    for (const uint32_t vertex : CornersOf(level, walk.faces)) add(vertex);
    return region;
}

}  // namespace trovik
