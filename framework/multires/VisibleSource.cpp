// SPDX-License-Identifier: Apache-2.0
#include "framework/multires/VisibleSource.h"

#include "framework/errors/HostError.h"
#include "framework/jobs/JobPhase.h"

#include <algorithm>
#include <utility>

namespace trovik {

namespace {

constexpr std::uint32_t None = SurfaceAttributes::none;

/// Moves `count` elements from index `from` to index `to`, which must not exceed `from`. Lists that
/// were not requested are empty and stay empty.
template <typename T>
void Move(std::vector<T>& list, std::size_t from, std::size_t to, std::size_t count = 1) {
    if (list.empty() || from == to) {
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        list[to * count + i] = list[from * count + i];
    }
}

template <typename T>
void Shorten(std::vector<T>& list, std::size_t size) {
    if (!list.empty()) {
        list.resize(size);
    }
}

}  // namespace

VisibleSource::VisibleSource(const LevelGeometry& geometry,
                             const LevelSource::Options& options,
                             JobControl* job)
    : all(geometry, options),
      level(*geometry.Level(options.level.value_or(geometry.BoundIndex()))) {
    if (level.HiddenFaceCount() == level.faceCount) {
        throw HostError("every face is hidden; there is nothing to export");
    }
    name = all.Name();
    space = all.Space();
    largestFace = all.LargestFace();
    faceCount = all.FaceCount() - level.HiddenFaceCount();
    cornerCount = faceCount * largestFace;
    vertexCount = all.VertexCount() - level.HiddenVertexCount();
    hasNormals = all.HasNormals();
    uvsFollowVertices = all.UvsFollowVertices();
    Describe(geometry.Attributes());
    NumberVertices(job);
    NumberUvs(job);
    KeepMorphTargets();
}

void VisibleSource::NumberVertices(JobControl* job) {
    JobPhase phase(job, "Finding visible vertices", all.VertexCount());
    newVertices.assign(all.VertexCount(), None);
    oldVertices.reserve(vertexCount);
    for (std::uint32_t vertex = 0; vertex < newVertices.size(); ++vertex) {
        phase.Add();
        if (level.IsVertexHidden(vertex)) {
            continue;
        }
        newVertices[vertex] = static_cast<std::uint32_t>(oldVertices.size());
        oldVertices.push_back(vertex);
    }
    phase.Finish();
}

void VisibleSource::NumberUvs(JobControl* job) {
    if (all.UvCount() == 0) {
        return;
    }
    std::vector<bool> ofHidden(all.UvCount());
    std::vector<bool> ofVisible(all.UvCount());
    std::uint32_t face = 0;
    trovik::ReadFaces(all, Uvs, job, "Finding visible UVs", [&](const FaceBlock& block) {
        std::size_t corner = 0;
        for (const std::uint32_t size : block.sizes) {
            std::vector<bool>& used = level.IsFaceHidden(face++) ? ofHidden : ofVisible;
            for (const std::size_t end = corner + size; corner < end; ++corner) {
                if (block.uvIndices[corner] != None) {
                    used[block.uvIndices[corner]] = true;
                }
            }
        }
    });
    newUvs.assign(all.UvCount(), None);
    for (std::size_t uv = 0; uv < newUvs.size(); ++uv) {
        if (ofVisible[uv] || !ofHidden[uv]) {
            newUvs[uv] = static_cast<std::uint32_t>(uvCount++);
        }
    }
}

void VisibleSource::KeepMorphTargets() {
    for (const MorphTarget& target : all.MorphTargets()) {
        MorphTarget kept;
        kept.name = target.name;
        kept.weight = target.weight;
        for (const std::uint32_t vertex : target.vertices) {
            if (newVertices[vertex] != None) {
                kept.vertices.push_back(newVertices[vertex]);
            }
        }
        if (kept.vertices.empty()) {
            continue;
        }
        kept.offset = [this, &target](std::uint32_t vertex) {
            return target.offset(oldVertices[vertex]);
        };
        morphTargets.push_back(std::move(kept));
    }
}

std::array<float, 3> VisibleSource::Position(std::uint32_t vertex) const {
    return all.Position(oldVertices[vertex]);
}

std::array<float, 3> VisibleSource::BasePosition(std::uint32_t vertex) const {
    return all.BasePosition(oldVertices[vertex]);
}

void VisibleSource::ReadVertices(unsigned parts,
                                 const std::function<void(const VertexBlock&)>& take) const {
    std::size_t first = 0;
    all.ReadVertices(parts, [&](const VertexBlock& block) {
        // The block length is the same even if none of the lists was requested.
        const std::size_t length = std::min<std::size_t>(blockSize, newVertices.size() - first);
        VertexBlock kept = block;
        std::size_t count = 0;
        for (std::size_t i = 0; i < length; ++i) {
            if (newVertices[first + i] == None) {
                continue;
            }
            Move(kept.positions, i, count);
            Move(kept.normals, i, count);
            Move(kept.uvs, i, count);
            Move(kept.colors, i, count);
            ++count;
        }
        first += length;
        if (count == 0) {
            return;
        }
        Shorten(kept.positions, count);
        Shorten(kept.normals, count);
        Shorten(kept.uvs, count);
        Shorten(kept.colors, count);
        take(kept);
    });
}

void VisibleSource::ReadFaces(unsigned parts,
                              const std::function<void(const FaceBlock&)>& take) const {
    const std::size_t corners = largestFace;
    std::uint32_t first = 0;
    all.ReadFaces(parts, [&](const FaceBlock& block) {
        FaceBlock kept = block;
        std::size_t count = 0;
        for (std::size_t i = 0; i < block.sizes.size(); ++i) {
            if (level.IsFaceHidden(first + static_cast<std::uint32_t>(i))) {
                continue;
            }
            Move(kept.vertices, i, count, corners);
            Move(kept.uvIndices, i, count, corners);
            Move(kept.uvs, i, count, corners);
            Move(kept.groups, i, count);
            Move(kept.materials, i, count);
            Move(kept.smoothing, i, count);
            ++count;
        }
        first += static_cast<std::uint32_t>(block.sizes.size());
        if (count == 0) {
            return;
        }
        // All faces of a level have the same number of corners.
        kept.sizes.resize(count);
        Shorten(kept.vertices, count * corners);
        Shorten(kept.uvIndices, count * corners);
        Shorten(kept.uvs, count * corners);
        Shorten(kept.groups, count);
        Shorten(kept.materials, count);
        Shorten(kept.smoothing, count);
        for (std::uint32_t& vertex : kept.vertices) {
            vertex = newVertices[vertex];
        }
        for (std::uint32_t& uv : kept.uvIndices) {
            if (uv != None) {
                uv = newUvs[uv];
            }
        }
        take(kept);
    });
}

void VisibleSource::ReadUvs(
    const std::function<void(const std::vector<std::array<float, 2>>&)>& take) const {
    std::size_t first = 0;
    all.ReadUvs([&](const std::vector<std::array<float, 2>>& run) {
        std::vector<std::array<float, 2>> kept;
        for (std::size_t i = 0; i < run.size(); ++i) {
            if (newUvs[first + i] != None) {
                kept.push_back(run[i]);
            }
        }
        first += run.size();
        if (!kept.empty()) {
            take(kept);
        }
    });
}

}  // namespace trovik
