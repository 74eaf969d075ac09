// SPDX-License-Identifier: Apache-2.0
#include "framework/render/RenderMemory.h"

#include "framework/memory/FreeMemory.h"
#include "framework/threads/WorkerThreads.h"

namespace trovik {

uint64_t RenderBytes(uint64_t vertices, uint64_t faces) {
    // World-space positions, and the ray tracing library's tree, for which 116 to 120 bytes per
    // quad were measured during construction.
    constexpr uint64_t bytesPerVertex = 12;
    constexpr uint64_t bytesPerFace = 128;
    return vertices * bytesPerVertex + faces * bytesPerFace;
}

void PrepareRenderMemory(const std::vector<RenderMesh>& meshes) {
    uint64_t faces = 0;
    uint64_t bytes = 0;
    for (const RenderMesh& mesh : meshes) {
        faces += mesh.faceCount;
        bytes += RenderBytes(mesh.vertexCount, mesh.faceCount);
        if (mesh.HasHiddenFaces())
            bytes += uint64_t{mesh.faceCount} * mesh.cornersPerFace * sizeof(uint32_t);
    }
    CheckFreeMemory("rendering " + std::to_string(faces) + " faces", bytes);
    LimitWorkerThreads(bytes);
}

}  // namespace trovik
