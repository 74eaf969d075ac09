// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/files/FaceParts.h"
#include "framework/files/GltfLayout.h"
#include "framework/files/GltfSink.h"
#include "framework/files/MeshWriters.h"
#include "framework/jobs/JobPhase.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace trovik {

namespace {

using nlohmann::json;

constexpr int FloatType = 5126;
constexpr int IndexType = 5125;
constexpr int VertexView = 34962;
constexpr int IndexView = 34963;

/// Builds the JSON that describes the buffer's contents, in the order in which they are written.
class GltfDescription {
public:
    /// \param name  name of the mesh and of its node.
    GltfDescription(const MeshSource& source,
                    const GltfLayout& layout,
                    const FaceParts& parts,
                    const std::string& name,
                    JobControl* job) {
        const std::uint64_t vertices = layout.VertexCount();
        json attributes;
        attributes["POSITION"] = AddAccessor(AddView(vertices * 12, VertexView),
                                             FloatType,
                                             vertices,
                                             "VEC3",
                                             layout.PositionBox(job));
        if (source.HasNormals()) {
            attributes["NORMAL"] =
                AddAccessor(AddView(vertices * 12, VertexView), FloatType, vertices, "VEC3", {});
        }
        if (source.UvCount() > 0) {
            attributes["TEXCOORD_0"] =
                AddAccessor(AddView(vertices * 8, VertexView), FloatType, vertices, "VEC2", {});
        }
        if (source.HasColors()) {
            attributes["COLOR_0"] =
                AddAccessor(AddView(vertices * (source.HasAlpha() ? 16 : 12), VertexView),
                            FloatType,
                            vertices,
                            source.HasAlpha() ? "VEC4" : "VEC3",
                            {});
        }
        json mesh = {{"name", name}};
        json primitives = AddPrimitives(source, layout, parts);
        AddMorphTargets(source, layout, primitives, mesh);
        for (json& primitive : primitives) {
            primitive["attributes"] = attributes;
        }
        mesh["primitives"] = std::move(primitives);
        document["asset"] = {{"version", "2.0"}, {"generator", "trovik"}};
        document["scene"] = 0;
        document["scenes"] = json::array({{{"nodes", json::array({0})}}});
        document["nodes"] = json::array({{{"mesh", 0}, {"name", name}}});
        document["meshes"] = json::array({mesh});
        if (!materials.empty()) {
            document["materials"] = std::move(materials);
        }
        document["accessors"] = std::move(accessors);
        document["bufferViews"] = std::move(views);
    }

    std::uint64_t BufferBytes() const { return bytes; }

    /// Returns the JSON text without the buffers and the closing brace, which are written
    /// afterwards.
    std::string OpenText() const {
        std::string text = document.dump(-1, ' ', false, json::error_handler_t::replace);
        text.pop_back();
        return text + ",\"buffers\":[{\"byteLength\":" + std::to_string(bytes);
    }

private:
    /// \param target  the GPU buffer target of the view; 0 for sparse data, which must not have
    /// one.
    std::size_t AddView(std::uint64_t length, int target = 0) {
        views.push_back({{"buffer", 0}, {"byteOffset", bytes}, {"byteLength", length}});
        if (target != 0) {
            views.back()["target"] = target;
        }
        bytes += length;
        return views.size() - 1;
    }

    std::size_t AddAccessor(std::size_t view,
                            int type,
                            std::uint64_t count,
                            const char* shape,
                            const std::optional<GltfBox>& box,
                            std::uint64_t offset = 0) {
        json accessor = {
            {"bufferView", view}, {"componentType", type}, {"count", count}, {"type", shape}};
        if (offset > 0) {
            accessor["byteOffset"] = offset;
        }
        if (box) {
            accessor["min"] = box->low;
            accessor["max"] = box->high;
        }
        accessors.push_back(accessor);
        return accessors.size() - 1;
    }

