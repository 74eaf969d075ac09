// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/display/FrustumCuller.h"
#include "render/FaceEdges.h"
#include "render/Gl.h"
#include "render/UploadQueue.h"

namespace trovik::studio {

/// The vertex and index buffers of the displayed level.
///
/// Vertices lie in pages of at most 64 MiB, in the order of the layout, so that one draw call can
/// draw all patches of a page. Grid patches share the indices of all strides (GridIndices); bucket
/// layouts have their own indices, and lines around their faces for the wireframe.
///
/// Unless stated otherwise, all functions and the destructor require the constructor's context.
class SurfaceBuffers {
public:
    static constexpr uint64_t pageBytes = uint64_t{64} << 20;

    SurfaceBuffers();
    ~SurfaceBuffers();
    SurfaceBuffers(const SurfaceBuffers&) = delete;
    SurfaceBuffers& operator=(const SurfaceBuffers&) = delete;

    /// Allocates pages for a layout, without patches, and fills the index buffer. Null frees
    /// everything.
    void Reset(std::shared_ptr<const PatchLayout> newLayout);
    /// Writes the vertices of a patch.
    void Upload(const UploadQueue::Patch& patch);

    /// The next two functions do not need a context.
    const std::shared_ptr<const PatchLayout>& Layout() const { return layout; }
    /// Whether every patch has been uploaded.
    bool IsComplete() const { return arrivedCount == arrived.size(); }

    /// Statistics of a draw.
    struct Drawn {
        uint64_t calls = 0;
        uint64_t triangles = 0;
        uint64_t culled = 0;
    };
    /// Draws the uploaded patches that are in view, with the current program. \param strideLog2
    /// level of detail of grids; has no effect on buckets. \param beforePage  called before each
    /// draw call with the number of the page's first vertex, counted in the whole layout.
    Drawn Draw(const FrustumCuller& culler,
               uint32_t strideLog2,
               const std::function<void(uint64_t firstVertex)>& beforePage = {});
    /// Bucket layouts only: draws the edges of faces as lines. The first call after a new layout
    /// starts to compute them on another thread; they are drawn as soon as they are ready.
    /// \param waits  waits for them.
    Drawn DrawEdges(const FrustumCuller& culler, bool waits);
    /// Whether the last frame left out edges that are being computed. Needs no context.
    bool ArePendingEdges() const { return isWaitingForEdges; }
    /// The stride that Draw uses if `wanted` is requested.
    uint32_t UsedStrideLog2(uint32_t wanted) const;

    /// Bytes of all buffers. Needs no context.
    uint64_t Bytes() const { return vertexBytes + indexBytes + edgeBytes; }
    /// Reads all vertices back, in the order of the layout. For tests.
    std::vector<DisplayVertex> Read();

private:
    struct Page {
        GLuint vertexArray = 0;
        /// Vertex array with the same vertices and the edge indices; 0 until edges are drawn for
        /// the first time.
        GLuint edgeArray = 0;
        GLuint buffer = 0;
        uint32_t firstPatch = 0;
        uint32_t endPatch = 0;
        uint64_t firstVertex = 0;
        uint64_t vertexCount = 0;
    };

    void Free();
    void MakePages();
    void MakeIndices();
    void MakeEdges(const FaceEdges& made);
    GLuint MakeVertexArray(GLuint vertices, GLuint indices);
    template <typename RangeOf>
    Drawn DrawRanges(const FrustumCuller& culler,
                     GLenum mode,
                     bool areEdges,
                     RangeOf rangeOf,
                     const std::function<void(uint64_t firstVertex)>& beforePage);

    Gl& gl;
    /// Number of indices after which a frame waits until everything issued so far has been drawn.
    const uint64_t indicesPerWait;
    std::shared_ptr<const PatchLayout> layout;
    std::vector<Page> pages;
    GLuint indexBuffer = 0;
    GLuint edgeBuffer = 0;
    /// Per patch; bucket layouts only.
    std::vector<IndexRange> triangles;
    std::vector<IndexRange> edges;
    std::future<FaceEdges> pendingEdges;
    bool isWaitingForEdges = false;
    /// Per patch.
    std::vector<AxisAlignedBoundingBox> boxes;
    std::vector<bool> arrived;
    std::size_t arrivedCount = 0;
    uint64_t vertexBytes = 0;
    uint64_t indexBytes = 0;
    uint64_t edgeBytes = 0;
    /// Arguments of a draw call, kept so that drawing a frame does not allocate memory.
    std::vector<GLsizei> counts;
    std::vector<const void*> offsets;
    std::vector<GLint> baseVertices;
};

}  // namespace trovik::studio
