// SPDX-License-Identifier: Apache-2.0
#include "topology/PatchMap.h"

#include "brush/Registration.h"

#include <algorithm>

namespace trovik {

PatchMap::PatchMap() = default;
PatchMap::~PatchMap() = default;

Node* PatchMap::Create(unsigned count) {
    if (count < 2) {
        auto* map = new PatchMap;
        map->Initialize();
        return map;
    }
    auto* maps = new PatchMap[count];
    for (unsigned i = 0; i < count; ++i) maps[i].Initialize();
    return maps;
}

const ClassDesc* PatchMap::StaticClass() { return &patchMapClass; }
const ClassDesc* PatchMap::RuntimeClass() const { return &patchMapClass; }

void PatchMap::OnLinked() {
    const TVCrashReporterFlag flag(4, 0x80000);
    if (Parent() == nullptr) return;
    auto* mesh = dynamic_cast<Mesh*>(Parent());
    if (mesh == nullptr) {
        throw(new Error(QString(), Error::InvalidUse, "PatchMap::OnLinked", __FILE__, __LINE__))
            ->Format(QString::fromLatin1("Wrong parrent for PatchMap class"));
    }
    // If the rows cannot be allocated, the map stays empty, and the next stroke replaces it.
    if (!neighbourFaces.SetFill(mesh->faceCount * rowLength, false)) return;
    std::fill_n(neighbourFaces.array, neighbourFaces.fill, emptySlot);
    for (currentFace = 0; currentFace < mesh->faceCount; ++currentFace) {
        for (uint32_t corner = 0; corner < 4; ++corner) {
            mesh->EnumerateAdjacentVertices(
                this, mesh->faceVertexIndices[currentFace * 4 + corner], currentFace);
        }
    }
}

void PatchMap::Operator(uint32_t, uint32_t face) {
    uint32_t* row = neighbourFaces.array + currentFace * rowLength;
    for (uint32_t slot = 0; slot < rowLength; ++slot) {
        if (row[slot] == face) return;
        if (row[slot] == emptySlot) {
            row[slot] = face;
            return;
        }
    }
}

void PatchMap::Serialize(Stream& stream) {
    const TVCrashReporterFlag flag(4, 0x100000);
    TreeNode::Serialize(stream);
    if (!stream.IsFormatAtLeast(firstFormatWithTable)) return;
    if (stream.IsStoring())
        stream.WriteStore(neighbourFaces);
    else
        stream.ReadStore(neighbourFaces);
}

}  // namespace trovik
