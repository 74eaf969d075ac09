// SPDX-License-Identifier: Apache-2.0
#include "brush/Registration.h"
#include "brush/SwiftStroke.h"
#include "topology/PatchMap.h"

#include <memory>

namespace trovik {

namespace {

/// Returns whether the scale along y or z differs from that along x by more than 1 %.
bool IsNonUniform(const Vector& scale) {
    const float inverse = 1.0f / scale.x;
    const float y = scale.y * inverse;
    const float z = scale.z * inverse;
    return y < 0.99f || y > 1.01f || z < 0.99f || z > 1.01f;
}

}  // namespace

void SwiftStroke::SetMesh(Mesh* newMesh) {
    const TVCrashReporterFlag flag(4, 0x100);
    FinishMesh();
    if (!newMesh->Lock(this)) return;
    mesh = dynamic_cast<SubdivisionLevel*>(newMesh);
    if (mesh == nullptr) {
        throw(new Error(QString(), Error::InvalidUse, "SwiftStroke::SetMesh", __FILE__, __LINE__))
            ->Format(QString::fromLatin1("Invalid mesh specified"));
    }
    try {
        ReadMesh();
        OpenChange();
    } catch (...) {
        // If the mesh did not have its own change, its edits would be recorded in another mesh's
        // change.
        FinishMesh();
        throw;
    }
    if (mesh != nullptr) CollectRenderers();
}

void SwiftStroke::ReadMesh() {
    meshHasFreeze = mesh->FreezeQuery() != 0;
    meshHasLayer = mesh->Layer() != nullptr;
    layer = mesh->Layer();

    const Transformation* placement = mesh->Geometry()->Transformation();
    Vector scale;
    placement->Scale(&scale);
    nonUniformScale = IsNonUniform(scale);
    if (nonUniformScale) {
        Matrix toWorld;
        placement->LocalToWorldMatrix(&toWorld);
        for (int row = 0; row < 4; ++row) {
            const float* m = toWorld.m[row];
            brushSpace->meshToWorld[row] = HWVector(m[0], m[1], m[2], m[3]);
        }
    }
    if (mesh->meshType == 1) BindPatchMap();
}

/// Opens the undo record of the bound mesh. Unbinds the mesh if memory for the MeshChangePair
/// cannot be allocated.
void SwiftStroke::OpenChange() {
    // Deletes the change unless ownership passes to a MeshChangePair.
    std::unique_ptr<MeshChange> change(mesh->StartChange());
    const uint32_t pairs = meshChanges.fill;
    meshChanges.Append({mesh, change.get()});
    if (meshChanges.fill == pairs) {
        change.reset();
        FinishMesh();
        return;
    }
    static_cast<void>(change.release());
}

void SwiftStroke::BindPatchMap() {
    patchMapMesh = mesh->Geometry()->LevelByIndex(0);
    if (patchMapMesh->meshType != 1) patchMapMesh = mesh->Geometry()->LevelByIndex(1);
    patchMap = dynamic_cast<PatchMap*>(patchMapMesh->ChildByClass(&patchMapClass, true));
    if (patchMap == nullptr || patchMap->neighbourFaces.fill != 0) return;
    // The map was loaded from a scene and has no table. A new map builds its table when it is
    // linked.
    patchMapMesh->RemoveChild(patchMap);
    delete patchMap;
    patchMap = dynamic_cast<PatchMap*>(patchMapMesh->ChildByClass(&patchMapClass, true));
}

void SwiftStroke::CollectRenderers() {
    rendererTakesFaces = true;
    renderers.Clear();
    for (uint32_t i = 0;; ++i) {
        auto* renderer =
            dynamic_cast<MeshRenderer*>(mesh->ChildByClass(MeshRenderer::StaticClass(), i));
        if (renderer == nullptr) return;
        if (renderer->rendererUpdateFactor() == 0.0f) rendererTakesFaces = false;
        renderers.Append(renderer);
    }
}

}  // namespace trovik
