// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/BrushOperation.h"

namespace trovik {

/// Snapshot of the vertices that a tessellating stroke touches. Records are 28 bytes, in pages.
struct OriginalData {
    uint32_t vertexLimit = 0;
    Mesh* sourceMesh = nullptr;
    /// One per vertex: index of its record, -1 without.
    int32_t* recordOfVertex = nullptr;
    uint32_t recordCount = 0;
    uint32_t recordsPerPage = 0;
    uint32_t pageShift = 0;
    uint32_t pageMask = 0;
    uint32_t pageAlignment = 0;
    Store<void*> pages;
};

/// Brush base class that can refine the mesh under the brush while a stroke runs. Refinement works
/// only on meshes that are not subdivision levels of quads; while `useTessellator` is false none
/// takes place, no mesh counts as editable, and every request to refine changes nothing.
class TROVIK_API DetailBrush : public BrushOperation, public FaceEnumerator {
public:
    DetailBrush();
    ~DetailBrush() override;
    const BrushOperation& operator=(const BrushOperation& other) override;

    void BeginStroke(Mesh* mesh, Modifier modifier, TriggerType trigger) override;
    void EndStroke() override;
    void Serialize(Stream& stream) override;
    void OnNodeEvent(const Attribute& attribute, NodeEventType type) override;
    bool CheckValidity() override;
    /// Position at first touch in the open change, or the present one.
    Vector VertexOriginalPosition(Mesh* mesh, uint32_t vertex) override;
    void OnEdgeSplit(Mesh* mesh, uint32_t vertexA, uint32_t vertexB, uint32_t newVertex) override;
    void OnEdgeFlip(Mesh* mesh, uint32_t vertexA, uint32_t vertexB) override;
    void OnEdgeCollapse(Mesh* mesh, uint32_t kept, uint32_t removed) override;

    void Operator(Mesh* mesh, uint32_t face) override;
    /// Whether the face may be sculpted with detail; false while nothing is refined.
    bool Tester(Mesh* mesh, uint32_t face) override;

    /// Gathers the faces under the brush for refinement.
    void CollectFaces();
    /// Whether the mesh at hand can be refined now.
    bool CurrentMeshEditable() const;
    bool MeshEditable(const Mesh* mesh) const;
    /// Splits long edges and joins short ones among the collected faces.
    /// \return the number of changes to the mesh.
    int DoRefineReduce(bool refine, bool reduce, int passes, bool relax);
    void InitializeTessellator(
        const SurfacePoint* hit, MeshChange* change, float reach, bool refine, bool reduce);
    /// Tells the user why the mesh cannot be refined.
    void ShowTessellationHUD();

    /// The brush refines the mesh under it.
    bool useTessellator = false;
    /// Refine every few dabs only.
    bool refineAtIntervals = false;
    /// Null outside a tessellating stroke.
    OriginalData* originalData = nullptr;
};

}  // namespace trovik
