// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/FaceSplitting.h"

#include "framework/jobs/JobPhase.h"
#include "framework/mesh/BaseLevel.h"
#include "framework/tessellation/FanStarts.h"

#include <algorithm>
#include <utility>

namespace trovik {

void SplitIntoFlatQuads(NewSurface& surface, JobControl* job) {
    PolygonMesh& mesh = surface.mesh;
    PolygonMesh quads = RefineToQuads(mesh, job);
    const auto at = [&](uint32_t vertex) {
        const auto& p = mesh.positions[vertex];
        return Vector(p[0], p[1], p[2]);
    };
    const auto place = [&](uint32_t vertex, const Vector& p) {
        quads.positions[vertex] = {p.x, p.y, p.z};
    };
    std::copy(mesh.positions.begin(), mesh.positions.end(), quads.positions.begin());
    const bool hasOwn =
        std::ranges::find(surface.faceSources, NewSurface::own) != surface.faceSources.end();
    if (hasOwn) surface.vertexSources.resize(quads.positions.size(), NewSurface::none);
    std::vector<uint32_t> sources;
    sources.reserve(quads.faceSizes.size());
    const uint32_t* corners = mesh.faceVertices.data();
    const uint32_t* quad = quads.faceVertices.data();
    for (std::size_t face = 0; face < mesh.faceSizes.size(); ++face) {
        const uint32_t size = mesh.faceSizes[face];
        const uint32_t source =
            face < surface.faceSources.size() ? surface.faceSources[face] : NewSurface::none;
        Vector centre;
        for (uint32_t k = 0; k < size; ++k) centre += at(corners[k]);
        for (uint32_t k = 0; k < size; ++k, quad += 4) {
            place(quad[1], (at(corners[k]) + at(corners[(k + 1) % size])) * 0.5f);
            place(quad[2], centre * (1.0f / static_cast<float>(size)));
            if (source == NewSurface::own)
                surface.vertexSources[quad[1]] = surface.vertexSources[quad[2]] = source;
            sources.push_back(source);
        }
        corners += size;
    }
    mesh = std::move(quads);
    surface.faceSources = std::move(sources);
}

void SplitIntoTriangles(PolygonMesh& mesh, JobControl* job) {
    const std::vector<uint32_t> starts = FanStarts(mesh);
    SurfaceAttributes& attributes = mesh.attributes;
    std::vector<uint32_t>* const cornerLists[] = {&mesh.faceVertices, &attributes.cornerUvs};
    std::vector<uint32_t>* const faceLists[] = {
        &attributes.faceGroups, &attributes.faceMaterials, &attributes.faceSmoothing};
    JobPhase phase(job, "Splitting faces", mesh.faceSizes.size());
    std::vector<std::size_t> corners;
    std::vector<std::size_t> faces;
    std::size_t first = 0;
    for (std::size_t face = 0; face < mesh.faceSizes.size(); ++face) {
        const uint32_t size = mesh.faceSizes[face];
        const auto corner = [&](uint32_t k) { return first + (starts[face] + k) % size; };
        for (uint32_t k = 1; k + 1 < size; ++k) {
            corners.insert(corners.end(), {corner(0), corner(k), corner(k + 1)});
            faces.push_back(face);
        }
        first += size;
        phase.Add();
    }
    phase.Finish();
    const auto select = [](std::vector<uint32_t>& list, const std::vector<std::size_t>& chosen) {
        if (list.empty()) return;
        std::vector<uint32_t> result;
        result.reserve(chosen.size());
        for (const std::size_t index : chosen) result.push_back(list[index]);
        list = std::move(result);
    };
    for (std::vector<uint32_t>* list : cornerLists) select(*list, corners);
    for (std::vector<uint32_t>* list : faceLists) select(*list, faces);
    mesh.faceSizes.assign(faces.size(), 3);
}

}  // namespace trovik
