// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Mesh.h"

#include <cstdint>
#include <vector>

namespace trovik {

class LevelMesh;

/// A copy of the normals of a level, from which a stroke under a hidden or locked layer is
/// reverted. Under such a layer, brushes leave all positions unchanged but recompute the normals of
/// the patches that they visit, without creating records. The results may differ from normals that
/// were computed by another method, for example during import, and no undo step would restore
/// those.
///
/// Memory: 8 bytes per vertex during a stroke under such a layer, otherwise none.
class NormalBackup {
public:
    /// Called before the first dab of a stroke. Copies the normals if the active layer of the level
    /// is hidden or locked.
    void Begin(const LevelMesh& level);
    /// Returns the vertices of the same level whose normals have changed since Begin, in ascending
    /// order. The list is empty if the stroke has moved a vertex, because a brush may ignore
    /// layers. Cost: O(vertices) if Begin has copied the normals, otherwise O(1).
    std::vector<uint32_t> Changed(const LevelMesh& level) const;
    /// Restores the normals of these vertices.
    void Restore(LevelMesh& level, const std::vector<uint32_t>& vertices) const;
    /// Frees the copy.
    void End() { normals = {}; }

private:
    std::vector<PackedNormal> normals;
};

}  // namespace trovik
