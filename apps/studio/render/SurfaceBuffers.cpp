// SPDX-License-Identifier: Apache-2.0
#include "render/SurfaceBuffers.h"

#include <algorithm>
#include <chrono>
#include <limits>

namespace trovik::studio {

namespace {

// OpenGL takes offsets into buffers as pointers.
const void* ByteOffset(std::size_t bytes) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    return reinterpret_cast<const void*>(bytes);
}

/// Mesa's software renderer keeps about 70 bytes for each triangle until it is drawn: 2.3 GB for a
/// frame of 16 million quads. Waiting after each quarter of a million triangles limits this to
/// 18 MB, and is faster because the same memory is used again.
constexpr uint64_t softwareIndicesPerWait = 3 * (uint64_t{1} << 18);

}  // namespace

SurfaceBuffers::SurfaceBuffers()
    : gl(CurrentGl()),
      indicesPerWait(IsSoftwareRenderer(gl) ? softwareIndicesPerWait
                                            : std::numeric_limits<uint64_t>::max()) {}

SurfaceBuffers::~SurfaceBuffers() { Free(); }

void SurfaceBuffers::Free() {
    for (const Page& page : pages) {
        gl.glDeleteVertexArrays(1, &page.vertexArray);
        if (page.edgeArray != 0) gl.glDeleteVertexArrays(1, &page.edgeArray);
        gl.glDeleteBuffers(1, &page.buffer);
    }
    pages.clear();
    for (GLuint* const buffer : {&indexBuffer, &edgeBuffer}) {
        if (*buffer != 0) gl.glDeleteBuffers(1, buffer);
        *buffer = 0;
    }
    triangles.clear();
    edges.clear();
    pendingEdges = {};
    vertexBytes = indexBytes = edgeBytes = 0;
}

void SurfaceBuffers::Reset(std::shared_ptr<const PatchLayout> newLayout) {
    Free();
    layout = std::move(newLayout);
    const uint32_t patches = layout != nullptr ? layout->PatchCount() : 0;
    boxes.assign(patches, {});
    arrived.assign(patches, false);
    arrivedCount = 0;
    if (layout == nullptr) return;
    MakeIndices();
    MakePages();
}

void SurfaceBuffers::MakePages() {
    constexpr uint64_t verticesPerPage = pageBytes / sizeof(DisplayVertex);
    const uint32_t patchCount = layout->PatchCount();
    for (uint32_t patch = 0; patch < patchCount;) {
        Page page;
        page.firstPatch = patch;
        page.firstVertex = layout->FirstVertex(patch);
        do {
            ++patch;
        } while (patch < patchCount &&
                 layout->FirstVertex(patch + 1) - page.firstVertex <= verticesPerPage);
        page.endPatch = patch;
        page.vertexCount = layout->FirstVertex(patch) - page.firstVertex;
        const uint64_t bytes = page.vertexCount * sizeof(DisplayVertex);
        gl.glGenBuffers(1, &page.buffer);
        gl.glBindBuffer(GL_ARRAY_BUFFER, page.buffer);
        gl.glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(bytes), nullptr, GL_DYNAMIC_DRAW);
        page.vertexArray = MakeVertexArray(page.buffer, indexBuffer);
        vertexBytes += bytes;
        pages.push_back(page);
    }
}

GLuint SurfaceBuffers::MakeVertexArray(GLuint vertices, GLuint indices) {
    constexpr GLsizei stride = sizeof(DisplayVertex);
    GLuint array = 0;
    gl.glGenVertexArrays(1, &array);
    gl.glBindVertexArray(array);
    gl.glBindBuffer(GL_ARRAY_BUFFER, vertices);
    gl.glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, indices);
    for (GLuint attribute = 0; attribute < 4; ++attribute) gl.glEnableVertexAttribArray(attribute);
    gl.glVertexAttribPointer(
        0, 3, GL_FLOAT, GL_FALSE, stride, ByteOffset(offsetof(DisplayVertex, x)));
    gl.glVertexAttribPointer(
        1, 3, GL_SHORT, GL_TRUE, stride, ByteOffset(offsetof(DisplayVertex, normalX)));
    gl.glVertexAttribPointer(
        2, 1, GL_UNSIGNED_BYTE, GL_FALSE, stride, ByteOffset(offsetof(DisplayVertex, freeze)));
    gl.glVertexAttribIPointer(
        3, 1, GL_UNSIGNED_BYTE, stride, ByteOffset(offsetof(DisplayVertex, flags)));
    gl.glBindVertexArray(0);
    return array;
}

void SurfaceBuffers::MakeIndices() {
    std::vector<uint16_t> own;
    std::span<const uint16_t> indices;
    if (layout->IsGrid()) {
        indices = GridIndices::OfDepth(layout->Depth()).Buffer();
    } else {
        for (uint32_t patch = 0; patch < layout->PatchCount(); ++patch) {
            const auto list = layout->Triangles(patch);
            triangles.push_back(
                {static_cast<uint32_t>(own.size()), static_cast<uint32_t>(list.size())});
            own.insert(own.end(), list.begin(), list.end());
        }
        indices = own;
    }
    indexBytes = indices.size_bytes();
    gl.glBindVertexArray(0);
    gl.glGenBuffers(1, &indexBuffer);
    gl.glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, indexBuffer);
    gl.glBufferData(GL_ELEMENT_ARRAY_BUFFER,
                    static_cast<GLsizeiptr>(indexBytes),
                    indices.data(),
                    GL_STATIC_DRAW);
}

