// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/MeshSource.h"

#include "framework/jobs/JobPhase.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace trovik {

namespace {

constexpr std::uint32_t None = SurfaceAttributes::none;

bool SameUv(const std::array<float, 2>& a, const std::array<float, 2>& b) {
    return std::bit_cast<std::array<std::uint32_t, 2>>(a) ==
           std::bit_cast<std::array<std::uint32_t, 2>>(b);
}

bool IsByte(float value) {
    const float steps = std::round(value * 255.0f);
    return steps >= 0.0f && steps <= 255.0f && steps / 255.0f == value;
}

}  // namespace

void VertexBlock::Clear() {
    positions.clear();
    normals.clear();
    uvs.clear();
    colors.clear();
}

void FaceBlock::Clear() {
    sizes.clear();
    vertices.clear();
    uvIndices.clear();
    uvs.clear();
    groups.clear();
    materials.clear();
    smoothing.clear();
}

MeshSource::~MeshSource() = default;

void MeshSource::Describe(const SurfaceAttributes& attributes) {
    groupNames = &attributes.groupNames;
    materialNames = &attributes.materialNames;
    materialFiles = &attributes.materialFiles;
    hasColors = !attributes.colors.empty();
    hasAlpha = hasColors && attributes.hasAlpha;
    colorsAreBytes =
        std::all_of(attributes.colors.begin(), attributes.colors.end(), [](const auto& color) {
            return std::all_of(color.begin(), color.end(), IsByte);
        });
}

std::vector<std::uint32_t> UvsByVertex(const SurfaceAttributes& attributes,
                                       const std::uint32_t* cornerVertices,
                                       std::size_t vertexCount) {
    std::vector<std::uint32_t> byVertex;
    if (attributes.cornerUvs.empty()) {
        return byVertex;
    }
    byVertex.assign(vertexCount, None);
    for (std::size_t corner = 0; corner < attributes.cornerUvs.size(); ++corner) {
        const std::uint32_t uv = attributes.cornerUvs[corner];
        std::uint32_t& known = byVertex[cornerVertices[corner]];
        if (uv == None) {
            return {};
        }
        if (known == None) {
            known = uv;
        } else if (known != uv && !SameUv(attributes.uvs[known], attributes.uvs[uv])) {
            return {};
        }
    }
    return byVertex;
}

PolygonSource::PolygonSource(const PolygonMesh& polygons, const MeshSpace& wanted)
    : mesh(polygons), conversion(polygons.attributes.space, wanted) {
    name = mesh.name;
    space = Overlaid(mesh.attributes.space, wanted);
    vertexCount = mesh.positions.size();
    faceCount = mesh.faceSizes.size();
    cornerCount = mesh.faceVertices.size();
    const auto largest = std::max_element(mesh.faceSizes.begin(), mesh.faceSizes.end());
    largestFace = largest == mesh.faceSizes.end() ? 0 : *largest;
    hasNormals = !mesh.normals.empty();
    uvCount = mesh.attributes.cornerUvs.empty() ? 0 : mesh.attributes.uvs.size();
    vertexUvs = UvsByVertex(mesh.attributes, mesh.faceVertices.data(), mesh.positions.size());
    uvsFollowVertices = !vertexUvs.empty();
    Describe(mesh.attributes);
}

std::array<float, 3> PolygonSource::Position(std::uint32_t vertex) const {
    return conversion.Point(mesh.positions[vertex]);
}

void PolygonSource::ReadVertices(unsigned parts,
                                 const std::function<void(const VertexBlock&)>& take) const {
    VertexBlock block;
    const SurfaceAttributes& attributes = mesh.attributes;
    for (std::size_t first = 0; first < vertexCount; first += blockSize) {
        block.Clear();
        const std::size_t end = std::min<std::size_t>(first + blockSize, vertexCount);
        for (std::size_t vertex = first; vertex < end; ++vertex) {
            if ((parts & Positions) != 0) {
                block.positions.push_back(conversion.Point(mesh.positions[vertex]));
            }
            if ((parts & Normals) != 0 && hasNormals) {
                block.normals.push_back(conversion.Direction(mesh.normals[vertex]));
            }
            if ((parts & Uvs) != 0 && uvsFollowVertices) {
                const std::uint32_t uv = vertexUvs[vertex];
                block.uvs.push_back(uv == None ? std::array<float, 2>{} : attributes.uvs[uv]);
            }
            if ((parts & Colors) != 0 && hasColors) {
                block.colors.push_back(attributes.colors[vertex]);
            }
        }
        take(block);
    }
}

