// SPDX-License-Identifier: Apache-2.0
//
// tinygltf takes the JSON, the chunks and the buffers apart. It checks no number that points from
// one part to another, so everything is checked here before it is followed.
#include "framework/errors/HostError.h"
#include "framework/files/FilePath.h"
#include "framework/files/GltfAccessor.h"
#include "framework/files/GltfDocument.h"
#include "framework/files/PolygonMesh.h"
#include "framework/files/VertexWeld.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

namespace trovik {

namespace {

using Transform = std::array<double, 16>;

constexpr Transform identity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

/// Column by column, as in the files: columns are the images of the axes, and the translation.
Transform Product(const Transform& a, const Transform& b) {
    Transform product = {};
    for (std::size_t column = 0; column < 4; ++column) {
        for (std::size_t row = 0; row < 4; ++row) {
            for (std::size_t k = 0; k < 4; ++k) {
                product[column * 4 + row] += a[k * 4 + row] * b[column * 4 + k];
            }
        }
    }
    return product;
}

double Determinant(const Transform& m) {
    return m[0] * (m[5] * m[10] - m[9] * m[6]) - m[4] * (m[1] * m[10] - m[9] * m[2]) +
           m[8] * (m[1] * m[6] - m[5] * m[2]);
}

std::array<float, 3> Moved(const Transform& m, const std::array<float, 3>& p) {
    if (m == identity) {
        return p;
    }
    std::array<float, 3> moved;
    for (std::size_t row = 0; row < 3; ++row) {
        moved[row] = static_cast<float>(m[row] * static_cast<double>(p[0]) +
                                        m[4 + row] * static_cast<double>(p[1]) +
                                        m[8 + row] * static_cast<double>(p[2]) + m[12 + row]);
    }
    return moved;
}

/// Normals go by the cofactors, which are the inverse, transposed, but for the length and the sign.
std::array<float, 3> Turned(const Transform& m, double sign, const std::array<float, 3>& n) {
    if (m == identity) {
        return n;
    }
    std::array<double, 3> turned = {};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            const std::size_t r1 = (row + 1) % 3;
            const std::size_t r2 = (row + 2) % 3;
            const std::size_t c1 = (column + 1) % 3;
            const std::size_t c2 = (column + 2) % 3;
            const double cofactor =
                m[c1 * 4 + r1] * m[c2 * 4 + r2] - m[c2 * 4 + r1] * m[c1 * 4 + r2];
            turned[row] += cofactor * static_cast<double>(n[column]);
        }
    }
    const double length =
        std::sqrt(turned[0] * turned[0] + turned[1] * turned[1] + turned[2] * turned[2]);
    const double factor = length > 0.0 ? sign / length : 0.0;
    return {static_cast<float>(turned[0] * factor),
            static_cast<float>(turned[1] * factor),
            static_cast<float>(turned[2] * factor)};
}

Transform LocalTransform(const tinygltf::Node& node, const GltfPlace& place) {
    Transform m = identity;
    if (!node.matrix.empty()) {
        if (node.matrix.size() != 16) {
            place.Refuse("its matrix has " + std::to_string(node.matrix.size()) + " numbers");
        }
        std::copy(node.matrix.begin(), node.matrix.end(), m.begin());
    } else {
        const auto part =
            [&place](const std::vector<double>& numbers, std::size_t count, const char* what) {
                if (!numbers.empty() && numbers.size() != count) {
                    place.Refuse(std::string("its ") + what + " has " +
                                 std::to_string(numbers.size()) + " numbers");
                }
                return !numbers.empty();
            };
        if (part(node.rotation, 4, "rotation")) {
            const double x = node.rotation[0];
            const double y = node.rotation[1];
            const double z = node.rotation[2];
            const double w = node.rotation[3];
            m = {1 - 2 * (y * y + z * z),
                 2 * (x * y + z * w),
                 2 * (x * z - y * w),
                 0,
                 2 * (x * y - z * w),
                 1 - 2 * (x * x + z * z),
                 2 * (y * z + x * w),
                 0,
                 2 * (x * z + y * w),
                 2 * (y * z - x * w),
                 1 - 2 * (x * x + y * y),
                 0,
                 0,
                 0,
                 0,
                 1};
        }
        if (part(node.scale, 3, "scale")) {
            for (std::size_t column = 0; column < 3; ++column) {
                for (std::size_t row = 0; row < 3; ++row) {
                    m[column * 4 + row] *= node.scale[column];
                }
            }
        }
        if (part(node.translation, 3, "translation")) {
            std::copy(node.translation.begin(), node.translation.end(), m.begin() + 12);
        }
    }
    if (!std::all_of(m.begin(), m.end(), [](double number) { return std::isfinite(number); })) {
        place.Refuse("its transformation is not finite");
    }
    return m;
}