    /// Adds one primitive per combination of group and material; all of them share the same
    /// vertices. The format has no groups within a mesh, so group names are stored as extras, which
    /// ReadGltf reads.
    json AddPrimitives(const MeshSource& source, const GltfLayout& layout, const FaceParts& parts) {
        const std::size_t view = AddView(layout.TriangleCount() * 12, IndexView);
        std::unordered_map<std::uint32_t, std::size_t> materialOf;
        json primitives = json::array();
        std::uint64_t offset = 0;
        for (const FaceParts::Part& part : parts.Parts()) {
            const std::uint64_t corners = part.Triangles() * 3;
            json primitive = {{"mode", 4}};
            primitive["indices"] = AddAccessor(view, IndexType, corners, "SCALAR", {}, offset);
            offset += corners * 4;
            if (part.material != SurfaceAttributes::none) {
                const auto [entry, isNew] = materialOf.try_emplace(part.material, materials.size());
                if (isNew) {
                    // The default of the format would make the material fully metallic.
                    materials.push_back({{"name", source.MaterialNames()[part.material]},
                                         {"pbrMetallicRoughness", {{"metallicFactor", 0}}}});
                }
                primitive["material"] = entry->second;
            }
            if (part.group != SurfaceAttributes::none) {
                primitive["extras"] = {{"group", source.GroupNames()[part.group]}};
            }
            primitives.push_back(std::move(primitive));
        }
        return primitives;
    }

    /// Layers move only some of the vertices, so their offsets are stored as sparse accessors.
    void AddMorphTargets(const MeshSource& source,
                         const GltfLayout& layout,
                         json& primitives,
                         json& mesh) {
        if (source.MorphTargets().empty()) {
            return;
        }
        json targets = json::array();
        json names = json::array();
        json weights = json::array();
        for (std::size_t number = 0; number < source.MorphTargets().size(); ++number) {
            const MorphTarget& target = source.MorphTargets()[number];
            const std::uint64_t count = layout.MorphVertices(number).size();
            const std::size_t indices = AddView(count * 4);
            const std::size_t values = AddView(count * 12);
            const GltfBox box = layout.MorphBox(number);
            accessors.push_back(
                {{"componentType", FloatType},
                 {"count", layout.VertexCount()},
                 {"type", "VEC3"},
                 {"min", box.low},
                 {"max", box.high},
                 {"sparse",
                  {{"count", count},
                   {"indices", {{"bufferView", indices}, {"componentType", IndexType}}},
                   {"values", {{"bufferView", values}}}}}});
            targets.push_back({{"POSITION", accessors.size() - 1}});
            names.push_back(target.name);
            weights.push_back(target.weight);
        }
        for (json& primitive : primitives) {
            primitive["targets"] = targets;
        }
        mesh["weights"] = weights;
        mesh["extras"] = {{"targetNames", names}};
    }

