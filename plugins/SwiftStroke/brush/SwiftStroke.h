// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "DetailBrush.h"
#include "kernels/KernelSwitches.h"
#include "stroke/BrushSpace.h"
#include "topology/KnownPatches.h"

namespace trovik {

class PatchMap;
struct BatchMovers;
enum class Tool : uint32_t;

/// One entry of a patch kernel's work list.
struct PatchVertexEntry {
    uint32_t vertex;  ///< index in the mesh
    uint32_t face;    ///< a face of the patch that holds the vertex
    uint32_t cell;    ///< cell of the halo grids
};
static_assert(sizeof(PatchVertexEntry) == 12);

/// A mesh that the stroke has bound, and its undo record.
struct MeshChangePair {
    Mesh* mesh;
    MeshChange* change;
};
static_assert(sizeof(MeshChangePair) == 16);

/// A vertex whose normal is to be refreshed at the end of the dab.
struct DeferredNormal {
    uint32_t face;
    uint32_t vertex;
};
static_assert(sizeof(DeferredNormal) == 8);

/// The brush: fifteen tools in one class. It is a node of the scene, an operation that the host's
/// stroke loop drives, and the visitor that the mesh's walks call back for each patch and vertex
/// under the brush.
///
/// A stroke: BeginStroke, ApplyDab for every hit, EndStroke. A dab: settle radius, patch level and
/// direction (stroke/), let the mesh walk its patches, run one of 1024 kernels on each (kernels/),
/// read the ring around the patch and refresh its normals (topology/).
///
/// State has three lifetimes: the brush's (attributes, brushSpace, the stamp cache), the tool's
/// (flags, set anew at every activation) and the stroke's. The members are scratch for the kernels
/// too, so a brush is not re-entrant; everything runs on the thread that calls. They are public
/// because the stages of the kernels are free functions over them.
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
    /// Makes one brush (count below 2) or an array of `count`, initialised; answers the first.
    static Node* Create(unsigned count);

    // --- Brush queries ---
    int StrokeDrawMode() const override;
    bool IsImprintTool() const override;
    bool NonImprintQueryA() const override;
    bool NonImprintQueryB() const override;
    float BuildUpRate() const override;
    bool AlwaysTrueQuery() const override;
    /// Everything but "drawfromcenter", which each brush keeps for itself.
    const BrushOperation& operator=(const BrushOperation& other) override;

    // --- Tools (brush/ToolActivation.cpp) ---
    using DetailBrush::SetActiveConfiguration;
    void SetActiveConfiguration(BrushConfiguration* configuration) override;
    void ResetBrushConfiguration() override;
    /// Sets "builduprate" and the cube that the kernels read.
    void setBuildUpRate(float rate);

    // --- Stroke (stroke/) ---
    void BeginStroke(Mesh* strokeMesh, Modifier modifier, TriggerType trigger) override;
    void EndStroke() override;
    /// One application of the tool at one point of the surface. A dab that cannot run (no falloff,
    /// no mesh, no direction yet) ends silently and leaves `box` as it is.
    /// \param hit  mesh-local. \param position  dab centre, world. \param size  radius, world
    /// units. \param pressure  0 to 1, weighs the build-up. \param strength  effective strength
    /// before the tool's and the stroke's factors. \param box  world; leaves with the dab merged
    /// in. Errors: those of SetMesh.
    void ApplyDab(const SurfacePoint& hit,
                  const Vector& position,
                  float size,
                  float pressure,
                  float strength,
                  AxisAlignedBoundingBox& box) override;
    /// Applies the tool to a whole mesh at once, with no radius: every vertex weighs the same, or
    /// by how far it faces the camera. Runs inside a stroke or in place of one.
    void ApplyToWholeMesh(Mesh* wholeMeshTarget, float strength, bool byFacing) override;
    /// Binds a mesh: lock, storage, undo record, renderers. Whether it was taken shows in `mesh`,
    /// which is null if the lock is refused or there is no memory for the undo record.
    /// Errors: "Invalid mesh specified" for a mesh that is no SubdivisionLevel (it stays locked);
    /// what the host throws. If there is no undo record for the mesh by then, it is unbound.
    void SetMesh(Mesh* newMesh);
    /// Unlocks the bound mesh, if any, and reports it as changed.
    void FinishMesh();
    bool IsStrokeFree() override;

