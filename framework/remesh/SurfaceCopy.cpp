// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/SurfaceCopy.h"

#include "framework/errors/HostError.h"

#include <numeric>
#include <utility>

namespace trovik {

namespace {

constexpr uint32_t own = NewSurface::own;

/// The highest number of elements; the two highest indices have special meanings.
constexpr std::size_t maxCount = own;

void RequireRoom(std::size_t present, std::size_t added, const char* elements) {
    if (added <= maxCount - present) return;
    throw HostError("the mesh would have " + std::to_string(present + added) + " " + elements +
                    ", but at most " + std::to_string(maxCount) + " are supported");
}

/// Extends a list for the present elements and appends one for the added elements. Both may be
/// empty.
template <typename T, typename Convert>
void Join(std::vector<T>& list,
          std::size_t present,
          const std::vector<T>& more,
          std::size_t added,
          const T& missing,
          const Convert& convert) {
    if (list.empty() && more.empty()) return;
    list.resize(present, missing);
    for (const T& value : more) list.push_back(convert(value));
    list.resize(present + added, missing);
}

/// Appends a list of names, and a list of the faces' indices into it.
void JoinNamed(std::vector<std::string>& names,
               std::vector<uint32_t>& values,
               std::size_t present,
               const std::vector<std::string>& moreNames,
               const std::vector<uint32_t>& more,
               std::size_t added) {
    const auto offset = static_cast<uint32_t>(names.size());
    Join(values, present, more, added, SurfaceAttributes::none, [offset](uint32_t value) {
        return value == SurfaceAttributes::none ? value : value + offset;
    });
    names.insert(names.end(), moreNames.begin(), moreNames.end());
}

}  // namespace

NewSurface CopyOf(SourceSurface& source, JobControl* job) {
    NewSurface copy;
    copy.mesh = source.Polygons(job);
    copy.vertexSources.resize(copy.mesh.positions.size());
    std::iota(copy.vertexSources.begin(), copy.vertexSources.end(), 0u);
    copy.faceSources.resize(copy.mesh.faceSizes.size());
    std::iota(copy.faceSources.begin(), copy.faceSources.end(), 0u);
    SurfaceAttributes uvs;
    uvs.uvs = std::move(copy.mesh.attributes.uvs);
    uvs.cornerUvs = std::move(copy.mesh.attributes.cornerUvs);
    copy.mesh.attributes = std::move(uvs);
    return copy;
}

void AddComponent(NewSurface& surface, const PolygonMesh& component) {
    PolygonMesh& mesh = surface.mesh;
    const std::size_t vertices = mesh.positions.size();
    const std::size_t faces = mesh.faceSizes.size();
    const std::size_t corners = mesh.faceVertices.size();
    RequireRoom(vertices, component.positions.size(), "vertices");
    RequireRoom(faces, component.faceSizes.size(), "faces");
    RequireRoom(corners, component.faceVertices.size(), "face corners");
    SurfaceAttributes& to = mesh.attributes;
    const SurfaceAttributes& from = component.attributes;
    const auto same = [](const auto& value) { return value; };
    const auto uvOffset = static_cast<uint32_t>(to.uvs.size());
    Join(to.cornerUvs,
         corners,
         from.cornerUvs,
         component.faceVertices.size(),
         SurfaceAttributes::none,
         [uvOffset](uint32_t uv) { return uv == SurfaceAttributes::none ? uv : uv + uvOffset; });
    to.uvs.insert(to.uvs.end(), from.uvs.begin(), from.uvs.end());
    Join(to.colors,
         vertices,
         from.colors,
         component.positions.size(),
         {1.0f, 1.0f, 1.0f, 1.0f},
         same);
    to.hasAlpha = to.hasAlpha || from.hasAlpha;
    const std::size_t added = component.faceSizes.size();
    JoinNamed(to.groupNames, to.faceGroups, faces, from.groupNames, from.faceGroups, added);
    JoinNamed(
        to.materialNames, to.faceMaterials, faces, from.materialNames, from.faceMaterials, added);
    Join(to.faceSmoothing, faces, from.faceSmoothing, added, SurfaceAttributes::none, same);
    to.materialFiles.insert(
        to.materialFiles.end(), from.materialFiles.begin(), from.materialFiles.end());

    const auto offset = static_cast<uint32_t>(vertices);
    mesh.positions.insert(
        mesh.positions.end(), component.positions.begin(), component.positions.end());
    mesh.faceSizes.insert(
        mesh.faceSizes.end(), component.faceSizes.begin(), component.faceSizes.end());
    mesh.faceVertices.reserve(corners + component.faceVertices.size());
    for (const uint32_t vertex : component.faceVertices)
        mesh.faceVertices.push_back(vertex + offset);
    surface.vertexSources.resize(vertices, NewSurface::none);
    surface.vertexSources.resize(mesh.positions.size(), own);
    surface.faceSources.resize(faces, NewSurface::none);
    surface.faceSources.resize(mesh.faceSizes.size(), own);
}

}  // namespace trovik
