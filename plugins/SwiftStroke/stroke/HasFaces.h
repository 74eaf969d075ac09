// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Mesh.h"

namespace trovik {

/// Returns whether a dab can start on the mesh: it is not null and has at least one face.
inline bool HasFaces(const Mesh* mesh) {
    return mesh != nullptr && mesh->faceCount != 0 && mesh->faceVertexIndices.array != nullptr &&
           mesh->vertices.array != nullptr;
}

}  // namespace trovik