    // --- Walk callbacks ---
    using DetailBrush::Operator;
    void Operator(Mesh* walked, uint32_t vertex, uint32_t face) override;
    /// Adds an adjacent vertex to the ring mean (topology/PatchHalo.cpp).
    void Operator(uint32_t vertex, uint32_t face) override;
    /// One patch (kernels/KernelDispatch.cpp). \return whether the dab reached it.
    bool Tester(Mesh* walked, uint32_t face) override;
    /// One vertex of a mesh that has no patches (topology/VertexKernel.cpp).
    bool Tester(Mesh* walked, uint32_t vertex, uint32_t face) override;

    // --- Kernels (kernels/) ---
    template <KernelSwitches switches>
    bool PatchKernel(uint32_t face);
    /// What all kernels have in common, with the loops of one: see kernels/batch/RunPatch.cpp.
    bool RunPatch(uint32_t face, const KernelSwitches& switches, const BatchMovers& movers);
    /// The switches of this dab, all but withFreeze.
    KernelSwitches DabSwitches() const;
    /// The same with withFreeze, which the mesh is asked anew for every patch.
    KernelSwitches PatchSwitches() const;
    /// Fills patchVertexList for a patch. \return the number of entries.
    uint32_t BuildWorkList(uint32_t patch);
    /// Whether this dab reads the stamp on the other side of a topological mirror.
    bool WantsMirroredStampRead();
    /// Normals of a whole patch from positionGrid.
    void RefreshPatchNormals(const uint32_t* slice);
    /// The normal of one vertex of the patch, the same bits. Needs the four cells around it.
    void RefreshNormal(uint32_t row, uint32_t column, uint32_t vertex);
    void NotifyRenderersOfPatch(uint32_t patch, uint32_t faceBase);

    // --- Seams and topology (topology/) ---
    /// Reads the one-cell ring around a patch into the grids; for Smooth the patch itself too.
    /// Grids: gridStride x gridStride cells, row by row; patch vertex (r, c) lies in cell
    /// (r + 1) * gridStride + c + 1. At an open border the ring repeats the patch's own edge. The
    /// four outermost corner cells are never written. Mesh-local, w 0.
    void FillPatchHalo(Mesh* walked, uint32_t patch);
    /// Present positions of a patch's own vertices into positionGrid.
    void ReadPatchPositions(const uint32_t* slice);
    /// Whether this dab may use and widen what the stroke knows of its patches.
    bool MayRememberPatches();
    /// Leaves behind what a visit of the patch would, if the patch is known to be out of reach.
    /// \return false, with nothing done, if it is not.
    bool PassRestingPatch(uint32_t patch);
    /// Finds the vertices of the ring around a patch that lie at the ends of its sides.
    /// \return false if a side of the patch is open.
    bool FindRingEnds(uint32_t patch, KnownPatches::RingEnds& ends) const;
    /// Reads what the normals at the corners of a resting patch need.
    void ReadCornerCells(const KnownPatches::Patch& patch);
    /// Whether the four corners of the patch in the work list are four vertices. Then no two sides
    /// of it are glued to each other, and it lists each vertex once.
    bool ListsEachVertexOnce() const;
    /// Whether the vertices and normals of a listed patch are asked for just ahead of their use
    /// rather than by the list: those of a deep patch would leave the nearer caches again.
    bool FetchesLate() const { return patchLevel >= 6; }
    /// Whether patchVertexList lists the patch whose slice this is.
    bool IsListed(const uint32_t* slice) const {
        return slice == listedSlice && patchLevel == listedLevel;
    }
    /// Mean of a vertex and all its adjacent vertices: positions, or values of the active layer
    /// when Smooth works on the layer.
    void RingAverage(Vector& out, uint32_t vertex, uint32_t face);
    /// Makes the five-cell mean at the four patch corners equal the true ring mean. `saved`
    /// receives the eight cells that are bent for it.
    void CorrectCorners(uint32_t patch, Vector (&saved)[8]);
    void RestoreCorners(const Vector (&saved)[8]);
    /// The vertex's value in the active layer; makes its record at need.
    void ReadLayerValue(Vector& out, uint32_t vertex, uint32_t face);
    void FlushDeferredNormals();
    /// \return whether the vertex is new in this walk and inside the brush.
    bool SamplePlaneVertex(uint32_t vertex);
    bool SamplePlaneVertexUnchecked(uint32_t vertex);
    bool SamplePlanePatch(uint32_t patch);

