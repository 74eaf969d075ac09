// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/PolygonMesh.h"

#include "framework/errors/HostError.h"
#include "framework/jobs/JobPhase.h"
#include "framework/mesh/FaceCorners.h"

#include <cmath>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace trovik {

namespace {

// The two highest numbers are reserved to mark a missing vertex or face index.
constexpr std::uint64_t MaxCount = 0xFFFFFFFEu;

void CheckCount(std::uint64_t count, const char* what, const std::string& source) {
    if (count > MaxCount) {
        throw HostError(source + ": " + std::to_string(count) + " " + what + ", but at most " +
                        std::to_string(MaxCount) + " are supported");
    }
}

void CheckPositions(const PolygonMesh& mesh, const std::string& source, JobPhase& phase) {
    for (std::size_t vertex = 0; vertex < mesh.positions.size(); ++vertex) {
        phase.Add();
        for (const float coordinate : mesh.positions[vertex]) {
            if (!std::isfinite(coordinate)) {
                throw HostError(source + ": the position of vertex " + std::to_string(vertex) +
                                " (counted from 0) is not finite");
            }
        }
    }
}

void CheckFaces(const PolygonMesh& mesh, const std::string& source, JobPhase& phase) {
    const auto refuse = [&source](std::size_t face, const std::string& reason) {
        throw HostError(source + ": face " + std::to_string(face) + " (counted from 0) " + reason);
    };
    std::size_t first = 0;
    for (std::size_t face = 0; face < mesh.faceSizes.size(); ++face) {
        phase.Add();
        const std::size_t size = mesh.faceSizes[face];
        if (size < 3) {
            refuse(face, "has " + std::to_string(size) + " corners, but at least 3 are needed");
        }
        if (mesh.faceVertices.size() - first < size) {
            refuse(face, "has more corners than the list of corners contains");
        }
        const std::span<const std::uint32_t> corners(mesh.faceVertices.data() + first, size);
        for (const std::uint32_t vertex : corners) {
            if (vertex >= mesh.positions.size()) {
                refuse(face,
                       "refers to vertex " + std::to_string(vertex) + ", but there are only " +
                           std::to_string(mesh.positions.size()) + " vertices");
            }
        }
        if (const std::optional<std::uint32_t> repeated = RepeatedVertex(corners)) {
            refuse(face, "refers to vertex " + std::to_string(*repeated) + " twice");
        }
        first += size;
    }
    if (first != mesh.faceVertices.size()) {
        throw HostError(source + ": the list of corners is longer than the sum of the face sizes");
    }
}

void CheckIndices(const std::vector<std::uint32_t>& indices,
                  std::size_t wantedLength,
                  std::size_t listLength,
                  const char* what,
                  const std::string& source,
                  JobControl* job) {
    if (indices.empty()) {
        return;
    }
    if (indices.size() != wantedLength) {
        throw HostError(source + ": the list of " + what + " has " +
                        std::to_string(indices.size()) + " entries instead of " +
                        std::to_string(wantedLength));
    }
    JobPhase phase(job, "Checking attributes", indices.size());
    for (const std::uint32_t index : indices) {
        phase.Add();
        if (index != SurfaceAttributes::none && index >= listLength) {
            throw HostError(source + ": the list of " + what + " refers to index " +
                            std::to_string(index) + ", but valid indices are below " +
                            std::to_string(listLength));
        }
    }
    phase.Finish();
}

}  // namespace

void CheckSurfaceAttributes(const SurfaceAttributes& attributes,
                            const SurfaceCounts& counts,
                            const std::string& source,
                            JobControl* job) {
    CheckCount(attributes.uvs.size(), "texture coordinates", source);
    CheckIndices(attributes.cornerUvs,
                 counts.corners,
                 attributes.uvs.size(),
                 "corner texture coordinates",
                 source,
                 job);
    CheckIndices(attributes.faceGroups,
                 counts.faces,
                 attributes.groupNames.size(),
                 "face groups",
                 source,
                 job);
    CheckIndices(attributes.faceMaterials,
                 counts.faces,
                 attributes.materialNames.size(),
                 "face materials",
                 source,
                 job);
    if (!attributes.faceSmoothing.empty() && attributes.faceSmoothing.size() != counts.faces) {
        throw HostError(source + ": the list of face smoothing groups has " +
                        std::to_string(attributes.faceSmoothing.size()) + " entries, but " +
                        std::to_string(counts.faces) + " are needed");
    }
    if (!attributes.colors.empty() && attributes.colors.size() != counts.vertices) {
        throw HostError(source + ": " + std::to_string(attributes.colors.size()) + " colours for " +
                        std::to_string(counts.vertices) + " vertices");
    }
    const auto finite = [job](const auto& list) {
        JobPhase phase(job, "Checking attributes", list.size());
        for (const auto& entry : list) {
            phase.Add();
            for (const float number : entry) {
                if (!std::isfinite(number)) {
                    return false;
                }
            }
        }
        phase.Finish();
        return true;
    };
    if (!finite(attributes.uvs)) {
        throw HostError(source + ": a texture coordinate is not finite");
    }
    if (!finite(attributes.colors)) {
        throw HostError(source + ": a colour is not finite");
    }
}

void CheckPolygonMesh(const PolygonMesh& mesh, const std::string& source, JobControl* job) {
    CheckCount(mesh.positions.size(), "vertices", source);
    CheckCount(mesh.faceSizes.size(), "faces", source);
    CheckCount(mesh.faceVertices.size(), "face corners", source);
    if (mesh.faceSizes.empty()) {
        throw HostError(source + ": the mesh has no faces");
    }
    if (!mesh.normals.empty() && mesh.normals.size() != mesh.positions.size()) {
        throw HostError(source + ": " + std::to_string(mesh.normals.size()) + " normals for " +
                        std::to_string(mesh.positions.size()) + " vertices");
    }
    JobPhase phase(job, "Checking the mesh", mesh.positions.size() + mesh.faceSizes.size());
    CheckPositions(mesh, source, phase);
    CheckFaces(mesh, source, phase);
    phase.Finish();
    CheckSurfaceAttributes(mesh.attributes,
                           {mesh.positions.size(), mesh.faceSizes.size(), mesh.faceVertices.size()},
                           source,
                           job);
}

}  // namespace trovik
