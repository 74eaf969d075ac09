// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/history/UndoHistory.h"
#include "framework/math/MatrixTransform.h"
#include "framework/mesh/LevelForecast.h"
#include "framework/mesh/LevelHierarchy.h"
#include "framework/mesh/PolygonMesh.h"
#include "framework/mesh/TopologicalMirror.h"
#include "framework/multires/CoarseFaces.h"
#include "framework/multires/LevelSwitch.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace trovik {

class LayerStack;

/// A mesh with all its subdivision levels and one transform. One level is bound at a time: the
/// level that is displayed and sculpted.
class TROVIK_API LevelGeometry : public LevelHierarchy {
public:
    /// Level 0 is the imported mesh if it has only quads or only triangles, and otherwise the
    /// result of one Catmull-Clark step. The faces must form oriented manifolds, possibly with
    /// borders (MakeOrientedManifold).
    /// \throw HostError that describes what is wrong with the mesh; Cancelled.
    explicit LevelGeometry(const PolygonMesh& polygons, JobControl* job = nullptr);
    ~LevelGeometry() override;

    SubdivisionLevel* LowestLevel() const override;
    SubdivisionLevel* HighestLevel() const override;
    SubdivisionLevel* LevelByIndex(uint32_t index) const override;
    trovik::Transformation* Transformation() const override;

    /// \throw HostError if one of the levels has an open change, that is, during a stroke.
    /// \param action  the name of the action for the message, such as "undo".
    void RefuseInStroke(const std::string& action) const;
    /// Whether the level is currently in the hierarchy.
    bool Holds(const LevelMesh* level) const;
    LevelMesh* Bound() const { return levels[bound].get(); }
    uint32_t BoundIndex() const { return bound; }
    MatrixTransform& Transform() { return transform; }
    const MatrixTransform& Transform() const { return transform; }

    /// Adds a level on top by one Catmull-Clark step (with edge-and-corner boundary interpolation)
    /// and binds the new level. Freeze amounts are propagated, and children of hidden faces are
    /// hidden.
    /// \param byteBudget  maximum size of the new level.
    /// \return the state before the switch to the level that was the highest one until then, for
    /// use with Exchange; see SwitchLevel.
    /// \throw HostError if the level would exceed 2^32 - 2 vertices or faces or the byte budget, or
    /// if memory accounting rejects the allocation; Cancelled. In each case, nothing has been
    /// changed or reported.
    LevelSwitch Subdivide(uint64_t byteBudget = unlimitedBytes, JobControl* job = nullptr);
    static constexpr uint64_t unlimitedBytes = ~uint64_t{0};
    /// Returns the size of `times` additional levels. Cost: O(faces) of level 0.
    LevelForecast Forecast(uint32_t times = 1) const;
    /// Checks that `times` additional levels fit into memory.
    /// \param additionalBytes  memory that the caller needs in addition to the levels, for example
    /// for a render.
    /// \throw HostError "subdividing to level L would give F faces and V vertices and take B bytes;
    /// REASON" if the levels exceed the budget ("the budget is N"), if the levels and the
    /// additional bytes exceed the result of QueryFreeMemory ("only N bytes of memory are free
    /// (LIMIT)"), or if the element counts of the highest level do not fit the index type.
    void CheckForecast(uint32_t times, uint64_t byteBudget, uint64_t additionalBytes = 0) const;

    /// Binds a different level. Changes since the last switch are propagated through the levels in
    /// between. Coarser levels are fitted to the changes; the detail of finer levels is rotated
    /// with the surface (DetailCarrier). FreezeCarrying.h describes the propagation of freeze
    /// amounts. If nothing changed, every level stays bit-identical.
    /// \return the changes of the levels that were updated.
    std::vector<CarriedLevel> BindLevel(uint32_t index);
    /// Binds a different level as BindLevel does, and returns the state that Exchange needs to
    /// switch back.
    /// \throw Cancelled; every level is then restored bit-exactly, and the observers have not been
    /// notified.
    LevelSwitch SwitchLevel(uint32_t index, JobControl* job = nullptr);
    /// Moves the vertices of all levels below the bound one to their positions on the bound level.
    /// The bound level and those above stay bit-identical; their differences from the refinement of
    /// the new shape become detail.
    /// \throw Cancelled, with the guarantees of SwitchLevel.
    LevelSwitch ApplyToLowerLevels(JobControl* job = nullptr);
    /// Exchanges the current state of the levels with the state in `other`, bit-exactly. The levels
    /// must be in the state immediately after, or immediately before, the switch that `other`
    /// describes.
    void Exchange(LevelSwitch& other);
    /// Returns the bound level's index and the synchronisation state of all levels, for Exchange.
    /// Cost: linear in the number of vertices that were written since the last synchronisation.
    /// \throw Cancelled.
    LevelSwitch StateOfSwitch(JobControl* job = nullptr);
    const CarryCounts& CarryWork() const { return carryWork; }

