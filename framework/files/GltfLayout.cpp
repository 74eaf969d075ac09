// SPDX-License-Identifier: Apache-2.0
#include "framework/files/GltfLayout.h"

#include "framework/errors/HostError.h"
#include "framework/jobs/JobPhase.h"

#include <algorithm>
#include <limits>

namespace trovik {

namespace {

/// UVs are finite, so NaN marks a vertex that no face has used yet.
constexpr float unnamed = std::numeric_limits<float>::quiet_NaN();

bool IsSame(const std::array<float, 2>& a, const std::array<float, 2>& b) {
    return std::bit_cast<std::array<std::uint32_t, 2>>(a) ==
           std::bit_cast<std::array<std::uint32_t, 2>>(b);
}

void Widen(GltfBox& box, const std::array<float, 3>& position, bool isFirst) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        box.low[axis] = isFirst ? position[axis] : std::min(box.low[axis], position[axis]);
        box.high[axis] = isFirst ? position[axis] : std::max(box.high[axis], position[axis]);
    }
}

}  // namespace

GltfLayout::GltfLayout(const MeshSource& of, const std::string& path, JobControl* job)
    : source(of) {
    if (source.UvCount() > 0 && !source.UvsFollowVertices()) {
        FindCopies(path, job);
    }
    for (const MorphTarget& target : source.MorphTargets()) {
        std::vector<std::uint32_t> vertices = target.vertices;
        for (std::size_t copy = 0; copy < copies.size(); ++copy) {
            if (std::binary_search(
                    target.vertices.begin(), target.vertices.end(), copies[copy].vertex)) {
                vertices.push_back(static_cast<std::uint32_t>(source.VertexCount() + copy));
            }
        }
        morphVertices.push_back(std::move(vertices));
    }
}

std::uint32_t GltfLayout::CopyOf(std::uint32_t vertex, const std::array<float, 2>& uv) const {
    std::uint32_t found = none;
    ForEachCopyOf(vertex, [&](std::size_t copy) {
        if (IsSame(copies[copy].uv, uv)) {
            found = static_cast<std::uint32_t>(copy);
        }
    });
    return found;
}

void GltfLayout::FindCopies(const std::string& path, JobControl* job) {
    firstUvs.assign(source.VertexCount(), {unnamed, unnamed});
    ReadFaces(source, MeshSource::Uvs, job, "Finding seams", [&](const FaceBlock& block) {
        for (std::size_t corner = 0; corner < block.vertices.size(); ++corner) {
            const std::uint32_t vertex = block.vertices[corner];
            const std::array<float, 2>& uv = block.uvs[corner];
            if (firstUvs[vertex][0] != firstUvs[vertex][0]) {
                firstUvs[vertex] = uv;
            } else if (!IsSame(firstUvs[vertex], uv) && CopyOf(vertex, uv) == none) {
                const auto copy = static_cast<std::uint32_t>(copies.size());
                copies.push_back({vertex, uv});
                const auto [entry, isFirst] = copiesOf.try_emplace(vertex, copy);
                nextCopy.push_back(isFirst ? none : entry->second);
                entry->second = copy;
            }
        }
        if (source.VertexCount() + copies.size() >= none) {
            throw HostError(
                path + ": the texture seams need more vertices than a 32-bit index can address");
        }
    });
}

std::uint32_t GltfLayout::VertexOf(const FaceBlock& block, std::size_t corner) const {
    const std::uint32_t vertex = block.vertices[corner];
    if (copies.empty() || IsSame(firstUvs[vertex], block.uvs[corner])) {
        return vertex;
    }
    return static_cast<std::uint32_t>(source.VertexCount()) + CopyOf(vertex, block.uvs[corner]);
}

void GltfLayout::WriteUvs(GltfSink& sink, JobControl* job) const {
    constexpr const char* phaseName = "Writing UVs";
    const auto write = [&sink](const std::array<float, 2>& uv) {
        sink.Floats(std::array<float, 2>{uv[0], 1.0f - uv[1]});
    };
    if (firstUvs.empty()) {
        ReadVertices(source, MeshSource::Uvs, job, phaseName, [&write](const VertexBlock& block) {
            std::for_each(block.uvs.begin(), block.uvs.end(), write);
        });
        return;
    }
    JobPhase phase(job, phaseName, firstUvs.size());
    for (const std::array<float, 2>& uv : firstUvs) {
        phase.Add();
        write(uv[0] == uv[0] ? uv : std::array<float, 2>{});
    }
    for (const GltfCopy& copy : copies) {
        write(copy.uv);
    }
    phase.Finish();
}

GltfBox GltfLayout::PositionBox(JobControl* job) const {
    JobPhase phase(job, "Computing the bounding box", source.VertexCount());
    GltfBox box;
    for (std::uint32_t vertex = 0; vertex < source.VertexCount(); ++vertex) {
        phase.Add();
        Widen(box, source.BasePosition(vertex), vertex == 0);
    }
    phase.Finish();
    return box;
}

// Vertices that the target does not move have a zero offset.
GltfBox GltfLayout::MorphBox(std::size_t target) const {
    GltfBox box;
    const MorphTarget& morph = source.MorphTargets()[target];
    const bool movesAll = morph.vertices.size() == source.VertexCount();
    for (std::size_t i = 0; i < morph.vertices.size(); ++i) {
        Widen(box, morph.offset(morph.vertices[i]), i == 0 && movesAll);
    }
    return box;
}

}  // namespace trovik
