// SPDX-License-Identifier: Apache-2.0
#include "framework/files/GltfParts.h"

#include <cstdint>
#include <map>

namespace trovik {

void NumberGltfGroups(const std::vector<GltfPart>& parts,
                      bool byMesh,
                      SurfaceAttributes& attributes) {
    std::map<std::string, std::uint32_t> groups;
    std::map<std::size_t, std::uint32_t> meshes;
    for (const GltfPart& part : parts) {
        std::uint32_t number = SurfaceAttributes::none;
        if (part.group || byMesh) {
            const auto next = static_cast<std::uint32_t>(attributes.groupNames.size());
            number = part.group ? groups.try_emplace(*part.group, next).first->second
                                : meshes.try_emplace(part.mesh, next).first->second;
            if (number == next) {
                attributes.groupNames.push_back(part.group ? *part.group : part.name);
            }
        }
        attributes.faceGroups.resize(part.facesSoFar, number);
    }
}

}  // namespace trovik