    /// Levels that were removed from the geometry. The geometry still owns all other data.
    struct RemovedLevels {
        bool lower = false;
        std::vector<std::unique_ptr<LevelMesh>> levels;
        std::unique_ptr<TopologicalMirror> mirror;
        SurfaceAttributes attributes;
    };
    /// Removes the levels above level `kept`, or, if `lower` is set, the levels below `kept`, which
    /// then becomes level 0. In the second case, an existing mirror is converted to the faces of
    /// the new level 0, and the attributes of the old level 0 are refined to it. The bound level
    /// must not be one of the removed levels.
    /// \throw HostError during a stroke; Cancelled. In both cases, nothing has changed.
    RemovedLevels RemoveLevels(bool lower, uint32_t kept, JobControl* job = nullptr);
    /// Reinserts the levels that RemoveLevels removed. All other data except the mirror must be as
    /// it was immediately after the removal. If a mirror has been found since then, it is computed
    /// again for the restored levels.
    void RestoreLevels(RemovedLevels taken);

    /// The mesh-wide data of a replaced level 0.
    struct OldBaseData {
        std::unique_ptr<TopologicalMirror> mirror;
        SurfaceAttributes attributes;
    };
    /// Creates a new level 0 whose Catmull-Clark refinement has the faces of the current level 0,
    /// and renumbers the faces and vertices of all levels accordingly. The bound level stays bound.
    /// Positions, normals, freeze amounts, face flags and layers move with their vertices and
    /// faces, bit-exactly. An existing mirror and the surface attributes are converted to the new
    /// faces (AttributesOfCoarse).
    /// \param coarse  the result of FindCoarseFaces for the current level 0; the function fills in
    ///     `fineVertexMap`.
    /// \param known  the level that RemoveCoarserBase returned; null to fit a new level to the
    /// current one.
    /// \return the replaced data.
    /// \throw HostError during a stroke; Cancelled. In both cases, nothing has changed.
    OldBaseData AddCoarserBase(CoarseFaces& coarse,
                               std::unique_ptr<LevelMesh> known = nullptr,
                               JobControl* job = nullptr);
    /// Removes level 0 again and restores the previous numbering of the levels. If the geometry has
    /// a mirror, restores the previous one, or finds one if there was none before.
    std::unique_ptr<LevelMesh> RemoveCoarserBase(const CoarseFaces& coarse, OldBaseData old);

    /// All levels of a geometry, with the data that refers to their vertices and faces. Layers stay
    /// in the geometry's stack, which finds them by their level.
    struct AllLevels {
        std::vector<std::unique_ptr<LevelMesh>> levels;
        uint32_t bound = 0;
        std::unique_ptr<TopologicalMirror> mirror;
        SurfaceAttributes attributes;
    };
    /// Makes this geometry the owner of all levels and layers of another one, without changing its
    /// own levels. The levels can then be installed with ExchangeLevels.
    /// \param other  a geometry without undo steps, observers and open strokes. It has no levels
    /// afterwards and can only be destroyed.
    AllLevels Adopt(LevelGeometry& other);
    /// Exchanges all levels with the ones in `other`, which belong to this geometry but are not in
    /// its hierarchy. Levels outside the hierarchy keep their content, layers and synchronisation
    /// state, so a second call restores the geometry bit-exactly. Cost: O(1), plus the observers.
    /// \throw HostError during a stroke; nothing has then changed.
    void ExchangeLevels(AllLevels& other);

    /// Returns the number of vertices of one additional level. Cost: O(faces) of level 0.
    uint64_t CountNextLevelVertices() const;
    /// Adds a level on top that has only topology; the caller fills in its content. Positions,
    /// normals and freeze amounts are zero, and the bound level does not change.
    /// \throw HostError and Cancelled, like Subdivide.
    LevelMesh& AddLevel(JobControl* job = nullptr);
    /// Returns the state of level `index` with which its neighbours were last synchronised, in
    /// ascending order of the vertices.
    /// \throw Cancelled.
    SeenByNeighbours Seen(uint32_t index, JobControl* job = nullptr) const;
    /// Used while loading the content of a geometry: binds the level without propagating changes,
    /// and sets the synchronisation state of the levels. The face flags of the highest level
    /// determine the hidden faces of all levels.
    /// \param seenLevels  one entry per level.
    void Restore(uint32_t boundIndex, const std::vector<SeenByNeighbours>& seenLevels);

    /// Returns one Catmull-Clark refinement of the current positions of level `index`. These are
    /// the positions that the level above would have without detail.
    std::vector<Vector> RefinedPositions(uint32_t index) const;

    /// The attributes of level 0; LevelSource refines them for export.
    const SurfaceAttributes& Attributes() const { return attributes; }
    /// Used while loading the content of a geometry. The lists must match the faces and vertices of
    /// level 0.
    void RestoreAttributes(SurfaceAttributes carried) { attributes = std::move(carried); }
    /// Exchanges the vertex colours with others: one per vertex of level 0, or none.
    void ExchangeColors(std::vector<std::array<float, 4>>& colors, bool& hasAlpha) noexcept {
        attributes.colors.swap(colors);
        std::swap(attributes.hasAlpha, hasAlpha);
    }

