// SPDX-License-Identifier: Apache-2.0
#include "brush/PlaneClamp.h"
#include "brush/Registration.h"
#include "brush/SwiftStroke.h"
#include "brush/Translation.h"
#include "stroke/AtScopeEnd.h"
#include "stroke/HasFaces.h"

#include <cmath>
#include <memory>
#include <new>

namespace trovik {

namespace {

constexpr const char* coarseMeshText =
    "The mesh you are trying to sculpt is too coarse<br>\t\t\t\t\tfor the size of your "
    "brush.<p>\t\t\t\t\tPress <b>%%Subdivide faces%%</b> to subdivide the mesh into finer "
    "polygons.<p>\t\t\t\t\tPress <b>%%Toggle wireframe%%</b> to show/hide the wireframe.";

/// Returns the size of the hit face: the diagonal of a quad or one side of a triangle, mesh-local.
float FaceMeasure(const SurfacePoint& hit) {
    const Mesh& mesh = *hit.mesh;
    const uint32_t first = hit.face * mesh.CornersPerFace();
    const Vertex& a = mesh.vertices[mesh.faceVertexIndices[first]];
    const Vertex& b = mesh.vertices[mesh.faceVertexIndices[first + 2]];
    return (Vector(a.x, a.y, a.z) - Vector(b.x, b.y, b.z)).Length();
}

/// Allocates a grid of side x side vectors at the next 16-byte boundary. `allocation` receives the
/// pointer to free.
HWVector* AllocateGrid(uint32_t side, void** allocation) {
    const std::size_t bytes = static_cast<std::size_t>(side) * side * sizeof(HWVector);
    std::size_t room = bytes + 15;
    *allocation = ::operator new(room);
    void* start = *allocation;
    return static_cast<HWVector*>(std::align(16, bytes, start, room));
}

}  // namespace

void SwiftStroke::ApplyDab(const SurfacePoint& hit,
                           const Vector& position,
                           float size,
                           float pressure,
                           float strength,
                           AxisAlignedBoundingBox& box) {
    const TVCrashReporterFlag flag(4, 0x400);
    if (!HasFaces(hit.mesh)) return;
    if (!wholeMesh && falloffTable == nullptr) return;
    // A traversal can throw an exception, for example if memory for a record cannot be allocated.
    // The pending normals belong to this dab's mesh; the next dab's mesh may be smaller.
    const AtScopeEnd dropPendingNormals([this] { deferredNormals.SetFill(0, true); });
    mirrorPass = hit.mirror ? 1 : 0;
    dabReserved = 0;
    if (mirrorPass == 0) ++planeDabCount;

    if (mesh == nullptr || static_cast<Mesh*>(mesh) != hit.mesh) {
        if (strokeMeshLocked != 0) return;
        // IsStrokeFree must return true while the binding changes.
        strokeActive = false;
        SetMesh(hit.mesh);
        strokeActive = true;
    }
    if (mesh == nullptr) return;

    const float edge = FaceMeasure(hit);
    const int32_t wanted = WantedPatchLevel(size, edge);
    WarnOfCoarseMesh(size, edge);
    SplitPatchLevel(wanted);

    float scaledStrength = strength * (strokeStrengthScale * brushStrengthScale);
    if (isSmooth) {
        scaledStrength = scaledStrength * 0.01f;
        if (scaledStrength > 1.0f) scaledStrength = 1.0f;
    }
    if (static_cast<Mesh*>(mesh) != hit.mesh) return;
    dabStrength = scaledStrength;
    dabPressure = pressure;
    SetUpRadius(position, size);
    SetUpPlaneStep(scaledStrength);

    dirtyBox = &box;
    brushSpace->boundsMax = HWVector(hit.position);
    brushSpace->boundsMin = brushSpace->boundsMax;
    // Must be called before plane sampling, which changes the mesh's visit stamp.
    patchCache.Check(*CurrentChange(), patchLevel, SmoothsLayer());
    if (!PrepareDab(hit)) return;
    dabStamp = mesh->visitStamp;
    if (stampEnabled) SetUpStampFrame(position);

    {
        const AtScopeEnd releaseGrids([this] { ReleaseGrids(); });
        AllocateGrids();
        planeDistance = planeDistances[mirrorPass];
        brushSpace->direction = HWVector(directions[mirrorPass]);
        if (useTessellator) RefineUnderBrush(hit);

        if (hit.mesh->meshType == 1) {
            if (MayUsePatchCache())
                patchCache.Open();
            else
                patchCache.Forget();
            {
                // The visit stamp must also change after an exception, because the records contain
                // this dab's mark, which later dabs must not reuse.
                const AtScopeEnd endWalk([this] { ++mesh->visitStamp; });
                patchMesh->EnumerateFaces(hit.face / facesPerPatch, this, 0);
            }
            patchCache.Close(*CurrentChange());
        } else {
            mesh->EnumerateVertices(hit.face, this);
        }

        if (renderSwiftStroke) MergeDirtyBox(box);
        if (!wholeMesh) {
            const float margin = edge * 2.0f;
            box.minX -= margin;
            box.minY -= margin;
            box.minZ -= margin;
            box.maxX += margin;
            box.maxY += margin;
            box.maxZ += margin;
        }
    }
    FlushDeferredNormals();
}

/// Returns the patch depth for this brush, chosen so that a patch side is about half the radius
/// long.
int32_t SwiftStroke::WantedPatchLevel(float size, float edge) const {
    const float factor = swiftStrokeLevelFactor;
    const float wanted = std::trunc(factor * (logf(size * 0.5f / edge) / logf(2.0f)));
    // Minus infinity (from a size of 0), NaN (from 0/0) and values beyond the integer range count
    // as 0.
    if (!(wanted > 0.0f) || wanted >= 2147483648.0f) return 0;
    return static_cast<int32_t>(wanted);
}

void SwiftStroke::WarnOfCoarseMesh(float size, float edge) {
    if (coarseMeshWarned || !(size > 0.0f) || !(edge / size > 4.0f)) return;
    const Geometry* geometry = mesh->Geometry();
    if (geometry->HighestLevel() != geometry->LowestLevel()) return;
    g_pKernel->Interface()->HUDMessageShow(Translate(coarseMeshText), HUDMessageWarning);
    coarseMeshWarned = true;
}

void SwiftStroke::SplitPatchLevel(int32_t wanted) {
    const int32_t level = mesh->Index();
    patchLevel = level;
    patchMeshLevel = 0;
    if (wanted < level) {
        patchMeshLevel = static_cast<uint32_t>(level - wanted);
        patchLevel = wanted;
    }
    // Patches must be quads; if level 0 has triangles, level 1 is the coarsest level with quads.
    const Geometry* geometry = mesh->Geometry();
    if (patchMeshLevel == 0 && geometry->LowestLevel()->meshType != 1 && patchLevel != 0) {
        ++patchMeshLevel;
        --patchLevel;
    }
    facesPerPatch = (1u << patchLevel) * (1u << patchLevel);
    patchMesh = geometry->LevelByIndex(patchMeshLevel);
}

void SwiftStroke::SetUpRadius(const Vector& position, float size) {
    const Transformation* placement = mesh->Geometry()->Transformation();
    placement->WorldToLocal(&localCenter, &position, 1.0f);
    if (nonUniformScale) {
        brushSpace->center = HWVector(position);
        radius = size;
    } else {
        brushSpace->center = HWVector(localCenter);
        const Vector reach(size, 0.0f, 0.0f);
        Vector localReach;
        placement->WorldToLocal(&localReach, &reach, 0.0f);
        radius = localReach.Length();
    }
    radiusSquared = radius * radius;
    inverseRadius = 1.0f / radius;
    falloffScale = inverseRadius * falloffLastFloat;
}

void SwiftStroke::SetUpPlaneStep(float strength) {
    planeOffset = planeOffsetFactor * radius;
    if (!isWax) return;
    // Wax always pushes at full strength; its strength setting determines the height of the plane
    // above the surface.
    planeOffset = strength * 0.1f;
    dabStrength = 100.0f;
    if (!g_pKernel->IsTestModeOn()) return;
    planeClampMin = waxFillsOnly ? 0.0f : -unlimited;
    planeClampMax = waxScrapesOnly ? 0.0f : unlimited;
}

void SwiftStroke::SetUpStampFrame(const Vector& position) {
    Matrix matrix = MaskMatrix(stampMask);
    static_assert(sizeof(brushSpace->stampMatrix) == sizeof(matrix.m));
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            brushSpace->stampMatrix[row][column] = matrix.m[row][column];
    const float depth = matrix.ProjectedTransform(position, 1.0f).z;
    matrix.Invert(nullptr);

    const Image* image = MaskImage(stampMask);
    const auto width = static_cast<float>(image->Width());
    const auto height = static_cast<float>(image->Height());
    const Vector origin = matrix.ProjectedTransform({0.0f, 0.0f, depth}, 1.0f);
    const Vector right = matrix.ProjectedTransform({width, 0.0f, depth}, 1.0f);
    const Vector below = matrix.ProjectedTransform({0.0f, height, depth}, 1.0f);
    brushSpace->stampAxisU = HWVector(right - origin);
    brushSpace->stampAxisV = HWVector(below - origin);
    stampScaleU = (right - origin).Length() / 100.0f;
    stampScaleV = (origin - below).Length() / 100.0f;
    stampScaleHeight = std::sqrt(stampScaleV * stampScaleU);
    // The factor is read for every dab, because it can change during a stroke.
    stampFactor = MaskFactor(stampMask);
}

void SwiftStroke::AllocateGrids() {
    gridStride = (1u << patchLevel) + 3;
    positionGrid = AllocateGrid(gridStride, &positionGridAllocation);
    if (isSmooth && !affectAllLayers.Value())
        layerGrid = AllocateGrid(gridStride, &layerGridAllocation);
}

void SwiftStroke::ReleaseGrids() {
    ::operator delete(positionGridAllocation);
    positionGridAllocation = nullptr;
    if (layerGridAllocation != nullptr) {
        ::operator delete(layerGridAllocation);
        layerGridAllocation = nullptr;
    }
}

void SwiftStroke::RefineUnderBrush(const SurfacePoint& hit) {
    InitializeTessellator(&hit, CurrentChange(), 1.1f, true, false);
    if (!CurrentMeshEditable()) ShowTessellationHUD();
    if (!useTessellator || !CurrentMeshEditable()) return;
    const bool skipThisDab = refineAtIntervals && strokeSmoothingAttribute.Value().checked &&
                             refineInterval != 0 && refineDabCount % refineInterval != 0;
    if (!skipThisDab) {
        CollectFaces();
        DoRefineReduce(true, true, 3, true);
    }
    // A mirrored pair counts as one dab.
    if (MirrorConfig().MirrorMode() == MirrorConfiguration::Off || mirrorPass == 1)
        ++refineDabCount;
    dabStamp = mesh->visitStamp;
}

void SwiftStroke::MergeDirtyBox(AxisAlignedBoundingBox& box) const {
    const Transformation* placement = mesh->Geometry()->Transformation();
    for (const HWVector& corner : {brushSpace->boundsMin, brushSpace->boundsMax}) {
        const Vector local = static_cast<Vector>(corner);
        Vector world;
        placement->LocalToWorld(&world, &local, 1.0f);
        box.Extend(world);
    }
}

}  // namespace trovik
