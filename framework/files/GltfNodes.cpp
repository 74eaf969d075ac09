// SPDX-License-Identifier: Apache-2.0
#include "framework/files/GltfNodes.h"

#include "framework/errors/HostError.h"

#include <algorithm>
#include <string>

namespace trovik {

namespace {

struct Visit {
    std::size_t node;
    GltfTransform parent;
};

std::vector<std::size_t> RootsOf(const GltfDocument& document) {
    const tinygltf::Model& model = document.Model();
    std::vector<std::size_t> roots;
    if (!model.scenes.empty()) {
        const std::size_t number =
            model.defaultScene < 0 ? 0 : static_cast<std::size_t>(model.defaultScene);
        if (number >= model.scenes.size()) {
            throw HostError(document.Path() + ": scene " + std::to_string(number) +
                            " is the default scene, but the number of scenes is " +
                            std::to_string(model.scenes.size()));
        }
        const GltfLocation location(document, "scene", number);
        for (const int node : model.scenes[number].nodes) {
            roots.push_back(location.Checked(node, model.nodes.size(), "node"));
        }
        return roots;
    }
    std::vector<bool> isChild(model.nodes.size(), false);
    for (std::size_t number = 0; number < model.nodes.size(); ++number) {
        const GltfLocation location(document, "node", number);
        for (const int child : model.nodes[number].children) {
            isChild[location.Checked(child, model.nodes.size(), "node")] = true;
        }
    }
    for (std::size_t number = 0; number < model.nodes.size(); ++number) {
        if (!isChild[number]) {
            roots.push_back(number);
        }
    }
    return roots;
}

}  // namespace

std::vector<GltfShownMesh> FindShownMeshes(const GltfDocument& document) {
    const tinygltf::Model& model = document.Model();
    std::vector<GltfShownMesh> shown;
    if (model.nodes.empty()) {
        for (std::size_t number = 0; number < model.meshes.size(); ++number) {
            shown.push_back({number, gltfIdentity, nullptr});
        }
        return shown;
    }
    std::vector<Visit> open;
    for (const std::size_t root : RootsOf(document)) {
        open.push_back({root, gltfIdentity});
    }
    std::reverse(open.begin(), open.end());
    std::vector<bool> seen(model.nodes.size(), false);
    while (!open.empty()) {
        const Visit visit = open.back();
        open.pop_back();
        const GltfLocation location(document, "node", visit.node);
        if (seen[visit.node]) {
            location.Refuse("it has several parents, or is its own ancestor");
        }
        seen[visit.node] = true;
        const tinygltf::Node& node = model.nodes[visit.node];
        const GltfTransform transform = Product(visit.parent, LocalTransform(node, location));
        if (node.mesh >= 0) {
            shown.push_back(
                {location.Checked(node.mesh, model.meshes.size(), "mesh"), transform, &node});
        }
        for (std::size_t child = node.children.size(); child-- > 0;) {
            open.push_back(
                {location.Checked(node.children[child], model.nodes.size(), "node"), transform});
        }
    }
    return shown;
}

}  // namespace trovik
