// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/files/GltfDocument.h"
#include "framework/files/GltfTransform.h"

#include <cstddef>
#include <vector>

namespace trovik {

/// A mesh of the file as a node shows it.
struct GltfShownMesh {
    /// Its number in the file.
    std::size_t mesh;
    /// To the space of the scene.
    GltfTransform transform;
    /// Null where the file has no nodes. Belongs to the document.
    const tinygltf::Node* node;
};

/// The meshes that the scene shows, in the order of its nodes from the roots, children in order.
/// If there is no scene, the nodes without a parent are the roots; if there are no nodes, all
/// meshes are shown. \throw HostError naming file and node, for numbers of scenes, nodes and meshes
/// that do not exist and for nodes that are their own ancestors.
std::vector<GltfShownMesh> FindShownMeshes(const GltfDocument& document);

}  // namespace trovik
