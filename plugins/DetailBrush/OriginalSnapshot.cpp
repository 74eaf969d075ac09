// SPDX-License-Identifier: Apache-2.0
#include "OriginalSnapshot.h"

#include <cstdlib>
#include <new>

namespace trovik {

namespace {

constexpr uint32_t pageShift = 10;
constexpr uint32_t pageAlignment = 64;

}  // namespace

void OriginalSnapshot::Free::operator()(void* block) const { std::free(block); }

OriginalSnapshot::~OriginalSnapshot() { Release(); }

void OriginalSnapshot::Release() {
    for (uint32_t i = 0; i < data.pages.fill; ++i) Block::AlignedFree(data.pages[i]);
    data.pages.Clear();
    if (auxiliary != nullptr && data.sourceMesh->vertexAuxiliary == auxiliary.get())
        data.sourceMesh->vertexAuxiliary = nullptr;
    auxiliary.reset();
}

void OriginalSnapshot::Begin(LevelMesh& level) {
    Release();
    data.vertexLimit = level.VertexCount();
    recordOfVertex.assign(data.vertexLimit, -1);
    data.recordOfVertex = recordOfVertex.data();
    data.recordCount = 0;
    data.recordsPerPage = 1u << pageShift;
    data.pageShift = pageShift;
    data.pageMask = data.recordsPerPage - 1;
    data.pageAlignment = pageAlignment;
    data.sourceMesh = &level;
    if (level.vertexAuxiliary != nullptr) return;
    // The system maps zeroed pages only when they are read.
    auxiliary.reset(
        static_cast<VertexAuxiliary*>(std::calloc(data.vertexLimit, sizeof(VertexAuxiliary))));
    if (auxiliary == nullptr) throw std::bad_alloc();
    level.vertexAuxiliary = auxiliary.get();
}

}  // namespace trovik
