// SPDX-License-Identifier: Apache-2.0
#include "framework/grab/GrabBrush.h"

#include "framework/math/IsFinite.h"
#include "framework/mesh/SurfaceNormal.h"
#include "framework/mesh/VertexLanes.h"
#include "framework/multires/LevelGeometry.h"
#include "framework/strokes/ImprintStroke.h"

#include <limits>
#include <memory>
#include <optional>
#include <utility>

namespace trovik {

namespace {

constexpr float percent = 0.01f;
/// Vertices with a smaller fraction of the largest elastic displacement do not move.
constexpr float smallestElastic = 1.0f / 4096.0f;

bool IsReflection(const Matrix& map) {
    const Vector x(map.m[0][0], map.m[0][1], map.m[0][2]);
    const Vector y(map.m[1][0], map.m[1][1], map.m[1][2]);
    const Vector z(map.m[2][0], map.m[2][1], map.m[2][2]);
    return ((x & y) | z) < 0.0f;
}

/// The displacement of a dab, in world space.
Vector WorldDisplacement(const LevelMesh& level, const SurfacePoint& hit, const Vector& position) {
    Vector held;
    GeometryOf(level).Transform().LocalToWorld(&held, &hit.position, 1.0f);
    return position - held;
}

}  // namespace

RegionReach GrabBrush::Reach() const {
    // A snake hook that passes close to another part of the surface must not drag that part along.
    const bool isConnected = ActiveTool() == SnakeHook || connectedOnly.Value();
    return isConnected ? RegionReach::Connected : RegionReach::Distance;
}

void GrabBrush::BeginStroke(trovik::Mesh* mesh, Modifier modifier, TriggerType trigger) {
    BrushOperation::BeginStroke(mesh, modifier, trigger);
    falloff = &FalloffData();
    sides.Clear();
    level = dynamic_cast<LevelMesh*>(mesh);
    if (level == nullptr || trigger != TriggerStroke) return;
    if (!level->Lock(this)) {
        level = nullptr;
        return;
    }
    change.reset(level->StartChange());
}

void GrabBrush::ApplyDab(const SurfacePoint& hit,
                         const Vector& position,
                         float size,
                         float,
                         float strength,
                         AxisAlignedBoundingBox& box) {
    if (change == nullptr || hit.mesh != level || hit.face >= level->faceCount) return;
    if (!(size > 0.0f) || !IsFinite(position) || !IsFinite(hit.position)) return;
    if (const trovik::Layer* layer = level->Layer(); layer != nullptr && !layer->Writable()) return;
    const Vector world = WorldDisplacement(*level, hit, position) * (strength * percent);
    Vector local;
    GeometryOf(*level).Transform().WorldToLocal(&local, &world, 0.0f);
    if (!IsFinite(local)) return;
    if (ActiveTool() == SnakeHook) {
        Pull(hit, size, local);
        return;
    }
    GrabSide& side = SideOf(hit, size);
    side.displacement = local;
    if (side.elastic) side.elastic->load = LoadOf(hit, size, world);
    sides.Drag(side, GeometryOf(*level).Transform().ToLocal(), threads);
    ExtendBox(box, side.region);
}

// The accessor of the base class is not const.
const Matrix& GrabBrush::MirrorMap() const {
    return const_cast<GrabBrush*>(this)->MirrorConfig().PointMap();
}

GrabSide& GrabBrush::SideOf(const SurfacePoint& hit, float size) {
    GrabSideKey key{hit.mirror, hit.position, Matrix()};
    if (hit.mirror) key.pointMap = MirrorMap();
    if (GrabSide* const found = sides.Find(key)) return *found;
    if (!hit.mirror) sides.Clear();
    const bool isElastic = ActiveTool() == ElasticGrab;
    const Store<float> none;
    WeightedVertices chosen = ChooseRegion(*level,
                                           *this,
                                           isElastic ? none : *falloff,
                                           Reach(),
                                           hit.face,
                                           hit.position,
                                           isElastic ? std::numeric_limits<float>::max() : size);
    std::optional<ElasticField> elastic;
    if (isElastic) elastic = FieldOf(hit, size, chosen);
    MovedRegion region(*level, *level->OpenChange(), std::move(chosen.vertices));
    return sides.Add(std::make_unique<GrabSide>(
        key, std::move(chosen.weights), std::move(region), std::move(elastic)));
}

ElasticField GrabBrush::FieldOf(const SurfacePoint& hit,
                                float size,
                                WeightedVertices& chosen) const {
    ElasticField field{Kelvinlet(static_cast<ElasticMode>(elasticMode.Value()),
                                 size,
                                 {poissonRatio.Value(), elasticScales.Value()}),
                       {},
                       {},
                       {}};
    const Matrix& toWorld = GeometryOf(*level).Transform().ToWorld();
    WeightedVertices kept;
    for (std::size_t i = 0; i < chosen.vertices.size(); ++i) {
        const uint32_t vertex = chosen.vertices[i];
        const Vector arm = toWorld.AffineTransform(level->Position(vertex) - hit.position, 0.0f);
        const Kelvinlet::Coefficients at = field.kelvinlet.At(arm);
        if (!(field.kelvinlet.RelativeSize(arm, at) >= smallestElastic)) continue;
        kept.vertices.push_back(vertex);
        kept.weights.push_back(chosen.weights[i]);
        field.arms.push_back(arm);
        field.coefficients.push_back(at);
    }
    chosen = std::move(kept);
    return field;
}

Kelvinlet::Load GrabBrush::LoadOf(const SurfacePoint& hit, float size, const Vector& way) const {
    const auto mode = static_cast<ElasticMode>(elasticMode.Value());
    if (mode == ElasticMode::Grab) return {way, 0.0f};
    const Vector axis = WorldNormal(GeometryOf(*level).Transform(), hit.normal);
    float amount = (way | axis) / size;
    if (IsInverted()) amount = -amount;
    // A reflection reverses the sense of rotation.
    const bool isReversed = mode == ElasticMode::Twist && hit.mirror && IsReflection(MirrorMap());
    return {axis, isReversed ? -amount : amount};
}

void GrabBrush::Pull(const SurfacePoint& hit, float size, const Vector& displacement) {
    if (displacement == Vector()) return;
    WeightedVertices chosen =
        ChooseRegion(*level, *this, *falloff, Reach(), hit.face, hit.position, size);
    if (chosen.vertices.empty()) return;
    MovedRegion region(*level, *level->OpenChange(), std::move(chosen.vertices));
    const float* weights = chosen.weights.data();
    region.Move([=](std::size_t i) { return displacement * weights[i]; }, threads);
}

// The corners of the mesh-local bounding box are transformed instead of all vertices. The result
// may be larger than the region.
void GrabBrush::ExtendBox(AxisAlignedBoundingBox& box, const MovedRegion& region) const {
    if (region.Vertices().empty()) return;
    const Vertex* const at = level->vertices.array;
    HWVector lowest = PositionLanes(at[region.Vertices().front()]);
    HWVector highest = lowest;
    for (const uint32_t vertex : region.Vertices()) {
        const HWVector position = PositionLanes(at[vertex]);
        lowest = HWVector::Minimum(position, lowest);
        highest = HWVector::Maximum(position, highest);
    }
    const auto low = static_cast<Vector>(lowest);
    const auto high = static_cast<Vector>(highest);
    const Matrix& toWorld = GeometryOf(*level).Transform().ToWorld();
    for (const float x : {low.x, high.x})
        for (const float y : {low.y, high.y})
            for (const float z : {low.z, high.z})
                box.Extend(toWorld.AffineTransform({x, y, z}, 1.0f));
}

void GrabBrush::ApplyToWholeMesh(trovik::Mesh*, float, bool) {}

void GrabBrush::EndStroke() {
    BrushOperation::EndStroke();
    sides.Clear();
    if (change != nullptr) {
        change->Finish(true, false);
        change.reset();
        level->Unlock();
    }
    level = nullptr;
}

// The loop restores the vertices from the records of the change.
void GrabBrush::RevertBrushStroke() { sides.Clear(); }

}  // namespace trovik