void SurfaceBuffers::MakeEdges(const FaceEdges& made) {
    edges = made.patches;
    edgeBytes = made.lines.size() * sizeof made.lines[0];
    gl.glBindVertexArray(0);
    gl.glGenBuffers(1, &edgeBuffer);
    gl.glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, edgeBuffer);
    gl.glBufferData(GL_ELEMENT_ARRAY_BUFFER,
                    static_cast<GLsizeiptr>(edgeBytes),
                    made.lines.data(),
                    GL_STATIC_DRAW);
    for (Page& page : pages) page.edgeArray = MakeVertexArray(page.buffer, edgeBuffer);
}

void SurfaceBuffers::Upload(const UploadQueue::Patch& patch) {
    const auto page = std::upper_bound(
        pages.begin(), pages.end(), patch.patch, [](uint32_t number, const Page& candidate) {
            return number < candidate.endPatch;
        });
    const uint64_t at = layout->FirstVertex(patch.patch) - page->firstVertex;
    gl.glBindBuffer(GL_ARRAY_BUFFER, page->buffer);
    gl.glBufferSubData(GL_ARRAY_BUFFER,
                       static_cast<GLintptr>(at * sizeof(DisplayVertex)),
                       static_cast<GLsizeiptr>(patch.vertices.size_bytes()),
                       patch.vertices.data());
    boxes[patch.patch] = patch.box;
    if (!arrived[patch.patch]) {
        arrived[patch.patch] = true;
        ++arrivedCount;
    }
}

uint32_t SurfaceBuffers::UsedStrideLog2(uint32_t wanted) const {
    if (layout == nullptr || !layout->IsGrid()) return 0;
    return std::min(wanted, layout->Depth());
}

template <typename RangeOf>
SurfaceBuffers::Drawn SurfaceBuffers::DrawRanges(
    const FrustumCuller& culler,
    GLenum mode,
    bool areEdges,
    RangeOf rangeOf,
    const std::function<void(uint64_t firstVertex)>& beforePage) {
    Drawn drawn;
    for (const Page& page : pages) {
        bool isBound = false;
        uint64_t indices = 0;
        const auto drawCollected = [&] {
            if (counts.empty()) return;
            if (!isBound) {
                if (beforePage) beforePage(page.firstVertex);
                gl.glBindVertexArray(areEdges ? page.edgeArray : page.vertexArray);
                isBound = true;
            }
            gl.glMultiDrawElementsBaseVertex(mode,
                                             counts.data(),
                                             GL_UNSIGNED_SHORT,
                                             offsets.data(),
                                             static_cast<GLsizei>(counts.size()),
                                             baseVertices.data());
            if (indices >= indicesPerWait) gl.glFinish();
            ++drawn.calls;
            counts.clear();
            offsets.clear();
            baseVertices.clear();
            indices = 0;
        };
        for (uint32_t patch = page.firstPatch; patch < page.endPatch; ++patch) {
            if (!arrived[patch]) continue;
            if (culler.IsOutside(boxes[patch])) {
                ++drawn.culled;
                continue;
            }
            const IndexRange range = rangeOf(patch);
            counts.push_back(static_cast<GLsizei>(range.count));
            offsets.push_back(ByteOffset(std::size_t{range.first} * sizeof(uint16_t)));
            baseVertices.push_back(
                static_cast<GLint>(layout->FirstVertex(patch) - page.firstVertex));
            drawn.triangles += range.count / 3;
            indices += range.count;
            if (indices >= indicesPerWait) drawCollected();
        }
        drawCollected();
    }
    gl.glBindVertexArray(0);
    return drawn;
}

SurfaceBuffers::Drawn SurfaceBuffers::Draw(
    const FrustumCuller& culler,
    uint32_t strideLog2,
    const std::function<void(uint64_t firstVertex)>& beforePage) {
    isWaitingForEdges = false;
    if (layout == nullptr) return {};
    if (!layout->IsGrid())
        return DrawRanges(
            culler,
            GL_TRIANGLES,
            false,
            [this](uint32_t patch) { return triangles[patch]; },
            beforePage);
    const GridIndices& grid = GridIndices::OfDepth(layout->Depth());
    const uint32_t stride = UsedStrideLog2(strideLog2);
    const IndexRange range{grid.FirstIndex(stride),
                           static_cast<uint32_t>(grid.Triangles(stride).size())};
    return DrawRanges(
        culler, GL_TRIANGLES, false, [&](uint32_t) { return range; }, beforePage);
}

SurfaceBuffers::Drawn SurfaceBuffers::DrawEdges(const FrustumCuller& culler, bool waits) {
    if (layout == nullptr || layout->IsGrid()) return {};
    if (edgeBuffer == 0) {
        if (!pendingEdges.valid()) pendingEdges = StartFaceEdges(layout);
        const auto state = pendingEdges.wait_for(std::chrono::seconds(0));
        isWaitingForEdges = !waits && state != std::future_status::ready;
        if (isWaitingForEdges) return {};
        MakeEdges(pendingEdges.get());
    }
    Drawn drawn =
        DrawRanges(culler, GL_LINES, true, [this](uint32_t patch) { return edges[patch]; }, {});
    drawn.triangles = 0;
    drawn.culled = 0;
    return drawn;
}

std::vector<DisplayVertex> SurfaceBuffers::Read() {
    std::vector<DisplayVertex> vertices(layout != nullptr ? layout->TotalVertexCount() : 0);
    for (const Page& page : pages) {
        gl.glBindBuffer(GL_ARRAY_BUFFER, page.buffer);
        gl.glGetBufferSubData(GL_ARRAY_BUFFER,
                              0,
                              static_cast<GLsizeiptr>(page.vertexCount * sizeof(DisplayVertex)),
                              vertices.data() + page.firstVertex);
    }
    return vertices;
}

}  // namespace trovik::studio
