// SPDX-License-Identifier: Apache-2.0
#include "brush/Registration.h"
#include "brush/SwiftStroke.h"
#include "kernels/PatchKernelTable.h"
#include "topology/PatchMap.h"

namespace trovik {

KernelSwitches SwiftStroke::DabSwitches() const {
    KernelSwitches switches;
    switches.withStamp = stampEnabled;
    switches.withoutRadius = wholeMesh;
    switches.alongVertexNormal =
        followVertexNormal || (isSmooth && (affectAllLayers.Value() || layer == nullptr));
    switches.throughLayer = meshHasLayer;
    switches.averageBit = isSmooth || isPlaneTool;
    switches.tiledStamp = stampTiled && stampEnabled;
    switches.pullBit = isPinch || isPlaneTool;
    switches.notifyPerVertex = !rendererTakesFaces;
    switches.inWorldSpace = nonUniformScale;
    return switches;
}

KernelSwitches SwiftStroke::PatchSwitches() const {
    KernelSwitches switches = DabSwitches();
    switches.withFreeze = mesh->FreezeQuery() != 0;
    return switches;
}

bool SwiftStroke::Tester(Mesh* walked, uint32_t face) {
    const TVCrashReporterFlag flag(4, 16384);
    if (mesh == nullptr) return false;
    listedSlice = nullptr;
    const uint32_t faceBase = facesPerPatch * face;
    if (faceBase >= mesh->faceCount) return false;
    // The whole patch is live if its first face is.
    if ((mesh->faceFlags[faceBase] & faceIsLive) == 0) return false;
    if (useTessellator && CurrentMeshEditable()) return DetailBrush::Tester(walked, face);
    if (planeSampling) return SamplePlanePatch(face);
    if (SkipCulledPatch(face)) return false;

    Vector modifiedCells[8];
    if (isSmooth) {
        // Building the list prefetches the vertices, so the grid is filled from them afterwards.
        BuildWorkList(face);
        FillPatchHalo(walked, face);
        CorrectCorners(face, modifiedCells);
    }

    const PatchKernelPointer kernel = patchKernels[PatchSwitches().Index()];
    const bool reached = (this->*kernel)(face);

    // The normals require the neighbours' true positions in the ghost cells. If Smooth averages
    // positions, these have already been read, and only eight cells were modified.
    if (isSmooth && affectAllLayers.Value())
        RestoreCorners(modifiedCells);
    else
        FillPatchHalo(walked, face);

    // This is necessary even if the dab did not reach any vertex, because an adjacent patch may
    // have moved.
    RefreshPatchNormals(PatchSlice(face));
    if (!reached) return false;
    NotifyRenderersOfPatch(face, faceBase);
    return true;
}

void SwiftStroke::NotifyRenderersOfPatch(uint32_t patch, uint32_t faceBase) {
    if (!renderSwiftStroke || !rendererTakesFaces) return;
    if (patchMesh == nullptr || patchMapMesh == nullptr) return;
    const auto patchIndex = static_cast<uint32_t>(patchMesh->Index());
    const auto depth = static_cast<uint32_t>(mesh->Index() - patchMapMesh->Index());
    const uint32_t facesPerMapFace = (1u << depth) * (1u << depth);
    const uint32_t baseFace = patch / (1u << patchIndex) / (1u << patchIndex);

    const auto notify = [this](MeshRenderer* renderer, uint32_t face) {
        renderer->rendererVertexChanged(mesh->faceVertexIndices[face * 4], face);
    };
    for (uint32_t i = 0; i < renderers.fill; ++i) {
        MeshRenderer* renderer = renderers.array[i];
        notify(renderer, faceBase);
        // The patch map is empty if its table could not be allocated.
        if (patchMap == nullptr || patchMap->neighbourFaces.fill == 0) continue;
        for (uint32_t k = 0; k < PatchMap::rowLength; ++k) {
            const uint32_t neighbour = patchMap->neighbourFaces[baseFace * PatchMap::rowLength + k];
            if (neighbour != PatchMap::emptySlot) notify(renderer, neighbour * facesPerMapFace);
        }
    }
}

}  // namespace trovik