class GltfMerger {
public:
    explicit GltfMerger(const GltfDocument& opened)
        : document(opened), model(opened.Model()), accessors(opened) {}

    PolygonMesh Read() {
        CheckExtensions();
        WalkNodes();
        Finish();
        CheckPolygonMesh(mesh, document.Path());
        return std::move(mesh);
    }

private:
    struct Visit {
        std::size_t node;
        Transform parent;
    };

    void CheckExtensions() const {
        for (const std::string& name : model.extensionsRequired) {
            const bool isHarmless =
                name == "KHR_mesh_quantization" || name.starts_with("KHR_materials_") ||
                name.starts_with("KHR_texture_") || name.starts_with("KHR_lights_");
            if (!isHarmless) {
                throw HostError(document.Path() + ": the file requires the extension '" +
                                name.substr(0, 60) + "', which is not read");
            }
        }
    }

    /// The nodes of the scene from its roots, children in order. Without a scene, nodes that are no
    /// children are roots; without nodes all meshes are shown.
    void WalkNodes() {
        if (model.nodes.empty()) {
            for (std::size_t number = 0; number < model.meshes.size(); ++number) {
                AddMesh(number, identity, nullptr);
            }
            return;
        }
        std::vector<Visit> open;
        for (const std::size_t root : Roots()) {
            open.push_back({root, identity});
        }
        std::reverse(open.begin(), open.end());
        std::vector<bool> seen(model.nodes.size(), false);
        while (!open.empty()) {
            const Visit visit = open.back();
            open.pop_back();
            const GltfPlace place(document, "node", visit.node);
            if (seen[visit.node]) {
                place.Refuse("it has several parents, or is its own ancestor");
            }
            seen[visit.node] = true;
            const tinygltf::Node& node = model.nodes[visit.node];
            const Transform transform = Product(visit.parent, LocalTransform(node, place));
            if (node.mesh >= 0) {
                AddMesh(place.Checked(node.mesh, model.meshes.size(), "mesh"), transform, &node);
            }
            for (std::size_t child = node.children.size(); child-- > 0;) {
                open.push_back(
                    {place.Checked(node.children[child], model.nodes.size(), "node"), transform});
            }
        }
    }

    std::vector<std::size_t> Roots() const {
        std::vector<std::size_t> roots;
        if (!model.scenes.empty()) {
            const std::size_t number =
                model.defaultScene < 0 ? 0 : static_cast<std::size_t>(model.defaultScene);
            if (number >= model.scenes.size()) {
                throw HostError(document.Path() + ": scene " + std::to_string(number) +
                                " is to be shown, but there are only " +
                                std::to_string(model.scenes.size()));
            }
            const GltfPlace place(document, "scene", number);
            for (const int node : model.scenes[number].nodes) {
                roots.push_back(place.Checked(node, model.nodes.size(), "node"));
            }
            return roots;
        }
        std::vector<bool> isChild(model.nodes.size(), false);
        for (std::size_t number = 0; number < model.nodes.size(); ++number) {
            const GltfPlace place(document, "node", number);
            for (const int child : model.nodes[number].children) {
                isChild[place.Checked(child, model.nodes.size(), "node")] = true;
            }
        }
        for (std::size_t number = 0; number < model.nodes.size(); ++number) {
            if (!isChild[number]) {
                roots.push_back(number);
            }
        }
        return roots;
    }

