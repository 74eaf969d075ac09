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
    /// Whether the normals of the same level are to be restored: there is a copy, and the stroke
    /// has moved no vertex. A brush may ignore layers; its changes are then kept. Cost: O(records).
    bool AppliesTo(const LevelMesh& level) const;
    /// Returns the vertices whose normals have changed since Begin, in ascending order. Cost:
    /// O(vertices).
    std::vector<uint32_t> Changed(const LevelMesh& level) const;
    /// Restores the normals of these vertices, also in the records of the open change. A record
    /// contains another normal if it was created after a dab that recomputed the normal.
    void Restore(LevelMesh& level, const std::vector<uint32_t>& changed) const;
    /// Frees the copy.
    void End() { normals = {}; }

private:
    std::vector<PackedNormal> normals;
};

}  // namespace trovik