    /// \name Edits of the topology of level 0 (TriangleEdit)
    /// @{

    /// Returns the reason why the topology cannot be edited, as the end of a sentence about the
    /// mesh, such as "has layers"; empty if it can.
    std::string WhyTopologyIsFixed() const;
    SurfaceAttributes& AttributesForEdit() { return attributes; }
    /// An edited mesh has no topological mirror; the edit's undo step keeps the previous one.
    void ExchangeMirror(std::unique_ptr<TopologicalMirror>& other) { mirror.swap(other); }
    /// @}

    /// Returns the bound level as a polygon mesh, for export. Positions are mesh-local, or in world
    /// space if `world` is set.
    PolygonMesh ToPolygons(bool world) const;

    /// Computes the topological mirror from the current level 0. MirrorVertex of the levels then
    /// uses it.
    /// \return false if the mesh has no topological mirror; an earlier one is then discarded.
    bool FindMirror(JobControl* job = nullptr);
    void ClearMirror() { mirror.reset(); }
    /// Used while loading the content of a geometry.
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
    /// Number of edges of the highest level.
    uint64_t CountEdges() const;
    /// Implements BindLevel without notifying the observers. Appends each change to `carried` as
    /// soon as it is made.
    /// \throw Cancelled; the caller then restores the levels with Revert.
    void CarryTo(uint32_t index, std::vector<CarriedLevel>& carried, JobControl* job);
    /// Reverts a switch that was cancelled before it was reported.
    void Revert(LevelSwitch& before);
    /// Implements ApplyToLowerLevels and, like CarryTo, does not notify the observers.
    void ShapeLowerLevels(std::vector<CarriedLevel>& changed, JobControl* job);
    void SwapCarried(std::vector<CarriedLevel>& carried);
    void RestoreSeen(const LevelSwitch& state);
    /// Starts recording the values of level `index` that later changes replace, so that the
    /// neighbouring levels can be synchronised. Must be called before the level can change.
    void KeepSeen(uint32_t index);
    /// Discards the recorded older values of a level if the level has not changed.
    void DropUnchanged(uint32_t index);
    /// Reports to the observers which changes were propagated to a level.
    void ReportCarried(const CarriedLevel& carried);
    /// Reports a bound level that was replaced or has different vertices or faces; called after the
    /// propagated changes are reported.
    void ReportSwitch(uint32_t boundBefore, const std::vector<CarriedLevel>& carried);
    void CarryUp(uint32_t index, std::vector<CarriedLevel>& carried, JobControl* job);
    void CarryDown(uint32_t index, std::vector<CarriedLevel>& carried, JobControl* job);
    void CarryFreezeUp(uint32_t index, std::vector<CarriedLevel>& carried, JobControl* job);
    void CarryFreezeDown(uint32_t index, std::vector<CarriedLevel>& carried, JobControl* job);
    void Renumber(uint32_t index,
                  const std::vector<uint32_t>& vertexMap,
                  const std::vector<uint32_t>& faceMap);
    /// Renumbering of the vertices and faces of a level.
    struct LevelNumbers {
        std::vector<uint32_t> vertexMap;
        std::vector<uint32_t> faceMap;
    };
    /// Renumbers level `first` and each higher level to match the level below it. Afterwards the
    /// faces of the levels refer to the new vertices; RenumberLevels updates all other data.
    /// \param facesBefore  receives the previous faces of each level; may be null.
    std::vector<LevelNumbers> RefineNumbers(uint32_t first,
                                            FaceRenumbering faces,
                                            std::vector<uint32_t> lowerMap,
                                            std::vector<std::vector<uint32_t>>* facesBefore,
                                            JobControl* job);
    /// Computes the positions, mask and normals of a new level 0 that is fitted to level 1.
    /// \param fineMap  renumbering of level 1's vertices.
    void FitBase(const CoarseFaces& coarse, const std::vector<uint32_t>& fineMap, JobControl* job);
    void RenumberLevels(uint32_t first, const std::vector<LevelNumbers>& numbers);
    void NumberLevels();
    /// Discards the state that was recorded for a level below level 0, because no such level
    /// exists.
    void DropFromBelow();

    uint32_t bound = 0;
    MatrixTransform transform;
    SurfaceAttributes attributes;
    /// Must outlive the history and all levels, because they notify it when they are destroyed.
    std::unique_ptr<LayerStack> layers;
    UndoHistory history;
    CarryCounts carryWork;
};

/// Returns the geometry that a level belongs to.
inline LevelGeometry& GeometryOf(const LevelMesh& level) {
    return static_cast<LevelGeometry&>(level.Hierarchy());
}

}  // namespace trovik
