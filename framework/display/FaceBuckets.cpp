// SPDX-License-Identifier: Apache-2.0
#include "framework/display/FaceBuckets.h"

#include "framework/math/IsFinite.h"
#include "framework/picking/MedianSplit.h"

#include <array>
#include <numeric>

namespace trovik {

namespace {

std::vector<std::array<float, 3>> CentresOf(const LevelMesh& level) {
    const uint32_t corners = level.CornersPerFace();
    std::vector<std::array<float, 3>> centres(level.faceCount);
    const uint32_t* vertex = level.faceVertexIndices.array;
    for (std::array<float, 3>& centre : centres) {
        Vector sum;
        for (uint32_t k = 0; k < corners; ++k)
            sum += level.Position(*vertex++) * (1.0f / static_cast<float>(corners));
        // A NaN centre would break the ordering that the median needs.
        if (IsFinite(sum)) centre = {sum.x, sum.y, sum.z};
    }
    return centres;
}

}  // namespace

/// Builds the buckets and appends them one by one.
class FaceBuckets::Builder {
public:
    Builder(FaceBuckets& result, const LevelMesh& ofLevel)
        : out(result),
          level(ofLevel),
          corners(ofLevel.CornersPerFace()),
          local(ofLevel.VertexCount(), noVertex) {}

    void Append(std::span<const uint32_t> faces) {
        for (const uint32_t face : faces) {
            out.bucketOfFace[face] = out.Count();
            AppendFace(face);
        }
        // Resets only the entries used by this bucket, so that the total cost is O(faces).
        for (std::size_t i = out.firstVertex.back(); i < out.vertices.size(); ++i)
            local[out.vertices[i]] = noVertex;
        out.firstVertex.push_back(static_cast<uint32_t>(out.vertices.size()));
        out.firstIndex.push_back(static_cast<uint32_t>(out.triangles.size()));
    }

private:
    static constexpr uint32_t noVertex = 0xffffffffu;

    void AppendFace(uint32_t face) {
        const uint32_t* vertex = level.faceVertexIndices.array + std::size_t{face} * corners;
        std::array<uint32_t, 4> numbers{};
        for (uint32_t k = 0; k < corners; ++k) {
            uint32_t& number = local[vertex[k]];
            if (number == noVertex) number = AppendVertex(vertex[k], noFace);
            numbers[k] = number;
        }
        const uint32_t start = FlagCorner(numbers);
        if (out.flagFaces[out.firstVertex.back() + numbers[start]] == noFace)
            out.flagFaces[out.firstVertex.back() + numbers[start]] = face;
        else
            numbers[start] = AppendVertex(vertex[start], face);
        for (uint32_t k = 2; k < corners; ++k)
            for (const uint32_t corner : {start, start + k - 1, start + k})
                out.triangles.push_back(static_cast<uint16_t>(numbers[corner % corners]));
    }

    /// Returns a corner at which the face's triangles can start and whose vertex does not store any
    /// flags yet; 0 if there is none. Starting a quad at corner 2 does not change its diagonal.
    uint32_t FlagCorner(const std::array<uint32_t, 4>& numbers) const {
        for (uint32_t k = 0; k < corners; k += corners == 4 ? 2 : 1)
            if (out.flagFaces[out.firstVertex.back() + numbers[k]] == noFace) return k;
        return 0;
    }

    uint32_t AppendVertex(uint32_t vertex, uint32_t flagFace) {
        out.vertices.push_back(vertex);
        out.flagFaces.push_back(flagFace);
        return static_cast<uint32_t>(out.vertices.size()) - 1 - out.firstVertex.back();
    }

    FaceBuckets& out;
    const LevelMesh& level;
    uint32_t corners;
    /// For each vertex of the level, its number in the current bucket.
    std::vector<uint32_t> local;
};

FaceBuckets::FaceBuckets(const LevelMesh& level) : bucketOfFace(level.faceCount) {
    const std::vector<std::array<float, 3>> centres = CentresOf(level);
    std::vector<uint32_t> order(level.faceCount);
    std::iota(order.begin(), order.end(), 0u);
    vertices.reserve(level.VertexCount());
    flagFaces.reserve(level.VertexCount());
    triangles.reserve(std::size_t{level.faceCount} * 3 * (level.CornersPerFace() - 2));

    Builder builder(*this, level);
    std::vector<std::span<uint32_t>> open;
    if (!order.empty()) open.emplace_back(order);
    while (!open.empty()) {
        const std::span<uint32_t> faces = open.back();
        open.pop_back();
        if (faces.size() <= maxFaces) {
            builder.Append(faces);
            continue;
        }
        const uint32_t half =
            SplitAtMedian(faces.data(), static_cast<uint32_t>(faces.size()), centres);
        open.push_back(faces.subspan(half));
        open.push_back(faces.first(half));
    }
}

}  // namespace trovik
