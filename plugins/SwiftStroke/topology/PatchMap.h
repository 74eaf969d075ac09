// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Mesh.h"

namespace trovik {

/// For each face of the lowest quad level, up to ten faces around its corners: those that a change
/// on the face's seams can reach. Renderers are told of them; the geometry of seams does not read
/// it. A child node of the level, built when linked, saved with the scene.
class PatchMap : public TreeNode, public AdjacentVertexEnumerator {
public:
    static constexpr uint32_t rowLength = 10;
    static constexpr uint32_t emptySlot = 0xffffffffu;
    /// Scenes have held the table since this file format.
    static constexpr uint32_t firstFormatWithTable = 328;

    PatchMap();
    ~PatchMap() override;

    static Node* Create(unsigned count);
    static const ClassDesc* StaticClass();
    const ClassDesc* RuntimeClass() const override;
    void Serialize(Stream& stream) override;

    /// Builds the table from scratch. Without a parent nothing happens. Errors: "Wrong parrent for
    /// PatchMap class" under a node that is no mesh.
    void OnLinked() override;
    /// Files `face` in the row that is being built; beyond ten it is dropped.
    void Operator(uint32_t vertex, uint32_t face) override;

    /// Row f is entries f * 10 to f * 10 + 9: distinct faces in order of discovery, then empties.
    Store<uint32_t> neighbourFaces{"unknown"};
    uint32_t currentFace = 0;
};

}  // namespace trovik
