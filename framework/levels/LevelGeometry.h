// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/edits/UndoHistory.h"
#include "framework/files/PolygonMesh.h"
#include "framework/levels/GeometryObserver.h"
#include "framework/levels/LevelMesh.h"
#include "framework/levels/Placement.h"
#include "framework/levels/TopologicalMirror.h"

#include <memory>
#include <vector>

namespace trovik {

class LayerStack;

/// A mesh with all its subdivision levels, under one transformation. One level is bound at a time:
/// the one that is shown and sculpted.
class TROVIK_API LevelGeometry : public Geometry {
public:
    /// Level 0 is what was imported, quads or triangles; a mesh with other faces (or with both)
    /// gets one Catmull-Clark step, and that result is level 0. The faces must form oriented
    /// manifolds, possibly open (MakeOrientedManifold). \throw HostError naming what is wrong.
    explicit LevelGeometry(const PolygonMesh& polygons);
    ~LevelGeometry() override;

    SubdivisionLevel* LowestLevel() const override;
    SubdivisionLevel* HighestLevel() const override;
    SubdivisionLevel* LevelByIndex(uint32_t index) const override;
    trovik::Transformation* Transformation() const override;

    uint32_t LevelCount() const { return static_cast<uint32_t>(levels.size()); }
    LevelMesh* Level(uint32_t index) const { return levels[index].get(); }
    LevelMesh* Bound() const { return levels[bound].get(); }
    uint32_t BoundIndex() const { return bound; }
    Placement& Place() { return placement; }
    const Placement& Place() const { return placement; }

    /// Adds a level on top by one Catmull-Clark step (boundary: edges and corners kept) and binds
    /// it. Freeze amounts are carried up. \throw HostError when the level would pass 2^32 - 2
    /// vertices or faces, or when the accounted memory refuses; nothing has changed then.
    void Subdivide();

    /// Binds another level. What was changed on a lower level since the levels above last saw it
    /// is carried up: a fine vertex moves by the difference of its refined place. With no change
    /// in between, no bit of any level changes. \return the vertices of the newly bound level that
    /// moved, with their positions before (for undo).
    struct Moved {
        uint32_t level;
        std::vector<uint32_t> vertices;
        std::vector<Vector> positionsBefore;
    };
    std::vector<Moved> BindLevel(uint32_t index);

    /// Number of vertices that one more level would have. Cost: O(faces).
    uint64_t CountNextLevelVertices() const;
    /// Adds a level on top with its topology alone, for who brings its content: positions, normals
    /// and freeze amounts are zero, and no other level is bound. \throw HostError as Subdivide.
    LevelMesh& AddLevel();
    /// Positions of level `index` as the level above last saw them; empty while unchanged since.
    const std::vector<Vector>& SeenPositions(uint32_t index) const { return seenPositions[index]; }
    /// For who brings a geometry's content: binds the level, carries nothing up, and takes over
    /// what the levels above last saw. \param seen  per level empty, or one a vertex.
    void Restore(uint32_t boundIndex, std::vector<std::vector<Vector>> seen);

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
    bool FindMirror();
    void ForgetMirror() { mirror.reset(); }
    /// For who brings a geometry's content.
    void RestoreMirror(std::unique_ptr<TopologicalMirror> found) { mirror = std::move(found); }
    /// Null until FindMirror has found one.
    const TopologicalMirror* Mirror() const { return mirror.get(); }

    UndoHistory& History() { return history; }

    /// The sculpt layers of all levels.
    LayerStack& Layers() { return *layers; }
    const LayerStack& Layers() const { return *layers; }

    /// Who hears of walks and changes on all levels; null for nobody. Borrowed.
    void SetObserver(GeometryObserver* newObserver) { observer = newObserver; }
    GeometryObserver* Observer() const { return observer; }

private:
    static void CarryFreeze(LevelMesh& coarse, LevelMesh& fine);
    static void RefreshNormalsAround(LevelMesh& level, const std::vector<uint32_t>& vertices);
    /// Takes down what the level above knows of level `index`, before it can change.
    void KeepSeen(uint32_t index);
    /// Brings level `index` + 1 up to date with what was changed below it.
    Moved CarryUp(uint32_t index);

    std::vector<std::unique_ptr<LevelMesh>> levels;
    uint32_t bound = 0;
    Placement placement;
    SurfaceAttributes attributes;
    /// Ends before the levels that its layers borrow, as the steps do that hold layers.
    std::unique_ptr<LayerStack> layers;
    UndoHistory history;
    GeometryObserver* observer = nullptr;
    std::unique_ptr<TopologicalMirror> mirror;
    /// Per level but the highest: positions as the level above last saw them; empty while unchanged
    /// since.
    std::vector<std::vector<Vector>> seenPositions;
};

}  // namespace trovik
