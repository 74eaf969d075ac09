// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/brushes/FalloffTable.h"
#include "framework/detail/DetailSettings.h"
#include "framework/picking/PatchTree.h"
#include "framework/strokes/NormalBackup.h"
#include "framework/strokes/StampStroke.h"
#include "framework/strokes/StrokeInputListener.h"
#include "framework/strokes/StrokeObserver.h"
#include "framework/strokes/StrokeRandom.h"
#include "host/BrushOperation.h"

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace trovik {

/// A dab as the caller passes it to the stroke loop, which adds its mirrored copies.
struct StrokeDab {
    /// Mesh-local; its mirror flag is false.
    SurfacePoint hit;
    /// Dab centre, world space.
    Vector position;
    /// Radius, world units.
    float size = 0.0f;
    float pressure = 1.0f;
    float strength = 0.0f;
    /// Direction of the stroke at the dab, in world space and of any length; zero selects the
    /// direction from the previous dab.
    Vector heading;
    /// The stamp's up direction, in world space and of any length; if zero, the stamp positioning
    /// determines the up direction.
    Vector stampTop;
    /// Whether stamp settings must not move the dab.
    bool keepPosition = false;
    /// Maps mesh-local positions to stamp pixels. Set by the loop.
    Matrix stampMatrix;
};

/// Accumulated statistics of strokes.
struct StrokeTotals {
    /// Number of calls to ApplyDab, including mirrored ones.
    uint64_t dabs = 0;
    /// Number of vertices moved, each counted once per stroke.
    uint64_t verticesMoved = 0;
    /// Time spent inside the brush.
    double seconds = 0.0;
};

/// Drives a brush over the bound level of one geometry. It pairs begin and end calls, adds the
/// mirrored copies of each dab, tracks the previous hit on each side, and reports changed patches,
/// so that the patch tree is updated.
///
/// Errors: an exception from the brush ends the stroke and is then passed on to the caller.
class TROVIK_API StrokeLoop {
public:
    /// Borrows `brush`, `geometry` and `tree`.
    StrokeLoop(BrushOperation& brush, LevelGeometry& geometry, PatchTree& tree);

    /// Sets the maps from points (mesh-local) to their mirrored positions. Each map adds one
    /// mirrored dab; an empty list disables mirroring. A map is a reflection, a rotation or a
    /// combination of both, about the mesh's origin. With a reflection in a coordinate plane of the
    /// mesh, a stroke preserves the symmetry of a symmetric surface bit for bit; see
    /// SettleSymmetry.
    ///
    /// A brush stores the plane of a stroke for one mirrored side only. If the tool uses such a
    /// plane and there is more than one mirrored side, the other sides are applied in pairs, each
    /// in an additional stroke after the first; all strokes are undone together.
    /// \param mode  the value that MirrorConfiguration::MirrorMode returns from now on. With
    /// Topological, the mirrored dab comes from the mesh's MirrorVertex, regardless of the maps; no
    /// mirrored dab is applied where MirrorVertex returns -1.
    /// \throw HostError while a stroke is open; the mirrors are then unchanged.
    void SetMirrors(int mode, std::vector<Matrix> pointMaps);

    /// Sets whether and how the strokes that begin from now on refine the mesh. Brushes without a
    /// tessellator ignore it, and with a topological mirror, strokes do not refine the mesh.
    /// \param pixelSize  returns the size of a pixel in world units at a position; used if the
    /// length is in pixels.
    void SetDetail(const DetailSettings& newDetail,
                   std::function<float(const Vector& position)> newPixelSize) {
        detail = newDetail;
        pixelSize = std::move(newPixelSize);
    }

    /// Sets the (borrowed) observer of all calls into the brush; null removes it.
    void SetObserver(StrokeObserver* newObserver) { observer = newObserver; }

    /// Sets the (borrowed) listener for the operations of this loop; null removes it. Its
    /// exceptions reach the caller after the stroke has ended.
    void SetInputListener(StrokeInputListener* newListener) { listener = newListener; }

    /// Begins a stroke. Loads the stamp's file if necessary.
    /// \param seed  the seed for all random values of the stroke.
    /// \throw HostError if the file cannot be read, in which case no stroke begins, or if a stroke
    /// is already open, in which case that stroke is not affected.
    void Begin(BrushOperation::Modifier modifier, uint64_t seed = 0);
    /// Applies one dab. Like WholeMesh, throws HostError if no stroke is open.
    void Dab(const StrokeDab& dab);
    /// Applies the tool to the whole bound level at once, within a stroke. \param strength  as in
    /// StrokeDab. \param byFacing  reduces the effect where the surface faces away from the camera.
    void WholeMesh(float strength, bool byFacing);
    /// \param poll  called for each dab of mirrored sides that are applied in additional strokes;
    /// if it throws, the remaining dabs are skipped. The listener is notified of the end in any
    /// case.
    void End(const std::function<void()>& poll = {});
    /// Ends a cancelled stroke without applying the additional strokes of its mirrored sides.
    void Break();
    /// Restores the bound mesh bit-exactly to its state before the stroke. The stroke continues as
    /// if no dab had been applied. Used by tools that apply their dab again on each motion. Cost:
    /// O(vertices that the stroke has touched).
    void RevertStroke();
    /// Distance along a path from the last dab to the next one, in world units.
    /// \param fraction fraction of the radius, for tools without a spacing of their own.
    float Spacing(float radius, float fraction) { return stamps.Spacing(radius, fraction); }
    /// The next random number, in [0, 1), for the size of a dab.
    float RandomFraction() { return sizeRandom.Share(); }
    const BrushOperation& Brush() const { return brush; }
    bool IsActive() const { return active; }
    /// Number of the open stroke, unique in the process; 0 if no stroke is open.
    uint64_t StrokeNumber() const { return number; }

    const StrokeTotals& Totals() const { return totals; }
    /// World-space bounding box of everything that the current or last stroke touched.
    const AxisAlignedBoundingBox& DirtyBox() const { return dirtyBox; }

private:
    void BeginStroke();
    void EndStroke();
    /// Sets the brush's detail for the next dab.
    void SetDabDetail(const StrokeDab& dab);
    /// Ends the stroke and notifies the listener, even if an exception is thrown.
    void Finish(bool brokenOff, const std::function<void()>& poll);
    void Apply(const StrokeDab& dab, std::size_t side);
    /// Applies the dab and its mirrored copies.
    void ApplySides(const StrokeDab& dab);
    /// Applies a dab of DrawMode::Drag and its mirrored copies. The copies of the hit are computed
    /// on the surface before the first dab that has this hit, and are kept for the following ones.
    void ApplyHeld(const StrokeDab& dab);
    /// The dab transformed by a map. \param asMirror  whether the brush treats it as the mirrored
    /// dab of a pair. \return nothing if the mesh has no faces.
    std::optional<StrokeDab> Mapped(const StrokeDab& dab, const Matrix& map, bool asMirror) const;
    /// Whether the brush's tool uses one plane for the whole stroke.
    bool KeepsPlane() const;
    /// \param newestBefore  the newest undo step before the first pair was applied; null if there
    /// was none.
    void ApplyOtherPairs(const UndoStep* newestBefore, const std::function<void()>& poll);
    void SettleSides();
    /// Restores the values from before the stroke at hidden vertices that the brush changed.
    void RestoreHidden();
    /// Restores the normals that the brush changed under a hidden or locked layer.
    void RestoreNormals();
    void Announce(const std::vector<uint32_t>& vertices);
    void ClearLastWalks();
    struct MirroredDab {
        StrokeDab dab;
        Matrix pointMap;
    };
    struct HeldSide {
        StrokeDab dab;
        Matrix pointMap;
        std::size_t side;
    };
    void HoldSides(const StrokeDab& dab);
    /// The vector from a dab's hit to its position, in world space.
    Vector HeldWay(const StrokeDab& dab) const;
    /// The dab's topological mirror image; empty if there is none or if another mirror mode is set.
    std::optional<MirroredDab> AcrossTopology(const StrokeDab& dab) const;
    /// Reports the patches that a dab's traversals have visited.
    void ReportDab();
    uint64_t CountMoved() const;

    BrushOperation& brush;
    LevelGeometry& geometry;
    PatchTree& tree;
    StrokeObserver* observer = nullptr;
    StrokeInputListener* listener = nullptr;
    std::vector<Matrix> mirrors;
    /// Last hit of the main side, of each mirror and of the topological mirror; zero before the
    /// first dab.
    std::vector<Vector> previousHits;
    StampStroke stamps;
    StrokeRandom sizeRandom;
    DetailSettings detail;
    std::function<float(const Vector&)> pixelSize;
    StrokeTotals totals;
    AxisAlignedBoundingBox dirtyBox;
    BrushOperation::Modifier modifier = BrushOperation::ModifierNone;
    /// Whether mirrors beyond the first are applied in additional strokes, and the unmirrored dabs
    /// recorded for these strokes.
    bool inPairs = false;
    std::vector<StrokeDab> mainDabs;
    /// For DrawMode::Drag: the sides of the held hit, the main side first.
    std::vector<HeldSide> heldSides;
    NormalBackup normalBackup;
    /// The falloff of the brush when the stroke began.
    FalloffTable::Samples falloff;
    uint64_t number = 0;
    bool active = false;
};

}  // namespace trovik
