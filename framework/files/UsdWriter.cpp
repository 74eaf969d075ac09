// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/files/MeshWriters.h"
#include "framework/files/ProgressCount.h"
#include "framework/files/UsdSubsets.h"
#include "framework/files/UsdText.h"
#include "framework/io/OutputFile.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string>

namespace trovik {

namespace {

std::string NumberText(double number) {
    char text[32];
    return std::string(text, std::to_chars(text, text + sizeof text, number).ptr);
}

void WriteFaces(OutputFile& file, const MeshSource& source, ProgressCount& progress) {
    UsdList counts(file, "int[] faceVertexCounts");
    source.ReadFaces(0, [&](const FaceBlock& block) {
        for (const std::uint32_t size : block.sizes) {
            counts.Whole(size);
        }
        progress.Add(block.sizes.size());
    });
    counts.End();
    UsdList indices(file, "int[] faceVertexIndices");
    source.ReadFaces(0, [&](const FaceBlock& block) {
        for (const std::uint32_t vertex : block.vertices) {
            indices.Whole(vertex);
        }
        progress.Add(block.sizes.size());
    });
    indices.End();
}

void WriteVertices(OutputFile& file, const MeshSource& source, ProgressCount& progress) {
    std::array<float, 3> low = {};
    std::array<float, 3> high = {};
    bool isFirst = true;
    UsdList points(file, "point3f[] points");
    source.ReadVertices(MeshSource::Positions, [&](const VertexBlock& block) {
        for (const std::array<float, 3>& position : block.positions) {
            points.Tuple(position);
            for (std::size_t axis = 0; axis < 3; ++axis) {
                low[axis] = isFirst ? position[axis] : std::min(low[axis], position[axis]);
                high[axis] = isFirst ? position[axis] : std::max(high[axis], position[axis]);
            }
            isFirst = false;
        }
        progress.Add(block.positions.size());
    });
    points.End();
    UsdList extent(file, "float3[] extent");
    extent.Tuple(low);
    extent.Tuple(high);
    extent.End();
    if (source.HasNormals()) {
        UsdList normals(file, "normal3f[] normals");
        source.ReadVertices(MeshSource::Normals, [&](const VertexBlock& block) {
            for (const std::array<float, 3>& normal : block.normals) {
                normals.Tuple(normal);
            }
            progress.Add(block.normals.size());
        });
        normals.End("vertex");
    }
}

void WriteColors(OutputFile& file, const MeshSource& source) {
    if (source.HasColors()) {
        UsdList colors(file, "color3f[] primvars:displayColor");
        source.ReadVertices(MeshSource::Colors, [&](const VertexBlock& block) {
            for (const std::array<float, 4>& color : block.colors) {
                colors.Tuple(color, 3);
            }
        });
        colors.End("vertex");
    }
    if (source.HasAlpha()) {
        UsdList opacity(file, "float[] primvars:displayOpacity");
        source.ReadVertices(MeshSource::Colors, [&](const VertexBlock& block) {
            for (const std::array<float, 4>& color : block.colors) {
                opacity.Number(color[3]);
            }
        });
        opacity.End("vertex");
    }
}

void WriteUvs(OutputFile& file, const MeshSource& source) {
    if (source.UvCount() == 0) {
        return;
    }
    // Corners without a texture coordinate need one all the same; they get one of their own.
    UsdList values(file, "texCoord2f[] primvars:st");
    source.ReadUvs([&](const std::vector<std::array<float, 2>>& uvs) {
        for (const std::array<float, 2>& uv : uvs) {
            values.Tuple(uv);
        }
    });
    values.Tuple(std::array<float, 2>{});
    values.End("faceVarying");
    UsdList indices(file, "int[] primvars:st:indices");
    const auto missing = static_cast<std::uint32_t>(source.UvCount());
    source.ReadFaces(MeshSource::Uvs, [&](const FaceBlock& block) {
        for (const std::uint32_t uv : block.uvIndices) {
            indices.Whole(uv == SurfaceAttributes::none ? missing : uv);
        }
    });
    indices.End();
}

}  // namespace

void WriteUsd(const std::string& path, const MeshSource& source, const WriteProgress& listener) {
    constexpr std::uint64_t Most = std::numeric_limits<std::int32_t>::max();
    if (source.VertexCount() > Most || source.FaceCount() > Most || source.UvCount() >= Most) {
        throw HostError(path + ": the mesh has more than " + std::to_string(Most) +
                        " vertices, faces or texture coordinates, which a USD file cannot number");
    }
    OutputFile file(path);
    ProgressCount progress(
        listener, source.FaceCount() * 2 + source.VertexCount() * (source.HasNormals() ? 2 : 1));
    const std::string prim = UsdPrimName(source.Name());
    const double meters = source.Space().metersPerUnit > 0.0 ? source.Space().metersPerUnit : 1.0;
    file.Write("#usda 1.0\n(\n    defaultPrim = \"" + prim +
               "\"\n    metersPerUnit = " + NumberText(meters) + "\n    upAxis = \"" +
               (source.Space().up == UpAxis::Z ? "Z" : "Y") + "\"\n)\n\ndef Mesh \"" + prim +
               "\"\n{\n    uniform token subdivisionScheme = \"" +
               (source.HasNormals() ? "none" : "catmullClark") + "\"\n");
    WriteFaces(file, source, progress);
    WriteVertices(file, source, progress);
    WriteColors(file, source);
    WriteUvs(file, source);
    WriteUsdSubsets(file, source, prim);
    file.Write("}\n");
    file.Commit();
}

}  // namespace trovik
