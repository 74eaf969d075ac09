// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/files/GltfDocument.h"
#include "framework/files/GltfTransform.h"

#include <cstddef>
#include <vector>

namespace trovik {

/// An instance of a mesh: the mesh and the node that refers to it.
struct GltfShownMesh {
    /// Index of the mesh in the file.
    std::size_t mesh;
    /// Transform from mesh space to scene space.
    GltfTransform transform;
    /// Null if the file has no nodes. Owned by the document.
    const tinygltf::Node* node;
};

/// Returns the meshes that the scene contains, in depth-first order of its nodes. If there is no
/// scene, the nodes without a parent are the roots; if there are no nodes, all meshes are returned.
/// \throw HostError with the file and the node, if a scene, node or mesh index is out of range, or
/// if a node has several parents or is its own ancestor.
std::vector<GltfShownMesh> FindShownMeshes(const GltfDocument& document);

}  // namespace trovik
