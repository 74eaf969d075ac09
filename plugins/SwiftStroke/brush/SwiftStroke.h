// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "DetailBrush.h"
#include "kernels/KernelSwitches.h"
#include "stroke/BrushSpace.h"
#include "topology/PatchCache.h"

namespace trovik {

class PatchMap;
struct BatchMovers;
enum class Tool : uint32_t;

/// One entry of a patch kernel's work list.
struct PatchVertexEntry {
    uint32_t vertex;  ///< vertex index in the mesh
    uint32_t face;    ///< a face of the patch that uses the vertex
    uint32_t cell;    ///< cell in the grids that include the ghost layer
};
static_assert(sizeof(PatchVertexEntry) == 12);

/// A mesh that the stroke has bound, and the mesh's undo record.
struct MeshChangePair {
    Mesh* mesh;
    MeshChange* change;
};
static_assert(sizeof(MeshChangePair) == 16);

/// A vertex whose normal must be recomputed at the end of the dab.
struct DeferredNormal {
    uint32_t face;
    uint32_t vertex;
};
static_assert(sizeof(DeferredNormal) == 8);

/// The brush: fifteen tools in one class. It is a scene node, an operation that the host's stroke
/// loop calls, and the visitor for the mesh traversals that find the patches and vertices under the
/// brush.
///
/// A stroke consists of one BeginStroke, one ApplyDab for every hit, and one EndStroke. A dab
/// determines the radius, patch level and direction (stroke/), traverses the patches of the mesh
/// and runs one of 1024 kernels on each (kernels/). For each patch, it also reads the ghost layer
/// and recomputes the normals (topology/).
///
/// State belongs to the brush (attributes, brushSpace, the stamp cache), to the active tool (flags,
/// set at every activation) or to the stroke. Kernels also use the members as scratch memory, so a
/// brush is not re-entrant. All work is done on the calling thread. The members are public because
/// the kernel stages, which access them, are free functions.
class SwiftStroke : public DetailBrush,
                    public AdjacentVertexEnumerator,
                    public VertexEnumerator,
                    public MeshUnlocker {
public:
    SwiftStroke();
    ~SwiftStroke() override;

    // --- Node ---
    void OnNodeEvent(const Attribute& attribute, NodeEventType type) override;
    void Serialize(Stream& stream) override;
    const ClassDesc* RuntimeClass() const override;
    static const ClassDesc* StaticClass();
    /// Creates one brush (count below 2) or an array of `count` brushes and initialises them;
    /// returns the first.
    static Node* Create(unsigned count);

    // --- Brush queries ---
    int StrokeDrawMode() const override;
    bool IsImprintTool() const override;
    bool NonImprintQueryA() const override;
    bool NonImprintQueryB() const override;
    float BuildUpRate() const override;
    bool AlwaysTrueQuery() const override;
    /// Copies all settings except "drawfromcenter", which is specific to each brush.
    const BrushOperation& operator=(const BrushOperation& other) override;

    // --- Tools (brush/ToolActivation.cpp) ---
    using DetailBrush::SetActiveConfiguration;
    void SetActiveConfiguration(BrushConfiguration* configuration) override;
    void ResetBrushConfiguration() override;
    /// Sets "builduprate" and its cube, which the kernels read.
    void setBuildUpRate(float rate);

    // --- Stroke (stroke/) ---
    void BeginStroke(Mesh* strokeMesh, Modifier modifier, TriggerType trigger) override;
    void EndStroke() override;
    /// Applies the tool once at a point on the surface. A dab that cannot run (no falloff, no mesh,
    /// no direction yet) returns without an error and does not change `box`.
    /// \param hit  mesh-local.
    /// \param position  dab centre, world space.
    /// \param size  radius, world units.
    /// \param pressure  0 to 1, scales the build-up.
    /// \param strength  effective strength, before the tool's and the stroke's factors are applied.
    /// \param box  world space; extended by the dab.
    /// Errors: those of SetMesh.
    void ApplyDab(const SurfacePoint& hit,
                  const Vector& position,
                  float size,
                  float pressure,
                  float strength,
                  AxisAlignedBoundingBox& box) override;
    /// Applies the tool to a whole mesh at once, without a radius. All vertices have the same
    /// weight, or are weighted by how directly they face the camera. Can be called during a stroke
    /// or outside one.
    void ApplyToWholeMesh(Mesh* wholeMeshTarget, float strength, bool byFacing) override;
    /// Binds a mesh: locks it, reads its properties, opens its undo record and collects its
    /// renderers. If the lock is refused or the undo record cannot be stored, `mesh` is null
    /// afterwards.
    /// Errors: "Invalid mesh specified" if the mesh is not a SubdivisionLevel; the mesh then stays
    /// locked. Exceptions from the host propagate; the mesh is then unbound if its undo record has
    /// not been opened yet.
    void SetMesh(Mesh* newMesh);
    /// Unlocks the bound mesh, if any, and reports that the mesh has changed.
    void FinishMesh();
    bool IsStrokeFree() override;

    // --- Traversal callbacks ---
    using DetailBrush::Operator;
    void Operator(Mesh* walked, uint32_t vertex, uint32_t face) override;
    /// Adds an adjacent vertex to the ring mean (topology/PatchHalo.cpp).
    void Operator(uint32_t vertex, uint32_t face) override;
    /// Processes one patch (kernels/KernelDispatch.cpp).
    /// \return whether the patch is inside the dab.
    bool Tester(Mesh* walked, uint32_t face) override;
    /// Processes one vertex of a mesh that has no patches (topology/VertexKernel.cpp).
    bool Tester(Mesh* walked, uint32_t vertex, uint32_t face) override;

    // --- Kernels (kernels/) ---
    template <KernelSwitches switches>
    bool PatchKernel(uint32_t face);
    /// The part of a kernel that is the same for all kernels; it calls the kernel's own loops
    /// through `movers`. See kernels/batch/RunPatch.cpp.
    bool RunPatch(uint32_t face, const KernelSwitches& switches, const BatchMovers& movers);
    /// Returns the switches of this dab, excluding withFreeze.
    KernelSwitches DabSwitches() const;
    /// Returns the switches of this dab, with withFreeze queried from the mesh; called for every
    /// patch.
    KernelSwitches PatchSwitches() const;
    /// Fills patchVertexList for a patch.
    /// \return the number of entries.
    uint32_t BuildWorkList(uint32_t patch);
    /// Returns whether this dab reads the stamp at the topological mirror vertex.
    bool WantsMirroredStampRead();
    /// Computes the normals of a whole patch from positionGrid.
    void RefreshPatchNormals(const uint32_t* slice);
    /// Computes the normal of one vertex of the patch; the result is bit-identical to that of
    /// RefreshPatchNormals. Requires the four cells around the vertex.
    void RefreshNormal(uint32_t row, uint32_t column, uint32_t vertex);
    void NotifyRenderersOfPatch(uint32_t patch, uint32_t faceBase);

    // --- Seams and topology (topology/) ---
    /// Reads the one-cell ghost layer around a patch into the grids; for Smooth, also reads the
    /// patch itself. The grids have gridStride x gridStride cells, row by row; patch vertex (r, c)
    /// is in cell (r + 1) * gridStride + c + 1. At an open border, the ghost cells repeat the
    /// patch's own edge. The four outermost corner cells are never written. Values are mesh-local,
    /// with w 0.
    void FillPatchHalo(Mesh* walked, uint32_t patch);
    /// Copies the current positions of the vertices of a patch into positionGrid.
    void ReadPatchPositions(const uint32_t* slice);
    /// Returns whether this dab may use and extend the patch cache of the stroke.
    bool MayUsePatchCache();
    /// If the patch cache shows that the patch is culled, performs only the side effects of
    /// visiting it.
    /// \return false, without any effect, if the patch is not culled.
    bool SkipCulledPatch(uint32_t patch);
    /// Finds the ghost vertices near both ends of each side of a patch.
    /// \return false if a side of the patch is open.
    bool FindRingEnds(uint32_t patch, PatchCache::RingEnds& ends) const;
    /// Reads the cells from which the normals at a culled patch's corners are computed.
    void ReadCornerCells(const PatchCache::Patch& patch);
    /// Returns whether the four corners of the patch in the work list are distinct vertices. If so,
    /// no two sides of the patch are joined, and each vertex is listed once.
    bool ListsEachVertexOnce() const;
    /// Whether the vertices and normals of a listed patch are prefetched just before use instead of
    /// when the list is built. In a deep patch, an early prefetch would be evicted from the CPU
    /// caches before its use.
    bool PrefetchesLate() const { return patchLevel >= 6; }
    /// Whether patchVertexList was built for the patch with this slice.
    bool IsListed(const uint32_t* slice) const {
        return slice == listedSlice && patchLevel == listedLevel;
    }
    /// Computes the mean over a vertex and all adjacent vertices: the mean position, or the mean
    /// value of the active layer if Smooth works on the layer.
    void RingAverage(Vector& out, uint32_t vertex, uint32_t face);
    /// Modifies the cells around the four corners of the patch so that the five-cell mean there
    /// equals the true ring mean. `saved` receives the original values of the eight modified cells.
    void CorrectCorners(uint32_t patch, Vector (&saved)[8]);
    void RestoreCorners(const Vector (&saved)[8]);
    /// Reads the vertex's value in the active layer and creates the vertex's record if necessary.
    void ReadLayerValue(Vector& out, uint32_t vertex, uint32_t face);
    void FlushDeferredNormals();
    /// \return whether the vertex is visited for the first time in this traversal and is inside the
    /// brush.
    bool SamplePlaneVertex(uint32_t vertex);
    bool SamplePlaneVertexUnchecked(uint32_t vertex);
    bool SamplePlanePatch(uint32_t patch);
    bool SampleCachedPatch(const PatchCache::Patch& patch);

    // --- Direction (stroke/DabDirection.cpp, stroke/SurfaceSampling.cpp) ---
    /// Determines the direction or the plane of the dab.
    /// \return false if the dab cannot run.
    bool PrepareDab(const SurfacePoint& hit);
    void SamplePlane(const SurfacePoint& hit);

    // --- Stamp (stroke/StampPreparation.cpp) ---
    /// Reads the stamp settings and updates the pixel cache.
    void PrepareStamp();
    /// Returns whether the name contains ".vdm" or "_vdm", ignoring case.
    static bool IsVectorStampName(const QString& name);

    // --- Plain setters ---
    void setIsBulge(bool on) { isBulge = on; }
    void setUsePatchNormal(bool on) { usePatchNormal = on; }
    void setIsPlaneTool(bool on) { isPlaneTool = on; }
    void setPlaneDirectionSign(float sign) { planeDirectionSign = sign; }
    void setPlaneOffsetFactor(float factor) { planeOffsetFactor = factor; }
    void setPlaneClampMax(float limit) { planeClampMax = limit; }
    void setPlaneClampMin(float limit) { planeClampMin = limit; }
    void setIsPinch(bool on) { isPinch = on; }
    void setIsSmear(bool on) { isSmear = on; }
    void setIsSmooth(bool on) { isSmooth = on; }
    void setIsWax(bool on) { isWax = on; }
    /// Sets the radius and updates radiusSquared, inverseRadius and falloffScale.
    void setRadius(float value);
    /// Sets the last index of the falloff table and updates falloffLast and falloffScale.
    void setFalloffLast(float value);
    /// Writes x, y, z of a unit normal to the packed normal of the vertex in `mesh`.
    void setVertexNormal(uint32_t vertex, const HWVector& normal);

    /// The open change of the mesh that was bound last. Requires a bound mesh, which always has a
    /// change.
    MeshChange* CurrentChange() const { return meshChanges[meshChanges.fill - 1].change; }
    /// Whether Smooth averages values of the active layer. If so, it creates records for every
    /// vertex that it reads, including ghost vertices.
    bool SmoothsLayer() const { return isSmooth && !affectAllLayers.Value() && layer != nullptr; }
    /// Returns the slice of the face vertex indices of `mesh` that starts at face `patch` *
    /// facesPerPatch.
    const uint32_t* PatchSlice(uint32_t patch) const {
        const uint32_t first = patch * facesPerPatch * 4;
        const Store<uint32_t>& indices = mesh->faceVertexIndices;
        return indices.array + (first < indices.capacity ? first : 0);
    }

    // --- Attributes, in order of creation ---
    AttributeInstance<bool> bilinearSample;
    AttributeInstance<bool> globalPlane;
    AttributeInstance<bool> updatePlane;
    AttributeInstance<bool> affectAllLayers;
    AttributeInstance<bool> drawFromCenter;
    AttributeInstance<QString> falloffName;
    AttributeFloatRange buildUpRate;

    // --- Flags of the tool ---
    bool isSmooth = false;
    bool isPinch = false;
    bool isPlaneTool = false;
    bool isBulge = false;
    bool isSmear = false;
    bool isWax = false;

    // --- The bound mesh ---
    bool nonUniformScale = false;
    bool rendererTakesFaces = true;
    bool meshHasFreeze = false;
    bool meshHasLayer = false;

    // --- Direction and plane ---
    /// Whether each vertex moves along its own stored normal.
    bool followVertexNormal = false;
    float planeClampMin = -100000000.0f;
    float planeClampMax = 100000000.0f;
    float planeOffsetFactor = 0.0f;
    float planeDirectionSign = 1.0f;
    float strokePlaneSign = 1.0f;
    /// Number of main-pass dabs completed since BeginStroke; 0 during the first dab.
    uint32_t planeDabCount = 0;
    float planeOffset = 0.0f;
    /// If false, the plane's normal and centre are sampled over the brush area instead of along a
    /// cross through the hit.
    bool usePatchNormal = false;
    float buildUpRateCubed = 0.0f;
    /// Whether the current traversal only samples a plane.
    bool planeSampling = false;
    bool wholeMesh = false;
    bool wholeMeshFacing = false;
    Vector wholeMeshView;
    bool coarseMeshWarned = false;
    bool inTemporarySmooth = false;
    /// The tool to restore at the end of a stroke that was temporarily switched to Smooth.
    BrushConfiguration* configurationBeforeSmooth = nullptr;
    Vector ringSum;
    uint32_t ringCount = 0;
    Vector planeSamplePositionSum;
    Vector planeSampleNormalSum;
    float planeSampleWeight = 0.0f;

    // --- Levels of the dab ---
    /// Number of subdivisions inside one patch, which has 2^patchLevel faces per side.
    int32_t patchLevel = 0;
    /// Index of the level whose faces are the patches.
    uint32_t patchMeshLevel = 0;
    uint32_t facesPerPatch = 0;
    SubdivisionLevel* mesh = nullptr;
    /// The lowest quad level, which is the parent of the patch map.
    SubdivisionLevel* patchMapMesh = nullptr;
    SubdivisionLevel* patchMesh = nullptr;
    Layer* layer = nullptr;
    uint32_t dabStamp = 0;
    PatchMap* patchMap = nullptr;
    Vector localCenter;
    Store<MeshRenderer*> renderers{"swift stroke renderers"};

    // --- Scratch memory of the kernels ---
    PatchVertexEntry* patchVertexList = nullptr;
    int32_t patchVertexListCapacity = 0;
    /// The PatchSlice and patchLevel of the patch to which patchVertexList belongs; the slice is
    /// null if the list may be out of date. Only compared, never dereferenced.
    const uint32_t* listedSlice = nullptr;
    int32_t listedLevel = 0;
    void* spareScratch = nullptr;
    uint64_t spareScratchSize = 0;
    uint32_t dabReserved = 0;

    // --- Strength and falloff ---
    float strokeStrengthScale = 0.0f;
    float falloffLastFloat = 0.0f;
    float radius = 0.0f;
    float radiusSquared = 0.0f;
    float inverseRadius = 0.0f;
    float dabStrength = 0.0f;
    float dabPressure = 0.0f;
    AxisAlignedBoundingBox* dirtyBox = nullptr;
    BrushSpace* brushSpace = nullptr;
    void* brushSpaceAllocation = nullptr;
    float planeDistance = 0.0f;
    /// 0 for the main hit, 1 for the mirrored hit; the index into the three arrays below.
    uint32_t mirrorPass = 0;
    /// Exactly 0 until a plane has been determined.
    float planeDistances[2] = {};
    Vector directions[2];
    Vector planePoints[2];
    const float* falloffTable = nullptr;
    int32_t falloffLast = 0;
    float falloffScale = 0.0f;

    // --- Stamp cache ---
    bool stampEnabled = false;
    /// After the cache is rebuilt, this pointer is only compared and never dereferenced.
    Image* stampImage = nullptr;
    uint32_t stampImageVersion = 0;
    uint32_t stampWidth = 0;
    uint32_t stampHeight = 0;
    float* stampPixels = nullptr;
    bool stampInverted = false;
    float stampFactor = 0.0f;
    float stampOffset = 0.0f;
    QString stampName;
    bool stampTiled = false;
    bool stampBuildUp = false;
    bool stampIsVector = false;
    float stampScaleU = 0.0f;
    float stampScaleV = 0.0f;
    float stampScaleHeight = 0.0f;

    /// All bindings of this stroke, in order; the last entry contains the current change.
    Store<MeshChangePair> meshChanges{"unknown"};
    uint32_t gridStride = 0;
    HWVector* positionGrid = nullptr;
    HWVector* layerGrid = nullptr;
    void* positionGridAllocation = nullptr;
    void* layerGridAllocation = nullptr;
    Store<DeferredNormal> deferredNormals{"unknown"};
    uint32_t refineDabCount = 0;
    uint32_t refineInterval = 0;
    bool strokeActive = false;
    PatchCache patchCache;
    /// If false, no patch is skipped or cached. Tests use this to compare results.
    bool usesPatchCache = true;

private:
    class NormalRefresh;
    void ResetToolState();
    void ShowCommonAttributes();
    void ApplySharedDefaults();
    void SetToolFlags(Tool tool);
    void ShowToolAttributes(Tool tool);
    void ApplyToolDefaults(Tool tool);
    void ReleaseScratch();
    int32_t WantedPatchLevel(float size, float edge) const;
    void WarnOfCoarseMesh(float size, float edge);
    void SplitPatchLevel(int32_t wanted);
    void SetUpRadius(const Vector& position, float size);
    void SetUpPlaneStep(float strength);
    void SetUpStampFrame(const Vector& position);
    void AllocateGrids();
    void ReleaseGrids();
    void RefineUnderBrush(const SurfacePoint& hit);
    void MergeDirtyBox(AxisAlignedBoundingBox& box) const;
    void SampleCross(const SurfacePoint& hit, Vector& normal, Vector& position);
    void SampleArea(const SurfacePoint& hit, Vector& normal, Vector& position);
    void WriteDirection(int mode, const SurfacePoint& hit);
    void MirrorDirection(int mode, const SurfacePoint& hit);
    void ReadMesh();
    void OpenChange();
    void BindPatchMap();
    void CollectRenderers();
    void RebuildStamp();
    template <bool fetches, class VertexAt>
    void FillWorkList(uint32_t patch, const VertexAt& vertexAt);
    void ReadRingSide(const uint32_t* slice, uint32_t side, uint32_t neighbour, bool readsLayer);
    void ReadRingLayer(const uint32_t* ringVertices, uint32_t count, uint32_t cell, int32_t step);
    void RepeatOpenSide(uint32_t side, bool layerToo);
    void ReadPatchLayerValues(const uint32_t* slice, uint32_t patch);
    void RecordOriginalData(uint32_t vertex);
};

/// Number of vertices that kernels have processed in this stroke, across all brushes.
extern uint32_t strokeVertexCount;

}  // namespace trovik
