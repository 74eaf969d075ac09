// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/history/UndoHistory.h"
#include "framework/math/Placement.h"
#include "framework/mesh/LevelForecast.h"
#include "framework/mesh/LevelHierarchy.h"
#include "framework/mesh/PolygonMesh.h"
#include "framework/mesh/TopologicalMirror.h"
#include "framework/multires/CoarseFaces.h"
#include "framework/multires/LevelSwitch.h"

#include <functional>
#include <memory>
#include <vector>

namespace trovik {

class LayerStack;

/// A mesh with all its subdivision levels, under one transformation. One level is bound at a time:
/// the one that is shown and sculpted.
class TROVIK_API LevelGeometry : public LevelHierarchy {
public:
    /// Level 0 is what was imported, quads or triangles; a mesh with other faces (or with both)
    /// gets one Catmull-Clark step, and that result is level 0. The faces must form oriented
    /// manifolds, possibly open (MakeOrientedManifold). \throw HostError naming what is wrong;
    /// Cancelled.
    explicit LevelGeometry(const PolygonMesh& polygons, JobControl* job = nullptr);
    ~LevelGeometry() override;

    SubdivisionLevel* LowestLevel() const override;
    SubdivisionLevel* HighestLevel() const override;
    SubdivisionLevel* LevelByIndex(uint32_t index) const override;
    trovik::Transformation* Transformation() const override;

    /// \throw HostError if a change of one of the levels is open: a stroke has not ended. \param
    /// action  what is refused, as in "undo".
    void RefuseInStroke(const std::string& action) const;
    /// Whether the level is one of the row now, and not taken out.
    bool Holds(const LevelMesh* level) const;
    LevelMesh* Bound() const { return levels[bound].get(); }
    uint32_t BoundIndex() const { return bound; }
    Placement& Place() { return placement; }
    const Placement& Place() const { return placement; }

    /// Adds a level on top by one Catmull-Clark step (boundary: edges and corners kept) and binds
    /// it. Freeze amounts are carried up, and children of hidden faces are hidden.
    /// \param byteBudget  bytes that the new level may take.
    /// \return the switch to the level that was the highest, as SwitchLevel.
    /// \throw HostError when the level would pass 2^32 - 2 vertices or faces or the byte budget, or
    /// when the accounted memory refuses; Cancelled. Nothing has changed or been reported then.
    LevelSwitch Subdivide(uint64_t byteBudget = unlimitedBytes, JobControl* job = nullptr);
    static constexpr uint64_t unlimitedBytes = ~uint64_t{0};
    /// What `times` more levels would hold. Cost: O(faces) of level 0.
    LevelForecast Forecast(uint32_t times = 1) const;
    /// \param furtherBytes  what the caller needs besides the levels once they exist, such as the
    /// memory of a render.
    /// \throw HostError "subdividing to level L would give F faces and V vertices and take B bytes;
    /// REASON" when `times` more levels would take more than the budget ("the budget is N"), or
    /// they and the further bytes more than QueryFreeMemory returns ("only N bytes of memory are
    /// free (LIMIT)"), or when the highest of them could not be counted.
    void CheckForecast(uint32_t times, uint64_t byteBudget, uint64_t furtherBytes = 0) const;

    /// Binds another level. What was changed since on the levels in between is carried along: to
    /// coarser levels by fitting, to finer ones by turning their detail with the surface; see
    /// DetailCarrier, and FreezeCarrying.h for freeze amounts. With no change, no bit of any level
    /// changes.
    /// \return what happened to levels on the way.
    std::vector<CarriedLevel> BindLevel(uint32_t index);
    /// The same, and returns what Exchange needs to go back. \throw Cancelled; every bit of every
    /// level is then as it was, and nothing was reported to observers.
    LevelSwitch SwitchLevel(uint32_t index, JobControl* job = nullptr);
    /// Each level below the bound one takes the bound level's shape: a vertex goes to where the
    /// bound level has it. The bound level and those above keep their bits; what the refinement of
    /// the new shape cannot show is their detail. \throw Cancelled as SwitchLevel.
    LevelSwitch ApplyToLowerLevels(JobControl* job = nullptr);
    /// Swaps the present state of the levels with the one that `other` tells, bit for bit. The
    /// state must be that which came from it, or the one before.
    void Exchange(LevelSwitch& other);
    /// How the levels know each other now, and which is bound; for Exchange. Cost: the vertices
    /// that were written since they last saw each other. \throw Cancelled.
    LevelSwitch StateOfSwitch(JobControl* job = nullptr);
    const CarryCounts& CarryWork() const { return carryWork; }

