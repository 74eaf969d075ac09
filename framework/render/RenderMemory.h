// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/render/Picture.h"
#include "host/Api.h"

#include <cstdint>
#include <vector>

namespace trovik {

/// Memory that the ray tracing structures of a mesh take, besides the mesh.
TROVIK_API uint64_t RenderBytes(uint64_t vertices, uint64_t faces);

/// To be called before the ray tracing structures of the meshes are built: refuses meshes for which
/// there is not enough memory, and limits the threads of the ray tracing library to those that the
/// system grants (LimitWorkerThreads).
/// \throw HostError if RenderBytes of the meshes exceeds the free memory (QueryFreeMemory).
void PrepareRenderMemory(const std::vector<PictureMesh>& meshes);

}  // namespace trovik
