// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/brushes/StrokeObserver.h"
#include "framework/picking/PatchTree.h"
#include "host/BrushOperation.h"

#include <vector>

namespace trovik {

/// One main dab as the stroke loop gives it to the brush.
struct StrokeDab {
    /// Mesh-local; its mirror flag is false.
    SurfacePoint hit;
    /// Dab centre, world.
    Vector position;
    /// Radius, world units.
    float size = 0.0f;
    float pressure = 1.0f;
    float strength = 0.0f;
};

/// What the strokes did, added up.
struct StrokeTotals {
    /// Calls of ApplyDab, mirrored ones included.
    uint64_t dabs = 0;
    /// Vertices whose place a stroke changed, each counted once a stroke.
    uint64_t verticesMoved = 0;
    /// Time inside the brush.
    double seconds = 0.0;
};

/// Drives a brush over the bound level of one geometry: strict pairs of begin and end, the mirrored
/// dabs of each main dab, the previous hit of each side, and the refit of the patch tree.
///
/// Errors: what the brush throws passes through; the stroke is then ended.
class TROVIK_API StrokeLoop {
public:
    /// Borrows all three.
    StrokeLoop(BrushOperation& brush, LevelGeometry& geometry, PatchTree& tree);

    /// Maps of points (mesh-local) to their mirrored places, one dab each; empty for no mirror.
    /// \param mode  what MirrorConfiguration::MirrorMode answers from now on.
    void SetMirrors(int mode, std::vector<Matrix> pointMaps);

    /// Who hears of every call into the brush; null for nobody. Borrowed.
    void SetObserver(StrokeObserver* newObserver) { observer = newObserver; }

    void Begin(BrushOperation::Modifier modifier);
    void Dab(const StrokeDab& dab);
    /// The tool on the whole bound level at once, inside a stroke. \param strength  as in
    /// StrokeDab. \param byFacing  less effect where the surface turns away from the camera.
    void WholeMesh(float strength, bool byFacing);
    void End();
    bool IsActive() const { return active; }

    const StrokeTotals& Totals() const { return totals; }
    /// World box of everything that the present or last stroke touched.
    const AxisAlignedBoundingBox& DirtyBox() const { return dirtyBox; }

private:
    void Apply(const StrokeDab& dab, std::size_t side);
    void ForgetLastWalks();
    void Refit();
    uint64_t CountMoved() const;

    BrushOperation& brush;
    LevelGeometry& geometry;
    PatchTree& tree;
    StrokeObserver* observer = nullptr;
    std::vector<Matrix> mirrors;
    /// Last hit of the main side and of each mirror; zero before the first.
    std::vector<Vector> previousHits;
    StrokeTotals totals;
    AxisAlignedBoundingBox dirtyBox;
    bool active = false;
};

}  // namespace trovik