    /// Levels that were taken out of the geometry, which still owns all else.
    struct TakenLevels {
        bool lower = false;
        std::vector<std::unique_ptr<LevelMesh>> levels;
        std::unique_ptr<TopologicalMirror> mirror;
        SurfaceAttributes attributes;
    };
    /// Takes out the levels above level `kept`, or with `lower` those below it, which then is level
    /// 0; a mirror that was found goes on by its faces, and what the old level 0 carried is refined
    /// to it. The bound level must stay.
    /// \throw HostError while a stroke is open; Cancelled. Nothing has changed then.
    TakenLevels TakeLevels(bool lower, uint32_t kept, JobControl* job = nullptr);
    /// Puts back what TakeLevels took, when the rest is as it was then.
    void PutLevels(TakenLevels taken);

    /// What belonged to a level 0 that has become another level.
    struct OfOldBase {
        std::unique_ptr<TopologicalMirror> mirror;
        SurfaceAttributes attributes;
    };
    /// Makes a new level 0 of which the present one is the Catmull-Clark refinement by its faces,
    /// and renumbers faces and vertices of all levels by it; the bound level stays bound.
    /// Positions, normals, freeze amounts and face flags go with their vertices and faces, to the
    /// bit; so do the layers. A mirror that was found goes on by the new faces, and so does what
    /// the surface carries (AttributesOfCoarse). \param coarse  found for the present level 0 by
    /// FindCoarseFaces; is completed. \param known  what TakeCoarserBase answered; null for a level
    /// fitted to the present one. \return what was before. \throw HostError while a stroke is open;
    /// Cancelled. Nothing has changed then.
    OfOldBase PutCoarserBase(CoarseFaces& coarse,
                             std::unique_ptr<LevelMesh> known = nullptr,
                             JobControl* job = nullptr);
    /// Takes level 0 out again and numbers the levels as they were. Where there is a mirror, the
    /// old one takes its place.
    std::unique_ptr<LevelMesh> TakeCoarserBase(const CoarseFaces& coarse, OfOldBase old);

    /// Number of vertices that one more level would have. Cost: O(faces) of level 0.
    uint64_t CountNextLevelVertices() const;
    /// Adds a level on top with its topology alone, for who brings its content: positions, normals
    /// and freeze amounts are zero, and no other level is bound. \throw HostError and Cancelled as
    /// Subdivide.
    LevelMesh& AddLevel(JobControl* job = nullptr);
    /// Level `index` as its neighbours last saw it.
    SeenByNeighbours Seen(uint32_t index) const;
    /// For who brings a geometry's content: binds the level, carries nothing, and takes over what
    /// the levels know of each other. The face flags of the highest level decide what is hidden on
    /// all of them. \param seenLevels  per level.
    void Restore(uint32_t boundIndex, const std::vector<SeenByNeighbours>& seenLevels);

    /// One Catmull-Clark refinement of level `index`'s present positions: the positions that the
    /// level above would have with no detail of its own.
    std::vector<Vector> RefinedPositions(uint32_t index) const;

    /// What level 0 carries beside its shape; LevelSource refines it for export.
    const SurfaceAttributes& Attributes() const { return attributes; }
    /// For who brings a geometry's content; the lists fit the faces and vertices of level 0.
    void RestoreAttributes(SurfaceAttributes carried) { attributes = std::move(carried); }

    /// The bound level as polygons, for export. Positions are mesh-local; with `world` they are
    /// taken through the transformation.
    PolygonMesh ToPolygons(bool world) const;

