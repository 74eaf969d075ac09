// SPDX-License-Identifier: Apache-2.0
// tinygltf parses the JSON, the chunks and the buffers. It does not check the indices with which
// objects refer to each other, so every index is checked here before use.
#include "framework/errors/HostError.h"
#include "framework/files/GltfAccessor.h"
#include "framework/files/GltfDocument.h"
#include "framework/files/GltfNodes.h"
#include "framework/files/GltfParts.h"
#include "framework/files/GltfPrimitive.h"
#include "framework/files/GltfTransform.h"
#include "framework/files/MeshFiles.h"
#include "framework/files/MeshImport.h"
#include "framework/files/VertexWeld.h"
#include "framework/io/FilePath.h"
#include "framework/jobs/JobPhase.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <vector>

namespace trovik {

namespace {

class GltfMerger {
public:
    GltfMerger(const GltfDocument& opened, JobControl* jobControl)
        : document(opened), model(opened.Model()), accessors(opened), job(jobControl) {}

    PolygonMesh Read() {
        CheckExtensions();
        for (const GltfShownMesh& shown : FindShownMeshes(document)) {
            AddMesh(shown.mesh, shown.transform, shown.node);
        }
        Finish();
        WeldUvs(mesh, job);
        FinishImport(mesh, document.Path(), job);
        return std::move(mesh);
    }

private:
    void CheckExtensions() const {
        for (const std::string& name : model.extensionsRequired) {
            const bool isHarmless =
                name == "KHR_mesh_quantization" || name.starts_with("KHR_materials_") ||
                name.starts_with("KHR_texture_") || name.starts_with("KHR_lights_");
            if (!isHarmless) {
                throw HostError(document.Path() + ": the file requires the extension '" +
                                name.substr(0, 60) + "', which is not supported");
            }
        }
    }

    void AddMesh(std::size_t number, const GltfTransform& transform, const tinygltf::Node* node) {
        const tinygltf::Mesh& part = model.meshes[number];
        // The primitives of one mesh form one surface. Vertices of different mesh instances are
        // never welded.
        weld = VertexWeld();
        vertices = Vertices();
        const std::string name = node != nullptr && !node->name.empty() ? node->name : part.name;
        const std::size_t before = mesh.faceSizes.size();
        for (std::size_t index = 0; index < part.primitives.size(); ++index) {
            const GltfLocation location(document, "mesh", number, "primitive", index);
            const std::vector<double>& weights =
                node != nullptr && !node->weights.empty() ? node->weights : part.weights;
            const tinygltf::Primitive& primitive = part.primitives[index];
            AddPrimitive(primitive, weights, transform, location);
            EndPart(name, primitive);
        }
        shownMeshes += std::size_t{mesh.faceSizes.size() > before};
    }

    /// Creates a part from the faces that were added since the previous call.
    void EndPart(const std::string& name, const tinygltf::Primitive& primitive) {
        if (mesh.faceSizes.size() == (parts.empty() ? std::size_t{0} : parts.back().facesSoFar)) {
            return;
        }
        GltfPart part{name, {}, shownMeshes, mesh.faceSizes.size()};
        if (primitive.extras.IsObject() && primitive.extras.Has("group") &&
            primitive.extras.Get("group").IsString()) {
            part.group = primitive.extras.Get("group").Get<std::string>();
        }
        hasGroups = hasGroups || part.group;
        parts.push_back(std::move(part));
    }

    void AddPrimitive(const tinygltf::Primitive& primitive,
                      const std::vector<double>& weights,
                      const GltfTransform& transform,
                      const GltfLocation& location) {
        // Points and lines are skipped.
        if (!HasTriangles(primitive)) return;
        // Primitives of different groups or materials often share their vertices.
        const bool isKnown = vertices.primitive != nullptr &&
                             vertices.primitive->attributes == primitive.attributes &&
                             vertices.primitive->targets == primitive.targets;
        if (!isKnown) {
            vertices = ReadVertices(primitive, weights, transform, location);
        }
        const std::vector<std::uint32_t> corners =
            TriangleCorners(accessors, primitive, vertices.numbers.size(), location);
        AddTriangles(corners, Determinant(transform) < 0.0);
        AddMaterial(primitive.material, location);
    }

    /// The vertices of a primitive.
    struct Vertices {
        /// Null if no primitive has been read.
        const tinygltf::Primitive* primitive = nullptr;
        /// The indices of these vertices in the mesh.
        std::vector<std::uint32_t> numbers;
        /// UV index of the first vertex; SurfaceAttributes::none if there are no UVs.
        std::uint32_t firstUv = SurfaceAttributes::none;
    };

    Vertices ReadVertices(const tinygltf::Primitive& primitive,
                          const std::vector<double>& weights,
                          const GltfTransform& transform,
                          const GltfLocation& location) {
        const GltfVertices stored = ReadGltfVertices(accessors, primitive, weights, location);
        const double sign = Determinant(transform) < 0.0 ? -1.0 : 1.0;
        mesh.attributes.hasAlpha = mesh.attributes.hasAlpha || stored.hasAlpha;
        Vertices read;
        read.primitive = &primitive;
        read.numbers = AddVertices(stored.positions, transform, location);
        AddNormals(read.numbers, stored.normals, transform, sign);
        AddColors(read.numbers, stored.colors);
        if (!stored.uvs.empty()) {
            read.firstUv = static_cast<std::uint32_t>(mesh.attributes.uvs.size());
            hasUvs = true;
        }
        for (const std::array<float, 2>& uv : stored.uvs) {
            // In glTF files, v points down from the top of the image.
            mesh.attributes.uvs.push_back({uv[0], 1.0f - uv[1]});
        }
        return read;
    }

