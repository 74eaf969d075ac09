// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/DabAtHit.h"

namespace trovik {

Vector WorldPositionOf(const LevelGeometry& geometry, const PickHit& hit) {
    Vector world;
    geometry.Transform().LocalToWorld(&world, &hit.position, 1.0f);
    return world;
}

StrokeDab DabAt(LevelGeometry& geometry, const PickHit& hit) {
    StrokeDab dab;
    dab.hit.mesh = geometry.Bound();
    MoveDab(dab, geometry, hit);
    return dab;
}

void MoveDab(StrokeDab& dab, const LevelGeometry& geometry, const PickHit& hit) {
    dab.hit.face = hit.face;
    dab.hit.position = hit.position;
    dab.hit.normal = hit.normal;
    dab.position = WorldPositionOf(geometry, hit);
}

}  // namespace trovik
