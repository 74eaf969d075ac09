// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/Document.h"

#include <vector>

namespace trovik {

/// The surface before the first change of a script, for before-and-after renders. Shared by the
/// commands that change the surface and the command that renders it.
struct InitialSurface {
    bool isWanted = false;
    std::vector<Vector> positions;
    std::vector<PackedNormal> normals;

    /// Stores the current level if it is needed and has not been stored yet.
    void Store(Document& document) {
        if (!isWanted || !positions.empty()) return;
        const LevelMesh& mesh = *document.Geometry().Bound();
        for (uint32_t v = 0; v < mesh.VertexCount(); ++v) positions.push_back(mesh.Position(v));
        normals.assign(mesh.vertexNormals.array, mesh.vertexNormals.array + mesh.VertexCount());
    }
};

}  // namespace trovik