    /// Adds the file's vertices and returns their indices in the mesh.
    std::vector<std::uint32_t> AddVertices(const std::vector<std::array<float, 3>>& positions,
                                           const GltfTransform& transform,
                                           const GltfLocation& location) {
        std::vector<std::uint32_t> numbers;
        numbers.reserve(positions.size());
        JobPhase phase(job, "Welding vertices", positions.size());
        for (const std::array<float, 3>& position : positions) {
            phase.Add();
            const std::array<float, 3> moved = Moved(transform, position);
            if (mesh.positions.size() >= SurfaceAttributes::none - 1) {
                location.Refuse("the file has more vertices than a 32-bit index can address");
            }
            const auto [number, isNew] =
                weld.Number(moved, static_cast<std::uint32_t>(mesh.positions.size()));
            if (isNew) {
                mesh.positions.push_back(moved);
            }
            numbers.push_back(number);
        }
        phase.Finish();
        return numbers;
    }

    /// Normals are kept only if all vertices have normals and those of welded vertices are equal.
    void AddNormals(const std::vector<std::uint32_t>& numbers,
                    const std::vector<std::array<float, 3>>& normals,
                    const GltfTransform& transform,
                    double sign) {
        normalsFit = normalsFit && !normals.empty();
        if (!normalsFit) {
            mesh.normals = {};
            return;
        }
        for (std::size_t vertex = 0; vertex < numbers.size(); ++vertex) {
            const std::array<float, 3> normal = Turned(transform, sign, normals[vertex]);
            if (numbers[vertex] == mesh.normals.size()) {
                mesh.normals.push_back(normal);
            } else if (mesh.normals[numbers[vertex]] != normal) {
                normalsFit = false;
                mesh.normals = {};
                return;
            }
        }
    }

    /// Vertices of primitives without colours are white.
    void AddColors(const std::vector<std::uint32_t>& numbers,
                   const std::vector<std::array<float, 4>>& colors) {
        std::vector<std::array<float, 4>>& all = mesh.attributes.colors;
        const std::size_t before = all.size();
        all.resize(mesh.positions.size(), {1.0f, 1.0f, 1.0f, 1.0f});
        if (colors.empty()) {
            return;
        }
        hasColors = true;
        for (std::size_t vertex = numbers.size(); vertex-- > 0;) {
            // Iterates backwards, so that the first colour of a welded vertex is kept.
            if (numbers[vertex] >= before) {
                all[numbers[vertex]] = colors[vertex];
            }
        }
    }

    void AddTriangles(const std::vector<std::uint32_t>& corners, bool isMirrored) {
        SurfaceAttributes& attributes = mesh.attributes;
        JobPhase phase(job, "Adding triangles", corners.size());
        for (std::size_t first = 0; first + 2 < corners.size(); first += 3) {
            phase.Add(3);
            std::array<std::uint32_t, 3> triangle = {
                corners[first], corners[first + 1], corners[first + 2]};
            if (isMirrored) {
                std::swap(triangle[1], triangle[2]);
            }
            mesh.faceSizes.push_back(3);
            for (const std::uint32_t corner : triangle) {
                mesh.faceVertices.push_back(vertices.numbers[corner]);
                attributes.cornerUvs.push_back(vertices.firstUv == SurfaceAttributes::none
                                                   ? SurfaceAttributes::none
                                                   : vertices.firstUv + corner);
            }
        }
        phase.Finish();
    }

    void AddMaterial(int material, const GltfLocation& location) {
        std::uint32_t number = SurfaceAttributes::none;
        if (material >= 0) {
            const std::size_t index =
                location.Checked(material, model.materials.size(), "material");
            const std::string& name = model.materials[index].name;
            std::vector<std::string>& names = mesh.attributes.materialNames;
            const std::string shown = name.empty() ? "material " + std::to_string(index) : name;
            const auto known = std::find(names.begin(), names.end(), shown);
            number = static_cast<std::uint32_t>(known - names.begin());
            if (known == names.end()) {
                names.push_back(shown);
            }
        }
        mesh.attributes.faceMaterials.resize(mesh.faceSizes.size(), number);
    }

    /// Removes attributes that carry no information.
    void Finish() {
        SurfaceAttributes& attributes = mesh.attributes;
        attributes.space = {1.0, UpAxis::Y};
        if (!hasColors) {
            attributes.colors = {};
            attributes.hasAlpha = false;
        }
        if (!hasUvs) {
            attributes.uvs = {};
            attributes.cornerUvs = {};
        }
        if (attributes.materialNames.empty()) {
            attributes.faceMaterials = {};
        }
        for (const GltfPart& part : parts) {
            if (mesh.name.empty()) {
                mesh.name = part.name;
            }
        }
        if (shownMeshes > 1 || hasGroups) {
            NumberGltfGroups(parts, shownMeshes > 1, attributes);
        }
    }

    const GltfDocument& document;
    const tinygltf::Model& model;
    GltfAccessors accessors;
    JobControl* job;
    PolygonMesh mesh;
    VertexWeld weld;
    Vertices vertices;
    std::vector<GltfPart> parts;
    std::size_t shownMeshes = 0;
    bool hasGroups = false;
    bool normalsFit = true;
    bool hasColors = false;
    bool hasUvs = false;
};

}  // namespace

PolygonMesh ReadGltf(const std::string& path, JobControl* job) {
    const GltfDocument document(path, job);
    return GltfMerger(document, job).Read();
}

}  // namespace trovik
