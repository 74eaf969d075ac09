// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/render/RenderImage.h"
#include "host/Api.h"

#include <cstdint>
#include <vector>

namespace trovik {

/// Returns the memory of a mesh's ray tracing structures in bytes, excluding the mesh itself.
TROVIK_API uint64_t RenderBytes(uint64_t vertices, uint64_t faces);

/// Checks that there is enough memory for the ray tracing structures of the meshes, and limits the
/// ray tracing library to as many threads as the system allows (LimitWorkerThreads). Call it before
/// the structures are built.
/// \throw HostError if RenderBytes of the meshes exceeds the free memory (QueryFreeMemory).
void PrepareRenderMemory(const std::vector<RenderMesh>& meshes);

}  // namespace trovik