    void AddMesh(std::size_t number, const Transform& transform, const tinygltf::Node* node) {
        const tinygltf::Mesh& part = model.meshes[number];
        // Primitives of one mesh are one surface; other meshes only lie beside it.
        weld = VertexWeld();
        const std::string name = node != nullptr && !node->name.empty() ? node->name : part.name;
        const std::size_t before = mesh.faceSizes.size();
        for (std::size_t primitive = 0; primitive < part.primitives.size(); ++primitive) {
            const GltfPlace place(document, "mesh", number, "primitive", primitive);
            const std::vector<double>& weights =
                node != nullptr && !node->weights.empty() ? node->weights : part.weights;
            AddPrimitive(part.primitives[primitive], weights, transform, place);
        }
        if (mesh.faceSizes.size() > before) {
            parts.push_back({name, mesh.faceSizes.size()});
        }
    }

    void AddPrimitive(const tinygltf::Primitive& primitive,
                      const std::vector<double>& weights,
                      const Transform& transform,
                      const GltfPlace& place) {
        constexpr int Triangles = 4;
        constexpr int Strip = 5;
        constexpr int Fan = 6;
        const int mode = primitive.mode < 0 ? Triangles : primitive.mode;
        if (mode != Triangles && mode != Strip && mode != Fan) {
            // Points and lines are no surface.
            return;
        }
        const auto accessor = [&primitive](const char* name) -> std::optional<int> {
            const auto found = primitive.attributes.find(name);
            return found == primitive.attributes.end() ? std::nullopt
                                                       : std::optional<int>(found->second);
        };
        const std::optional<int> position = accessor("POSITION");
        if (!position) {
            place.Refuse("it has no attribute POSITION");
        }
        std::vector<std::array<float, 3>> positions =
            accessors.Read<3>(*position, std::nullopt, place);
        const std::size_t count = positions.size();
        for (std::size_t target = 0; target < primitive.targets.size() && target < weights.size();
             ++target) {
            const auto offsets = primitive.targets[target].find("POSITION");
            if (offsets == primitive.targets[target].end() || weights[target] == 0.0) {
                continue;
            }
            const auto weight = static_cast<float>(weights[target]);
            const auto moves = accessors.Read<3>(offsets->second, count, place);
            for (std::size_t vertex = 0; vertex < count; ++vertex) {
                for (std::size_t axis = 0; axis < 3; ++axis) {
                    positions[vertex][axis] += weight * moves[vertex][axis];
                }
            }
        }
        const double sign = Determinant(transform) < 0.0 ? -1.0 : 1.0;
        std::vector<std::array<float, 3>> normals;
        if (const auto normal = accessor("NORMAL")) {
            normals = accessors.Read<3>(*normal, count, place);
        }
        std::vector<std::array<float, 2>> uvs;
        if (const auto uv = accessor("TEXCOORD_0")) {
            uvs = accessors.Read<2>(*uv, count, place);
        }
        std::vector<std::array<float, 4>> colors;
        if (const auto color = accessor("COLOR_0")) {
            colors = accessors.ReadColors(*color, count, place, mesh.attributes.hasAlpha);
        }
        const std::vector<std::uint32_t> corners =
            TriangleCorners(primitive.indices, mode == Strip, mode == Fan, count, place);

        const std::vector<std::uint32_t> numbers = AddVertices(positions, transform, place);
        AddNormals(numbers, normals, transform, sign);
        AddColors(numbers, colors);
        AddTriangles(corners, numbers, uvs, sign < 0.0);
        AddMaterial(primitive.material, place);
    }

    /// The numbers of the file's vertices in the mesh.
    std::vector<std::uint32_t> AddVertices(const std::vector<std::array<float, 3>>& positions,
                                           const Transform& transform,
                                           const GltfPlace& place) {
        std::vector<std::uint32_t> numbers;
        numbers.reserve(positions.size());
        for (const std::array<float, 3>& position : positions) {
            const std::array<float, 3> moved = Moved(transform, position);
            if (mesh.positions.size() >= SurfaceAttributes::none - 1) {
                place.Refuse("the file has more vertices than can be numbered");
            }
            const auto [number, isNew] =
                weld.Number(moved, static_cast<std::uint32_t>(mesh.positions.size()));
            if (isNew) {
                mesh.positions.push_back(moved);
            }
            numbers.push_back(number);
        }
        return numbers;
    }