    json document;
    json materials = json::array();
    json accessors = json::array();
    json views = json::array();
    std::uint64_t bytes = 0;
};

/// Writes the mesh vertices, followed by the copies that texture seams require.
void WriteVertices(GltfSink& sink,
                   const MeshSource& source,
                   const GltfLayout& layout,
                   JobControl* job) {
    JobPhase phase(job, "Writing positions", layout.VertexCount());
    for (std::uint32_t vertex = 0; vertex < source.VertexCount(); ++vertex) {
        phase.Add();
        sink.Floats(source.BasePosition(vertex));
    }
    for (const GltfCopy& copy : layout.Copies()) {
        phase.Add();
        sink.Floats(source.BasePosition(copy.vertex));
    }
    phase.Finish();
    // The values for the copies are saved when their original vertex is visited.
    const auto repeated = [&](unsigned part, auto list, auto& kept) {
        const auto take = [&, first = std::uint32_t{0}](const VertexBlock& block) mutable {
            for (const auto& entry : block.*list) {
                sink.Floats(entry);
                layout.ForEachCopyOf(first,
                                     [&kept, &entry](std::size_t copy) { kept[copy] = entry; });
                ++first;
            }
        };
        ReadVertices(source, part, job, "Writing normals", take);
        for (const auto& entry : kept) {
            sink.Floats(entry);
        }
    };
    if (source.HasNormals()) {
        std::vector<std::array<float, 3>> kept(layout.Copies().size());
        repeated(MeshSource::Normals, &VertexBlock::normals, kept);
    }
    if (source.UvCount() > 0) {
        layout.WriteUvs(sink, job);
    }
    if (source.HasColors()) {
        std::vector<std::array<float, 4>> kept(layout.Copies().size());
        const bool hasAlpha = source.HasAlpha();
        const auto write = [&sink, hasAlpha](const std::array<float, 4>& color) {
            sink.Floats(std::array<float, 3>{color[0], color[1], color[2]});
            if (hasAlpha) {
                sink.Floats(std::array<float, 1>{color[3]});
            }
        };
        std::uint32_t vertex = 0;
        constexpr const char* ofColors = "Writing colours";
        ReadVertices(source, MeshSource::Colors, job, ofColors, [&](const VertexBlock& block) {
            for (const std::array<float, 4>& color : block.colors) {
                write(color);
                layout.ForEachCopyOf(vertex,
                                     [&kept, &color](std::size_t copy) { kept[copy] = color; });
                ++vertex;
            }
        });
        for (const std::array<float, 4>& color : kept) {
            write(color);
        }
    }
}

void WriteTriangles(GltfSink& sink, const GltfLayout& layout, const FaceParts& parts) {
    parts.ForEachWord(
        [](const FaceParts::Part& part) { return part.Triangles() * 3; },
        layout.HasCopies() ? MeshSource::Uvs : 0u,
        [&layout](const FaceBlock& block,
                  const FaceParts::Face& face,
                  std::vector<std::uint32_t>& corners) {
            const auto number = [&](std::size_t corner) {
                return layout.VertexOf(block, face.firstCorner + corner);
            };
            for (std::size_t corner = 2; corner < block.sizes[face.inBlock]; ++corner) {
                corners.insert(corners.end(), {number(0), number(corner - 1), number(corner)});
            }
        },
        [&](std::size_t, const std::vector<std::uint32_t>& corners) {
            for (const std::uint32_t corner : corners) {
                sink.Word(corner);
            }
        });
}

void WriteMorphTargets(GltfSink& sink,
                       const MeshSource& source,
                       const GltfLayout& layout,
                       JobControl* job) {
    for (std::size_t number = 0; number < source.MorphTargets().size(); ++number) {
        const std::vector<std::uint32_t>& vertices = layout.MorphVertices(number);
        JobPhase phase(job, "Writing layers", vertices.size() * 2);
        for (const std::uint32_t vertex : vertices) {
            phase.Add();
            sink.Word(vertex);
        }
        for (const std::uint32_t vertex : vertices) {
            phase.Add();
            sink.Floats(source.MorphTargets()[number].offset(layout.Original(vertex)));
        }
        phase.Finish();
    }
}

}  // namespace

void WriteGltf(const std::string& path, const MeshSource& source, bool isBinary, JobControl* job) {
    const GltfLayout layout(source, path, job);
    const FaceParts parts(source, FaceParts::ByGroup | FaceParts::ByMaterial, job);
    const std::string name =
        source.Name().empty() ? std::filesystem::path(path).stem().string() : source.Name();
    const GltfDescription description(source, layout, parts, name, job);
    std::string text = description.OpenText();
    constexpr std::uint64_t chunkHeader = 8;
    constexpr std::uint64_t fileHeader = 12;
    if (isBinary) {
        text += "}]}";
        text.resize((text.size() + 3) / 4 * 4, ' ');
        const std::uint64_t total =
            fileHeader + chunkHeader * 2 + text.size() + description.BufferBytes();
        if (total > std::numeric_limits<std::uint32_t>::max()) {
            throw HostError(path +
                            ": a binary glTF file is limited to 4 GiB, but this mesh needs " +
                            std::to_string(total) + " bytes");
        }
    }
    OutputFile file(path);
    GltfSink sink(file, !isBinary);
    if (isBinary) {
        GltfSink plain(file, false);
        file.Write("glTF");
        plain.Word(2);
        plain.Word(static_cast<std::uint32_t>(fileHeader + chunkHeader * 2 + text.size() +
                                              description.BufferBytes()));
        plain.Word(static_cast<std::uint32_t>(text.size()));
        file.Write("JSON");
        file.Write(text);
        plain.Word(static_cast<std::uint32_t>(description.BufferBytes()));
        file.Write(std::string_view("BIN\0", 4));
    } else {
        file.Write(text);
        file.Write(",\"uri\":\"data:application/octet-stream;base64,");
    }
    WriteVertices(sink, source, layout, job);
    WriteTriangles(sink, layout, parts);
    WriteMorphTargets(sink, source, layout, job);
    sink.End();
    if (!isBinary) {
        file.Write("\"}]}\n");
    }
    file.Commit();
}

}  // namespace trovik