void PolygonSource::ReadFaces(unsigned parts,
                              const std::function<void(const FaceBlock&)>& take) const {
    FaceBlock block;
    const SurfaceAttributes& attributes = mesh.attributes;
    std::size_t corner = 0;
    for (std::size_t face = 0; face < faceCount; ++face) {
        const std::uint32_t size = mesh.faceSizes[face];
        block.sizes.push_back(size);
        for (const std::size_t end = corner + size; corner < end; ++corner) {
            block.vertices.push_back(mesh.faceVertices[corner]);
            if ((parts & Uvs) != 0 && uvCount > 0) {
                const std::uint32_t uv = attributes.cornerUvs[corner];
                block.uvIndices.push_back(uv);
                block.uvs.push_back(uv == None ? std::array<float, 2>{} : attributes.uvs[uv]);
            }
        }
        if (!attributes.faceGroups.empty()) {
            block.groups.push_back(attributes.faceGroups[face]);
        }
        if (!attributes.faceMaterials.empty()) {
            block.materials.push_back(attributes.faceMaterials[face]);
        }
        if (!attributes.faceSmoothing.empty()) {
            block.smoothing.push_back(attributes.faceSmoothing[face]);
        }
        if (block.sizes.size() == blockSize || face + 1 == faceCount) {
            take(block);
            block.Clear();
        }
    }
}

void PolygonSource::ReadUvs(
    const std::function<void(const std::vector<std::array<float, 2>>&)>& take) const {
    if (uvCount > 0) {
        take(mesh.attributes.uvs);
    }
}

void ReadVertices(const MeshSource& source,
                  unsigned parts,
                  JobControl* job,
                  const char* phase,
                  const std::function<void(const VertexBlock&)>& take) {
    JobPhase progress(job, phase, source.VertexCount(), 1);
    source.ReadVertices(parts, [&](const VertexBlock& block) {
        take(block);
        // Every block except the last is full, unless hidden vertices were skipped.
        progress.Add(MeshSource::blockSize);
    });
    progress.Finish();
}

void ReadFaces(const MeshSource& source,
               unsigned parts,
               JobControl* job,
               const char* phase,
               const std::function<void(const FaceBlock&)>& take) {
    JobPhase progress(job, phase, source.FaceCount(), 1);
    source.ReadFaces(parts, [&](const FaceBlock& block) {
        take(block);
        progress.Add(block.sizes.size());
    });
    progress.Finish();
}

void ReadUvs(const MeshSource& source,
             JobControl* job,
             const char* phase,
             const std::function<void(const std::vector<std::array<float, 2>>&)>& take) {
    JobPhase progress(job, phase, source.UvCount(), 1);
    source.ReadUvs([&](const std::vector<std::array<float, 2>>& uvs) {
        take(uvs);
        progress.Add(uvs.size());
    });
    progress.Finish();
}

PolygonMesh GatherPolygons(const MeshSource& source) {
    PolygonMesh mesh;
    mesh.name = source.Name();
    SurfaceAttributes& attributes = mesh.attributes;
    attributes.space = source.Space();
    attributes.groupNames = source.GroupNames();
    attributes.materialNames = source.MaterialNames();
    attributes.materialFiles = source.MaterialFiles();
    attributes.hasAlpha = source.HasAlpha();
    const auto append = [](auto& list, const auto& block) {
        list.insert(list.end(), block.begin(), block.end());
    };
    source.ReadVertices(MeshSource::Positions | MeshSource::Normals | MeshSource::Colors,
                        [&](const VertexBlock& block) {
                            append(mesh.positions, block.positions);
                            append(mesh.normals, block.normals);
                            append(attributes.colors, block.colors);
                        });
    source.ReadFaces(MeshSource::Uvs, [&](const FaceBlock& block) {
        append(mesh.faceSizes, block.sizes);
        append(mesh.faceVertices, block.vertices);
        append(attributes.cornerUvs, block.uvIndices);
        append(attributes.faceGroups, block.groups);
        append(attributes.faceMaterials, block.materials);
        append(attributes.faceSmoothing, block.smoothing);
    });
    source.ReadUvs([&](const auto& block) { append(attributes.uvs, block); });
    return mesh;
}

}  // namespace trovik
