// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/SurfaceAttributes.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace trovik {

/// The faces of one primitive.
struct GltfPart {
    std::string name;
    std::optional<std::string> group;
    /// The index of the mesh among the meshes in the scene.
    std::size_t mesh;
    std::size_t facesSoFar;
};

/// Assigns the faces to groups. Faces belong to their primitive's group if it has one, and
/// otherwise, if there are several meshes, to the group of their mesh.
/// \param parts  in the order of the faces.
/// \param byMesh  whether there are several meshes.
void NumberGltfGroups(const std::vector<GltfPart>& parts,
                      bool byMesh,
                      SurfaceAttributes& attributes);

}  // namespace trovik
