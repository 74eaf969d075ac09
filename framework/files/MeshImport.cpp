// SPDX-License-Identifier: Apache-2.0
#include "framework/files/MeshImport.h"

#include "framework/errors/HostError.h"
#include "framework/io/WordsHash.h"
#include "framework/jobs/JobPhase.h"
#include "framework/mesh/FaceCorners.h"

#include <algorithm>
#include <bit>
#include <span>
#include <unordered_map>
#include <utility>

namespace trovik {

namespace {

/// Moves a range of a list towards the front. Empty lists are left empty.
void MoveRun(std::vector<std::uint32_t>& list,
             std::size_t from,
             std::size_t to,
             std::size_t length) {
    if (list.empty() || from == to) {
        return;
    }
    const auto begin = list.begin();
    std::copy(begin + static_cast<std::ptrdiff_t>(from),
              begin + static_cast<std::ptrdiff_t>(from + length),
              begin + static_cast<std::ptrdiff_t>(to));
}

void Shorten(std::vector<std::uint32_t>& list, std::size_t length) {
    list.resize(std::min(list.size(), length));
}

/// Returns whether each per-face and per-corner list is either empty or complete. CheckPolygonMesh
/// rejects all other meshes.
bool ListsFit(const PolygonMesh& mesh) {
    const SurfaceAttributes& more = mesh.attributes;
    const auto fits = [](const std::vector<std::uint32_t>& list, std::size_t length) {
        return list.empty() || list.size() == length;
    };
    std::size_t corners = 0;
    for (const std::uint32_t size : mesh.faceSizes) {
        corners += size;
    }
    const std::size_t faces = mesh.faceSizes.size();
    return corners == mesh.faceVertices.size() && fits(more.cornerUvs, corners) &&
           fits(more.faceGroups, faces) && fits(more.faceMaterials, faces) &&
           fits(more.faceSmoothing, faces);
}

void DropRepeatingFaces(PolygonMesh& mesh, DroppedFaces& dropped, JobControl* job) {
    JobPhase phase(job, "Finding degenerate faces", mesh.faceSizes.size());
    SurfaceAttributes& more = mesh.attributes;
    std::vector<std::uint32_t>* const faceLists[] = {
        &mesh.faceSizes, &more.faceGroups, &more.faceMaterials, &more.faceSmoothing};
    std::vector<std::uint32_t>* const cornerLists[] = {&mesh.faceVertices, &more.cornerUvs};
    std::size_t corner = 0;
    std::size_t keptCorners = 0;
    std::size_t keptFaces = 0;
    for (std::size_t face = 0; face < mesh.faceSizes.size(); ++face) {
        phase.Add();
        const std::size_t size = mesh.faceSizes[face];
        if (RepeatedVertex(std::span(mesh.faceVertices).subspan(corner, size))) {
            dropped.Add(face);
        } else {
            for (std::vector<std::uint32_t>* list : cornerLists) {
                MoveRun(*list, corner, keptCorners, size);
            }
            for (std::vector<std::uint32_t>* list : faceLists) {
                MoveRun(*list, face, keptFaces, 1);
            }
            keptCorners += size;
            ++keptFaces;
        }
        corner += size;
    }
    phase.Finish();
    for (std::vector<std::uint32_t>* list : cornerLists) {
        Shorten(*list, keptCorners);
    }
    for (std::vector<std::uint32_t>* list : faceLists) {
        Shorten(*list, keptFaces);
    }
}

std::string NoteOf(const DroppedFaces& dropped) {
    const bool isOne = dropped.count == 1;
    return std::to_string(dropped.count) + (isOne ? " face has" : " faces have") +
           " two corners at the same vertex and " + (isOne ? "was" : "were") +
           " left out: " + (isOne ? "" : "the first is ") + "face " +
           std::to_string(dropped.first) + " (counted from 0)";
}

}  // namespace

void FinishImport(PolygonMesh& mesh,
                  const std::string& path,
                  JobControl* job,
                  DroppedFaces dropped) {
    if (ListsFit(mesh)) {
        DropRepeatingFaces(mesh, dropped, job);
    }
    if (dropped.count > 0) {
        if (mesh.faceSizes.empty()) {
            throw HostError(path + ": every face of the mesh has two corners at the same vertex (" +
                            std::to_string(dropped.count) + ")");
        }
        mesh.notes.push_back(NoteOf(dropped));
    }
    CheckPolygonMesh(mesh, path, job);
}

void WeldUvs(PolygonMesh& mesh, JobControl* job) {
    SurfaceAttributes& more = mesh.attributes;
    if (more.cornerUvs.size() != mesh.faceVertices.size()) {
        return;
    }
    using Key = std::array<std::uint32_t, 3>;
    std::unordered_map<Key, std::uint32_t, WordsHash> numbers;
    std::vector<std::array<float, 2>> welded;
    JobPhase phase(job, "Welding UVs", more.cornerUvs.size());
    for (std::size_t corner = 0; corner < more.cornerUvs.size(); ++corner) {
        phase.Add();
        std::uint32_t& uv = more.cornerUvs[corner];
        if (uv >= more.uvs.size()) {
            continue;
        }
        const auto bits = std::bit_cast<std::array<std::uint32_t, 2>>(more.uvs[uv]);
        const auto [entry, isNew] =
            numbers.try_emplace(Key{mesh.faceVertices[corner], bits[0], bits[1]},
                                static_cast<std::uint32_t>(welded.size()));
        if (isNew) {
            welded.push_back(more.uvs[uv]);
        }
        uv = entry->second;
    }
    phase.Finish();
    more.uvs = std::move(welded);
}

}  // namespace trovik
