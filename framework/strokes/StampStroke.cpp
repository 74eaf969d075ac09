// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/StampStroke.h"

#include "framework/brushes/BrushSettings.h"
#include "framework/brushes/ToolTraits.h"
#include "framework/mesh/SurfaceNormal.h"
#include "framework/nodes/HostScene.h"
#include "framework/strokes/DabAtHit.h"
#include "framework/strokes/DabStrength.h"
#include "framework/strokes/StrokeLoop.h"

#include <algorithm>

namespace trovik {

namespace {

/// Minimum radius of a scattered stamp copy, as a fraction of the brush radius.
constexpr float minCopyRatio = 0.5f;
/// Makes the random numbers for distances independent of those for positions.
constexpr uint64_t spacingSalt = 0x5bf03635d1c27a89u;

StampPositioning PositioningOf(const BrushOperation& brush) {
    const int value = brush.resetOptionA.Value();
    if (value < 0 || value > static_cast<int>(StampPositioning::Start))
        return StampPositioning::Upright;
    const auto positioning = static_cast<StampPositioning>(value);
    if (positioning != StampPositioning::Tool) return positioning;
    const bool follows = TraitsOf(brush).rotatesStampAlongStroke || brush.StrokeDrawMode() != 0;
    return follows ? StampPositioning::Stroke : StampPositioning::Upright;
}

Matrix CameraToWorld() {
    Matrix matrix;
    g_pKernel->Scene()->ActiveCamera()->Transformation()->LocalToWorldMatrix(&matrix);
    return matrix;
}

bool IsCameraOrthographic() {
    const auto* camera = dynamic_cast<const HostCamera*>(g_pKernel->Scene()->ActiveCamera());
    return camera != nullptr && camera->IsOrthographic();
}

}  // namespace

void StampStroke::Begin(const BrushOperation& strokeBrush,
                        const LevelGeometry& strokeGeometry,
                        const PatchTree& strokeTree,
                        uint64_t strokeSeed) {
    brush = &strokeBrush;
    geometry = &strokeGeometry;
    tree = &strokeTree;
    seed = strokeSeed;
    const bool isEnabled = brush->IsMaskEnabled(stampMask);
    width = isEnabled ? brush->MaskImage(stampMask)->Width() : 0;
    height = isEnabled ? brush->MaskImage(stampMask)->Height() : 0;
    Restart();
}

void StampStroke::Restart() {
    random = StrokeRandom(seed);
    spacingRandom = StrokeRandom(seed ^ spacingSalt);
    hasPrevious = false;
    hasStart = false;
}

void StampStroke::PlaceStamp(StrokeDab& dab) {
    if (!HasStamp() || !(dab.size > 0.0f)) return;
    const StampPositioning positioning = PositioningOf(*brush);
    Vector toward;
    if (positioning == StampPositioning::Stroke) {
        toward = dab.heading;
        if (toward == Vector() && hasPrevious) toward = dab.position - previous;
    }
    if (dab.stampTop != Vector()) toward = dab.stampTop;
    previous = dab.position;
    hasPrevious = true;

    const BrushOperation::Private& settings = brush->Settings();
    float turns = static_cast<float>(brush->separatorOption.Value()) / 360.0f;
    if (brush->UsesStampRandomize()) {
        if (!dab.keepPosition && brush->StrokeDrawMode() == 0) Scatter(dab);
        turns += random.Share();
    } else if (settings.stamp.randomTurn > 0.0f) {
        turns += settings.stamp.randomTurn * 0.5f * random.Signed();
    }

    if (positioning == StampPositioning::Start && hasStart) {
        dab.stampMatrix = startMatrix;
        return;
    }
    StampPlacement placement = Place(dab, toward);
    placement.Turn(turns);
    dab.stampMatrix = placement.ToPixels(width, height, geometry->Transform().ToWorld());
    startMatrix = dab.stampMatrix;
    hasStart = true;
}

StampPlacement StampStroke::Place(const StrokeDab& dab, const Vector& toward) const {
    const Matrix camera = CameraToWorld();
    const Vector normal = WorldNormal(geometry->Transform(), dab.hit.normal);
    if (brush->IsOrientedToSurface() && normal != Vector())
        return StampPlacement::OnSurface(dab.position, normal, dab.size, toward, camera);
    return StampPlacement::ByCamera(dab.position, dab.size, toward, camera, IsCameraOrthographic());
}

Matrix StampStroke::OverAll(const AxisAlignedBoundingBox& box) const {
    if (!HasStamp() || box.IsEmpty()) return {};
    const Matrix& toWorld = geometry->Transform().ToWorld();
    const Vector low(box.minX, box.minY, box.minZ);
    const Vector high(box.maxX, box.maxY, box.maxZ);
    const Vector middle = toWorld.AffineTransform((low + high) * 0.5f, 1.0f);
    float radius = 0.0f;
    for (int corner = 0; corner < 8; ++corner) {
        const Vector local((corner & 1) != 0 ? high.x : low.x,
                           (corner & 2) != 0 ? high.y : low.y,
                           (corner & 4) != 0 ? high.z : low.z);
        radius = std::max(radius, (toWorld.AffineTransform(local, 1.0f) - middle).Length());
    }
    if (!(radius > 0.0f)) return {};
    StampPlacement placement =
        StampPlacement::ByCamera(middle, radius, Vector(), CameraToWorld(), IsCameraOrthographic());
    placement.Turn(static_cast<float>(brush->separatorOption.Value()) / 360.0f);
    return placement.ToPixels(width, height, toWorld);
}

// Moves the dab to a random point in the brush's disc on the surface, then to the nearest point on
// the mesh. Rejection sampling in the square around the disc needs no angles; see von Neumann:
// "Various Techniques Used in Connection with Random Digits" (1951).
void StampStroke::Scatter(StrokeDab& dab) {
    float x = 0.0f;
    float y = 0.0f;
    do {
        x = random.Signed();
        y = random.Signed();
    } while (x * x + y * y > 1.0f);
    const float fraction = minCopyRatio + (1.0f - minCopyRatio) * random.Share();

    const StampPlacement placement = Place(dab, Vector());
    const Vector target =
        dab.position + placement.Right() * (x * dab.size) + placement.Up() * (y * dab.size);
    Vector local;
    geometry->Transform().WorldToLocal(&local, &target, 1.0f);
    if (const auto hit = tree->Nearest(local)) MoveDab(dab, *geometry, *hit);
    const float size = dab.size * fraction;
    dab.strength = StrengthAtRadius(*brush, dab.strength, dab.size, size);
    dab.size = size;
}

float StampStroke::Spacing(float radius, float fraction) {
    if (!HasStamp() || !TraitsOf(*brush).placesStampsSideBySide) return radius * fraction;
    const float room = brush->strokeFloatA.Value() * 0.01f;
    const float randomRoom = brush->strokeFloatB.Value() * 0.01f * spacingRandom.Share();
    return radius * ((2.0f + room) + randomRoom);
}

}  // namespace trovik
