// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/brushes/FalloffTable.h"
#include "framework/picking/PatchTree.h"
#include "framework/strokes/StampStroke.h"
#include "framework/strokes/StrokeInputListener.h"
#include "framework/strokes/StrokeObserver.h"
#include "framework/strokes/StrokeRandom.h"
#include "host/BrushOperation.h"

#include <functional>
#include <optional>
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
    /// Direction of the stroke here, world, of any length; zero: that from the dab before.
    Vector heading;
    /// Where the stamp's top points, world, of any length; zero: where its positioning says.
    Vector stampTop;
    /// The dab stays where it is whatever the stamp's settings are.
    bool keepPlace = false;
    /// Mesh-local position to stamp pixel. Set by the loop.
    Matrix stampMatrix;
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
/// dabs of each main dab, the previous hit of each side, and the reports of changed patches, which
/// the patch tree follows.
///
/// Errors: what the brush throws passes through; the stroke is then ended.
class TROVIK_API StrokeLoop {
public:
    /// Borrows all three.
    StrokeLoop(BrushOperation& brush, LevelGeometry& geometry, PatchTree& tree);

    /// Maps of points (mesh-local) to their mirrored places, one dab each; empty for no mirror.
    /// Each is a reflection, a rotation or both, about the mesh's origin. In the planes among them
    /// that are the mesh's own a stroke keeps a symmetric surface symmetric to the bit; see
    /// SettleSymmetry.
    ///
    /// A brush keeps the plane of a stroke for one mirrored side only. Where it works by such a
    /// plane and there are more sides, they are laid in pairs, each with a stroke of its own after
    /// the first, which is undone with it.
    /// \param mode  what MirrorConfiguration::MirrorMode answers from now on. With Topological the
    /// mirrored dab of each dab comes from the mesh's MirrorVertex, whatever the maps; none where
    /// it answers -1. \throw HostError while a stroke is open; the mirrors stay as they were.
    void SetMirrors(int mode, std::vector<Matrix> pointMaps);

    /// Who hears of every call into the brush; null for nobody. Borrowed.
    void SetObserver(StrokeObserver* newObserver) { observer = newObserver; }

    /// Who hears of what this loop is told to do; null for nobody. Borrowed. What it throws goes to
    /// the caller, after the stroke was ended.
    void SetInputListener(StrokeInputListener* newListener) { listener = newListener; }

    /// \param seed  of everything that the stroke leaves to chance. The stamp's file is read where
    /// it was not yet. \throw HostError when it cannot be read; nothing has begun then.
    /// \throw HostError while a stroke is open, which goes on.
    void Begin(BrushOperation::Modifier modifier, uint64_t seed = 0);
    /// \throw HostError without an open stroke; so does WholeMesh.
    void Dab(const StrokeDab& dab);
    /// The tool on the whole bound level at once, inside a stroke. \param strength  as in
    /// StrokeDab. \param byFacing  less effect where the surface turns away from the camera.
    void WholeMesh(float strength, bool byFacing);
    /// \param poll  called for each dab of mirrored sides that are made by strokes of their own;
    /// what it throws leaves out the rest of them. The listener hears of the end in any case.
    void End(const std::function<void()>& poll = {});
    /// Ends the stroke where it is, for work that was stopped: mirrored sides that are made by
    /// strokes of their own are left out.
    void Break();
    /// Puts the bound mesh back to the bits of before the stroke, which goes on as if no dab had
    /// been made: for tools that place one dab anew at each motion. Cost: what the stroke touched.
    void PutBack();
    /// Distance from the dab just made to the next one along a path, world units.
    /// \param share  of the radius, for tools that have no spacing of their own.
    float Spacing(float radius, float share) { return stamps.Spacing(radius, share); }
    /// The next number of the stroke's chance for a dab's size, 0 to less than 1.
    float RandomShare() { return sizeRandom.Share(); }
    const BrushOperation& Brush() const { return brush; }
    bool IsActive() const { return active; }
    /// Number of the open stroke, unique in the process; 0 while none is open.
    uint64_t StrokeNumber() const { return number; }

    const StrokeTotals& Totals() const { return totals; }
    /// World box of everything that the present or last stroke touched.
    const AxisAlignedBoundingBox& DirtyBox() const { return dirtyBox; }

private:
    void BeginStroke();
    void EndStroke();
    /// Ends the stroke and notifies the listener, also when an exception leaves.
    void Finish(bool brokenOff, const std::function<void()>& poll);
    void Apply(const StrokeDab& dab, std::size_t side);
    /// The dab where the map puts it. \param asMirror  for the brush it is the mirrored one of a
    /// pair. \return nothing on a mesh without faces.
    std::optional<StrokeDab> Mapped(const StrokeDab& dab, const Matrix& map, bool asMirror) const;
    /// Whether the brush's tool works by a plane that it keeps over the stroke.
    bool KeepsPlane() const;
    void LayOtherPairs(const std::function<void()>& poll);
    void SettleSides();
    /// Hidden vertices get their bits of before the stroke where the brush has changed any.
    void RestoreHidden();
    void Announce(const std::vector<uint32_t>& vertices);
    void ForgetLastWalks();
    struct DabAcross {
        StrokeDab dab;
        Matrix pointMap;
    };
    /// The dab's image in the topological mirror; none where there is none, and in other modes.
    std::optional<DabAcross> AcrossTopology(const StrokeDab& dab) const;
    /// Reports the patches that the walks of a dab have visited.
    void ReportDab();
    uint64_t CountMoved() const;

    BrushOperation& brush;
    LevelGeometry& geometry;
    PatchTree& tree;
    StrokeObserver* observer = nullptr;
    StrokeInputListener* listener = nullptr;
    std::vector<Matrix> mirrors;
    /// Last hit of the main side, of each mirror and of the topological one; zero before the first.
    std::vector<Vector> previousHits;
    StampStroke stamps;
    StrokeRandom sizeRandom;
    StrokeTotals totals;
    AxisAlignedBoundingBox dirtyBox;
    BrushOperation::Modifier modifier = BrushOperation::ModifierNone;
    /// Mirrors beyond the first wait for strokes of their own, and the dabs for them.
    bool inPairs = false;
    std::vector<StrokeDab> laid;
    /// The brush's setting when the stroke began.
    FalloffTable::Samples falloff;
    uint64_t number = 0;
    bool active = false;
};

}  // namespace trovik
