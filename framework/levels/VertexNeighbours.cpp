// SPDX-License-Identifier: Apache-2.0
#include "framework/levels/VertexNeighbours.h"

#include "framework/levels/LevelMesh.h"

#include <algorithm>

namespace trovik {

std::vector<uint32_t> WithNeighbours(LevelMesh& level, const std::vector<uint32_t>& vertices) {
    std::vector<uint32_t> around = vertices;
    std::vector<uint32_t> faces;
    const uint32_t corners = level.CornersPerFace();
    for (const uint32_t vertex : vertices) {
        const uint32_t lowest = level.LowestFaceOf(vertex);
        if (lowest == openBorder) continue;
        faces.clear();
        level.FacesAround(vertex, lowest, faces);
        for (const uint32_t face : faces)
            for (uint32_t k = 0; k < corners; ++k)
                around.push_back(level.faceVertexIndices.array[face * corners + k]);
    }
    std::sort(around.begin(), around.end());
    around.erase(std::unique(around.begin(), around.end()), around.end());
    return around;
}

}  // namespace trovik
