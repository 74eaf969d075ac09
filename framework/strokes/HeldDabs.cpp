// SPDX-License-Identifier: Apache-2.0

/// \file Dabs that hold a point of the surface while the pointer moves (DrawMode::Drag).
#include "framework/strokes/StrokeLoop.h"

namespace trovik {

// A mirrored hit is looked up on the surface, which the preceding dabs of the drag have moved away
// from the hit.
void StrokeLoop::HoldSides(const StrokeDab& dab) {
    heldSides.clear();
    heldSides.push_back({dab, Matrix(), 0});
    for (std::size_t side = 1; side <= mirrors.size(); ++side)
        if (const auto mirrored = Mapped(dab, mirrors[side - 1], true))
            heldSides.push_back({*mirrored, mirrors[side - 1], side});
    if (const auto across = AcrossTopology(dab))
        heldSides.push_back({across->dab, across->pointMap, mirrors.size() + 1});
}

Vector StrokeLoop::HeldWay(const StrokeDab& dab) const {
    Vector held;
    geometry.Transform().LocalToWorld(&held, &dab.hit.position, 1.0f);
    return dab.position - held;
}

void StrokeLoop::ApplyHeld(const StrokeDab& dab) {
    const bool isHeld = !heldSides.empty() && heldSides[0].dab.hit.face == dab.hit.face &&
                        heldSides[0].dab.hit.position == dab.hit.position;
    if (!isHeld) HoldSides(dab);
    const MatrixTransform& transform = geometry.Transform();
    const Vector way = HeldWay(dab);
    Vector local;
    transform.WorldToLocal(&local, &way, 0.0f);
    const auto applyAll = [&](bool isMoved) {
        for (const HeldSide& held : heldSides) {
            StrokeDab moved = dab;
            moved.hit = held.dab.hit;
            moved.stampMatrix = held.dab.stampMatrix;
            transform.LocalToWorld(&moved.position, &moved.hit.position, 1.0f);
            if (held.side == 0 && isMoved) {
                moved.position = dab.position;
            } else if (isMoved) {
                const Vector mapped = held.pointMap.AffineTransform(local, 0.0f);
                Vector world;
                transform.LocalToWorld(&world, &mapped, 0.0f);
                moved.position += world;
            }
            if (held.side != 0) brush.MirrorConfig().SetPointMap(held.pointMap);
            Apply(moved, held.side);
        }
    };
    // All sides hold their regions before the first one moves.
    if (!isHeld) applyAll(false);
    if (isHeld || !(way == Vector())) applyAll(true);
}

}  // namespace trovik
