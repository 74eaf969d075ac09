// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "DetailBrush.h"
#include "framework/mesh/LevelMesh.h"

#include <memory>
#include <vector>

namespace trovik {

/// Owns the memory of the OriginalData of one mesh during a stroke.
class OriginalSnapshot {
public:
    OriginalSnapshot() = default;
    ~OriginalSnapshot();
    OriginalSnapshot(const OriginalSnapshot&) = delete;
    OriginalSnapshot& operator=(const OriginalSnapshot&) = delete;

    /// Starts an empty snapshot of the vertices that the mesh has now. Cost: 4 bytes per vertex are
    /// written, and 8 more are allocated if the mesh has no auxiliary data.
    void Begin(LevelMesh& level);
    OriginalData& Data() { return data; }

private:
    void Release();

    struct Free {
        void operator()(void* block) const;
    };
    OriginalData data;
    std::vector<int32_t> recordOfVertex;
    /// Zeros, which the mesh refers to while it has no auxiliary data of its own.
    std::unique_ptr<VertexAuxiliary, Free> auxiliary;
};

}  // namespace trovik
