// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Mesh.h"

namespace trovik {

/// For each face of the lowest quad level, lists up to ten faces around its corners that a change
/// at the face's seams can affect. Renderers are notified of these faces; the geometry of seams
/// does not depend on the map. It is a child node of the level, is built when it is linked, and is
/// saved with the scene.
class PatchMap : public TreeNode, public AdjacentVertexEnumerator {
public:
    static constexpr uint32_t rowLength = 10;
    static constexpr uint32_t emptySlot = 0xffffffffu;
    /// First scene file format that contains the table.
    static constexpr uint32_t firstFormatWithTable = 328;

    PatchMap();
    ~PatchMap() override;

    static Node* Create(unsigned count);
    static const ClassDesc* StaticClass();
    const ClassDesc* RuntimeClass() const override;
    void Serialize(Stream& stream) override;

    /// Builds the table. Has no effect without a parent. Errors: "Wrong parrent for PatchMap class"
    /// if the parent is not a mesh.
    void OnLinked() override;
    /// Adds `face` to the current row, or does nothing if the row already has ten faces.
    void Operator(uint32_t vertex, uint32_t face) override;

    /// Row f consists of the entries f * 10 to f * 10 + 9, which contain distinct faces in order of
    /// discovery, followed by empty slots.
    Store<uint32_t> neighbourFaces{"unknown"};
    uint32_t currentFace = 0;
};

}  // namespace trovik