    // --- Direction (stroke/DabDirection.cpp, stroke/SurfaceSampling.cpp) ---
    /// Finds direction or plane of the dab. \return false when the dab cannot run.
    bool PrepareDab(const SurfacePoint& hit);
    void SamplePlane(const SurfacePoint& hit);

    // --- Stamp (stroke/StampPreparation.cpp) ---
    /// Reads the stamp's switches and brings the pixel cache up to date.
    void PrepareStamp();
    /// ".vdm" or "_vdm" anywhere in the name, in any case.
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
    /// Keeps radiusSquared, inverseRadius and falloffScale in step.
    void setRadius(float value);
    /// Keeps falloffLast and falloffScale in step.
    void setFalloffLast(float value);
    /// Writes x, y, z of a unit normal into the vertex's packed normal of `mesh`.
    void setVertexNormal(uint32_t vertex, const HWVector& normal);

    /// The change of the last binding. Needs a bound mesh, which always has one.
    MeshChange* CurrentChange() const { return meshChanges[meshChanges.fill - 1].change; }
    /// Smooth averages values of the active layer. It then makes records for every vertex that it
    /// reads, including those of the ghost layer.
    bool SmoothsLayer() const { return isSmooth && !affectAllLayers.Value() && layer != nullptr; }
    /// The slice of `mesh`'s face vertex indices that begins at face `patch` * facesPerPatch.
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

    // --- The tool's flags ---
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
    /// Each vertex moves along its own stored normal.
    bool followVertexNormal = false;
    float planeClampMin = -100000000.0f;
    float planeClampMax = 100000000.0f;
    float planeOffsetFactor = 0.0f;
    float planeDirectionSign = 1.0f;
    float strokePlaneSign = 1.0f;
    /// Dabs of the main pass since BeginStroke; the first dab sees 0.
    uint32_t planeDabCount = 0;
    float planeOffset = 0.0f;
    /// False: the plane's normal and centre are collected over the brush area instead of being read
    /// along a cross through the hit.
    bool usePatchNormal = false;
    float buildUpRateCubed = 0.0f;
    /// The walk gathers a plane only.
    bool planeSampling = false;
    bool wholeMesh = false;
    bool wholeMeshFacing = false;
    Vector wholeMeshView;
    bool coarseMeshWarned = false;
    bool inTemporarySmooth = false;
    /// The tool to return to at the end of a stroke that Smooth was swapped in for.
    BrushConfiguration* configurationBeforeSmooth = nullptr;
    Vector ringSum;
    uint32_t ringCount = 0;
    Vector planeSamplePositionSum;
    Vector planeSampleNormalSum;
    float planeSampleWeight = 0.0f;

    // --- Levels of the dab ---
    /// Subdivisions inside one patch: 2^patchLevel faces a side.
    int32_t patchLevel = 0;
    /// Number of the level whose faces are the patches.
    uint32_t patchMeshLevel = 0;
    uint32_t facesPerPatch = 0;
    SubdivisionLevel* mesh = nullptr;
    /// Lowest quad level, parent of the patch map.
    SubdivisionLevel* patchMapMesh = nullptr;
    SubdivisionLevel* patchMesh = nullptr;
    Layer* layer = nullptr;
    uint32_t dabStamp = 0;
    PatchMap* patchMap = nullptr;
    Vector localCenter;
    Store<MeshRenderer*> renderers{"swift stroke renderers"};

    // --- Scratch of the kernels ---
    PatchVertexEntry* patchVertexList = nullptr;
    int32_t patchVertexListCapacity = 0;
    /// PatchSlice and patchLevel of what patchVertexList lists; null when that may be out of date.
    /// Compared, never read through.
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
    /// 0: the main hit; 1: the mirrored one. Index into the three arrays below.
    uint32_t mirrorPass = 0;
    /// Exactly 0: no plane is known yet.
    float planeDistances[2] = {};
    Vector directions[2];
    Vector planePoints[2];
    const float* falloffTable = nullptr;
    int32_t falloffLast = 0;
    float falloffScale = 0.0f;

    // --- Stamp cache ---
    bool stampEnabled = false;
    /// Compared, never dereferenced after the rebuild.
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

    /// Every binding of this stroke in order; the last pair's change is the current one.
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
    KnownPatches knownPatches;
    /// For comparisons: false visits every patch in full.
    bool remembersPatches = true;

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

/// Vertices handed to kernels in this stroke, all brushes together.
extern uint32_t strokeVertexCount;

}  // namespace trovik
