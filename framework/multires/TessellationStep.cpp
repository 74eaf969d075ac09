// SPDX-License-Identifier: Apache-2.0
#include "framework/multires/TessellationStep.h"

#include "framework/mesh/TriangleEdit.h"
#include "framework/multires/LevelGeometry.h"

#include <cassert>
#include <utility>

namespace trovik {

TessellationStep::TessellationStep(TriangleContent before,
                                   std::unique_ptr<TopologicalMirror> mirrorBefore)
    : content(std::move(before)), mirror(std::move(mirrorBefore)) {}

void TessellationStep::Apply(LevelGeometry& geometry) {
    LevelMesh& level = *geometry.Bound();
    assert(geometry.LevelCount() == 1 && level.OpenChange() == nullptr);
    const std::vector<uint32_t> faces =
        TriangleEdit::Exchange(level, geometry.AttributesForEdit(), content);
    geometry.ExchangeMirror(mirror);
    level.ContentChanged();
    geometry.ReportTopology(faces);
    // Faces that only have moved vertices are not among those.
    std::vector<uint32_t> vertices = content.vertexNumbers;
    std::erase_if(vertices, [&](uint32_t vertex) { return vertex >= level.VertexCount(); });
    geometry.ReportVertices(
        0, SurfaceChange::Positions | SurfaceChange::Normals | SurfaceChange::Mask, vertices);
}

uint64_t TessellationStep::Bytes() const {
    return sizeof(TessellationStep) + label.capacity() +
           (content.vertexNumbers.capacity() + content.faceNumbers.capacity()) * sizeof(uint32_t) +
           content.vertices.capacity() * sizeof(TriangleVertex) +
           content.faces.capacity() * sizeof(TriangleFace) +
           content.colors.capacity() * sizeof(std::array<float, 4>) +
           content.attributes.capacity() * sizeof(TriangleFaceAttributes) +
           content.uvs.capacity() * sizeof(std::array<float, 2>);
}

std::vector<StepArray> TessellationStep::Arrays() {
    return {StepArray(content.vertexNumbers),
            StepArray(content.vertices),
            StepArray(content.faceNumbers),
            StepArray(content.faces),
            StepArray(content.colors),
            StepArray(content.attributes),
            StepArray(content.uvs)};
}

}  // namespace trovik