    /// Normals are kept where all vertices have one, and those that became one vertex the same.
    void AddNormals(const std::vector<std::uint32_t>& numbers,
                    const std::vector<std::array<float, 3>>& normals,
                    const Transform& transform,
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

    /// Vertices of parts without colours are white.
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
            // Backwards, so that of several the first one stays.
            if (numbers[vertex] >= before) {
                all[numbers[vertex]] = colors[vertex];
            }
        }
    }

    std::vector<std::uint32_t> TriangleCorners(int indexAccessor,
                                               bool isStrip,
                                               bool isFan,
                                               std::size_t vertexCount,
                                               const GltfPlace& place) const {
        std::vector<std::uint32_t> order;
        if (indexAccessor >= 0) {
            order = accessors.ReadIndices(indexAccessor, vertexCount, place);
        } else {
            order.resize(vertexCount);
            for (std::size_t vertex = 0; vertex < vertexCount; ++vertex) {
                order[vertex] = static_cast<std::uint32_t>(vertex);
            }
        }
        if (!isStrip && !isFan) {
            if (order.size() % 3 != 0) {
                place.Refuse("its " + std::to_string(order.size()) +
                             " corners are no whole number of triangles");
            }
            return order;
        }
        std::vector<std::uint32_t> corners;
        for (std::size_t last = 2; last < order.size(); ++last) {
            const std::size_t turned = isStrip ? last % 2 : 0;
            const std::size_t first = isFan ? 0 : last - 2;
            corners.push_back(order[isStrip ? first + turned : first]);
            corners.push_back(order[isStrip ? last - 1 - turned : last - 1]);
            corners.push_back(order[last]);
        }
        return corners;
    }

    void AddTriangles(const std::vector<std::uint32_t>& corners,
                      const std::vector<std::uint32_t>& numbers,
                      const std::vector<std::array<float, 2>>& uvs,
                      bool isMirrored) {
        SurfaceAttributes& attributes = mesh.attributes;
        const auto firstUv = static_cast<std::uint32_t>(attributes.uvs.size());
        for (const std::array<float, 2>& uv : uvs) {
            // Files count downwards from the top of the picture.
            attributes.uvs.push_back({uv[0], 1.0f - uv[1]});
        }
        for (std::size_t first = 0; first + 2 < corners.size(); first += 3) {
            std::array<std::uint32_t, 3> triangle = {
                corners[first], corners[first + 1], corners[first + 2]};
            if (isMirrored) {
                std::swap(triangle[1], triangle[2]);
            }
            const std::array<std::uint32_t, 3> vertices = {
                numbers[triangle[0]], numbers[triangle[1]], numbers[triangle[2]]};
            // What has shrunk to a line or a point is no surface.
            if (vertices[0] == vertices[1] || vertices[1] == vertices[2] ||
                vertices[2] == vertices[0]) {
                continue;
            }
            mesh.faceSizes.push_back(3);
            for (std::size_t corner = 0; corner < 3; ++corner) {
                mesh.faceVertices.push_back(vertices[corner]);
                attributes.cornerUvs.push_back(uvs.empty() ? SurfaceAttributes::none
                                                           : firstUv + triangle[corner]);
            }
        }
        hasUvs = hasUvs || !uvs.empty();
    }

    void AddMaterial(int material, const GltfPlace& place) {
        std::uint32_t number = SurfaceAttributes::none;
        if (material >= 0) {
            const std::size_t index = place.Checked(material, model.materials.size(), "material");
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

    /// Drops what tells nothing.
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
        for (const Part& part : parts) {
            if (mesh.name.empty()) {
                mesh.name = part.name;
            }
            if (parts.size() > 1) {
                attributes.faceGroups.resize(
                    part.facesSoFar, static_cast<std::uint32_t>(attributes.groupNames.size()));
                attributes.groupNames.push_back(part.name);
            }
        }
    }

    struct Part {
        std::string name;
        std::size_t facesSoFar;
    };

    const GltfDocument& document;
    const tinygltf::Model& model;
    GltfAccessors accessors;
    PolygonMesh mesh;
    VertexWeld weld;
    std::vector<Part> parts;
    bool normalsFit = true;
    bool hasColors = false;
    bool hasUvs = false;
};

}  // namespace

PolygonMesh ReadGltf(const std::string& path) {
    const GltfDocument document(path);
    return GltfMerger(document).Read();
}

}  // namespace trovik
