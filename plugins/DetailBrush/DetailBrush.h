// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/BrushOperation.h"

#include <memory>

namespace trovik {

/// Snapshot of the vertices that a tessellating stroke touches. Records take 28 bytes each and are
/// stored in pages.
struct OriginalData {
    uint32_t vertexLimit = 0;
    Mesh* sourceMesh = nullptr;
    /// For each vertex: the index of its record, or -1.
    int32_t* recordOfVertex = nullptr;
    uint32_t recordCount = 0;
    uint32_t recordsPerPage = 0;
    uint32_t pageShift = 0;
    uint32_t pageMask = 0;
    uint32_t pageAlignment = 0;
    Store<void*> pages;
};

class StrokeTessellator;

/// Brush base class that can refine the mesh under the brush during a stroke, if the stroke loop
/// has set BrushSettings::detail. Only triangle meshes with a single level and without layers can
/// be refined. While `useTessellator` is false, or while no stroke is open, no mesh is editable,
/// and requests to refine have no effect.
class TROVIK_API DetailBrush : public BrushOperation, public FaceEnumerator {
public:
    DetailBrush();
    ~DetailBrush() override;
    const BrushOperation& operator=(const BrushOperation& other) override;

    void BeginStroke(Mesh* mesh, Modifier modifier, TriggerType trigger) override;
    void EndStroke() override;
    void Serialize(Stream& stream) override;
    void OnNodeEvent(const Attribute& attribute, NodeEventType type) override;
    /// Called by the host before each stroke: switches the tessellator on or off according to
    /// BrushSettings::detail.
    bool CheckValidity() override;
    /// Returns the vertex's position at first touch if the open change has a record of it,
    /// otherwise its current position.
    Vector VertexOriginalPosition(Mesh* mesh, uint32_t vertex) override;
    void OnEdgeSplit(Mesh* mesh, uint32_t vertexA, uint32_t vertexB, uint32_t newVertex) override;
    void OnEdgeFlip(Mesh* mesh, uint32_t vertexA, uint32_t vertexB) override;
    void OnEdgeCollapse(Mesh* mesh, uint32_t kept, uint32_t removed) override;

    void Operator(Mesh* mesh, uint32_t face) override;
    /// Returns whether the face is live and within the reach that InitializeTessellator set;
    /// always false while refinement is off.
    bool Tester(Mesh* mesh, uint32_t face) override;

    /// Collects the faces under the brush for refinement, by a walk that starts at the hit.
    void CollectFaces();
    /// Returns whether the mesh of the last InitializeTessellator call can be refined.
    bool CurrentMeshEditable() const;
    /// Returns whether strokes with detail can change the topology of the mesh.
    bool MeshEditable(const Mesh* mesh) const;
    /// Splits long edges and collapses short ones among the collected faces, and reports each
    /// change by OnEdgeSplit, OnEdgeFlip and OnEdgeCollapse.
    /// \param refine, reduce  whether to split and to collapse, if the settings allow it.
    /// \param relax  whether to move vertices around changed edges tangentially.
    /// \return the number of topological changes.
    int DoRefineReduce(bool refine, bool reduce, int passes, bool relax);
    /// Prepares the refinement of one dab.
    /// \param change  the open change of the mesh.
    /// \param reach  the radius of the refined region, as a multiple of the radius of the dab.
    /// \param underBrush  if false, the whole mesh is refined.
    /// \param resetOriginals  whether to discard the snapshot of the vertices touched so far.
    void InitializeTessellator(const SurfacePoint* hit,
                               MeshChange* change,
                               float reach,
                               bool underBrush,
                               bool resetOriginals);
    /// Notifies the user that the mesh cannot be refined and why; once per stroke.
    void ShowTessellationHUD();

    /// Whether the brush refines the mesh under it.
    bool useTessellator = false;
    /// Whether to refine only once every few dabs.
    bool refineAtIntervals = false;
    /// Null unless a tessellating stroke is active.
    OriginalData* originalData = nullptr;

private:
    struct StrokeState;
    std::unique_ptr<StrokeState> stroke;
};

}  // namespace trovik