    /// Finds the topological mirror by level 0 as it is now; the levels' MirrorVertex then answers
    /// by it. \return false, and no mirror is known, when the mesh has none.
    bool FindMirror(JobControl* job = nullptr);
    void ForgetMirror() { mirror.reset(); }
    /// For who brings a geometry's content.
    void RestoreMirror(std::unique_ptr<TopologicalMirror> found) { mirror = std::move(found); }

    UndoHistory& History() { return history; }

    /// The sculpt layers of all levels.
    LayerStack& Layers() { return *layers; }
    const LayerStack& Layers() const { return *layers; }

    MeshChange* StartChange(LevelMesh& level) override;
    trovik::Layer* LayerOf(LevelMesh& level) override;
    void LevelDestroyed(LevelMesh& level) override;

private:
    std::unique_ptr<LevelMesh> MakeLevel(JobControl* job) const;
    /// Of the highest level.
    uint64_t CountEdges() const;
    /// BindLevel without a report to the observers, which adds to `carried` what it does as it does
    /// it. \throw Cancelled; Revert then restores the levels.
    void CarryTo(uint32_t index, std::vector<CarriedLevel>& carried, JobControl* job);
    /// Restores the state before a switch that was cancelled and not reported.
    void Revert(LevelSwitch& before);
    /// ApplyToLowerLevels, as CarryTo.
    void ShapeLowerLevels(std::vector<CarriedLevel>& changed, JobControl* job);
    void SwapCarried(std::vector<CarriedLevel>& carried);
    void RestoreSeen(const LevelSwitch& state);
    /// Keeps what the neighbours know of level `index`, before it can change.
    void KeepSeen(uint32_t index);
    /// Drops what was kept of a level that did not change.
    void DropUnchanged(uint32_t index);
    /// Reports to the observers what a carrying did to a level.
    void ReportCarried(const CarriedLevel& carried);
    /// Reports another bound level, or one with other vertices or faces, after the carried levels.
    void ReportSwitch(uint32_t boundBefore, const std::vector<CarriedLevel>& carried);
    void CarryUp(uint32_t index, std::vector<CarriedLevel>& carried, JobControl* job);
    void CarryDown(uint32_t index, std::vector<CarriedLevel>& carried, JobControl* job);
    void CarryFreezeUp(uint32_t index, std::vector<CarriedLevel>& carried, JobControl* job);
    void CarryFreezeDown(uint32_t index, std::vector<CarriedLevel>& carried, JobControl* job);
    void Renumber(uint32_t index,
                  const std::vector<uint32_t>& vertexMap,
                  const std::vector<uint32_t>& faceMap);
    /// New numbers of a level's vertices and faces.
    struct LevelNumbers {
        std::vector<uint32_t> vertexMap;
        std::vector<uint32_t> faceMap;
    };
    /// Numbers the levels from `first` on by the one below it. The faces of the levels name the new
    /// vertices afterwards; RenumberLevels brings everything else to its new numbers.
    /// \param facesBefore  receives the faces of each level before it changes; null: not kept.
    std::vector<LevelNumbers> RefineNumbers(uint32_t first,
                                            FaceRenumbering faces,
                                            std::vector<uint32_t> lowerMap,
                                            std::vector<std::vector<uint32_t>>* facesBefore,
                                            JobControl* job);
    /// Positions, mask and normals of a new level 0 that is fitted to level 1.
    /// \param fineMap  new numbers of the vertices of level 1.
    void FitBase(const CoarseFaces& coarse, const std::vector<uint32_t>& fineMap, JobControl* job);
    void RenumberLevels(uint32_t first, const std::vector<LevelNumbers>& numbers);
    void NumberLevels();
    /// There is no level below level 0.
    void ForgetFromBelow();

    uint32_t bound = 0;
    Placement placement;
    SurfaceAttributes attributes;
    /// Outlives the history and all levels, which tell it when they go.
    std::unique_ptr<LayerStack> layers;
    UndoHistory history;
    CarryCounts carryWork;
};

/// The geometry that a level belongs to.
inline LevelGeometry& GeometryOf(const LevelMesh& level) {
    return static_cast<LevelGeometry&>(level.Hierarchy());
}

}  // namespace trovik
