// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/files/MeshWriters.h"
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

void WriteFaces(OutputFile& file, const MeshSource& source, JobControl* job) {
    UsdList counts(file, "int[] faceVertexCounts");
    ReadFaces(source, 0, job, "Writing face sizes", [&](const FaceBlock& block) {
        for (const std::uint32_t size : block.sizes) {
            counts.Whole(size);
        }
    });
    counts.End();
    UsdList indices(file, "int[] faceVertexIndices");
    ReadFaces(source, 0, job, "Writing faces", [&](const FaceBlock& block) {
        for (const std::uint32_t vertex : block.vertices) {
            indices.Whole(vertex);
        }
    });
    indices.End();
}

void WriteVertices(OutputFile& file, const MeshSource& source, JobControl* job) {
    std::array<float, 3> low = {};
    std::array<float, 3> high = {};
    bool isFirst = true;
    UsdList points(file, "point3f[] points");
    constexpr const char* phase = "Writing vertices";
    ReadVertices(source, MeshSource::Positions, job, phase, [&](const VertexBlock& block) {
        for (const std::array<float, 3>& position : block.positions) {
            points.Tuple(position);
            for (std::size_t axis = 0; axis < 3; ++axis) {
                low[axis] = isFirst ? position[axis] : std::min(low[axis], position[axis]);
                high[axis] = isFirst ? position[axis] : std::max(high[axis], position[axis]);
            }
            isFirst = false;
        }
    });
    points.End();
    UsdList extent(file, "float3[] extent");
    extent.Tuple(low);
    extent.Tuple(high);
    extent.End();
    if (source.HasNormals()) {
        UsdList normals(file, "normal3f[] normals");
        constexpr const char* ofNormals = "Writing normals";
        ReadVertices(source, MeshSource::Normals, job, ofNormals, [&](const VertexBlock& block) {
            for (const std::array<float, 3>& normal : block.normals) {
                normals.Tuple(normal);
            }
        });
        normals.End("vertex");
    }
}

void WriteColors(OutputFile& file, const MeshSource& source, JobControl* job) {
    constexpr const char* phase = "Writing colours";
    if (source.HasColors()) {
        UsdList colors(file, "color3f[] primvars:displayColor");
        ReadVertices(source, MeshSource::Colors, job, phase, [&](const VertexBlock& block) {
            for (const std::array<float, 4>& color : block.colors) {
                colors.Tuple(color, 3);
            }
        });
        colors.End("vertex");
    }
    if (source.HasAlpha()) {
        UsdList opacity(file, "float[] primvars:displayOpacity");
        ReadVertices(source, MeshSource::Colors, job, phase, [&](const VertexBlock& block) {
            for (const std::array<float, 4>& color : block.colors) {
                opacity.Number(color[3]);
            }
        });
        opacity.End("vertex");
    }
}

void WriteUvs(OutputFile& file, const MeshSource& source, JobControl* job) {
    constexpr const char* phase = "Writing UVs";
    if (source.UvCount() == 0) {
        return;
    }
    // Every corner needs a texture coordinate. All corners without one share an additional value.
    UsdList values(file, "texCoord2f[] primvars:st");
    ReadUvs(source, job, phase, [&](const std::vector<std::array<float, 2>>& uvs) {
        for (const std::array<float, 2>& uv : uvs) {
            values.Tuple(uv);
        }
    });
    values.Tuple(std::array<float, 2>{});
    values.End("faceVarying");
    UsdList indices(file, "int[] primvars:st:indices");
    const auto missing = static_cast<std::uint32_t>(source.UvCount());
    ReadFaces(source, MeshSource::Uvs, job, phase, [&](const FaceBlock& block) {
        for (const std::uint32_t uv : block.uvIndices) {
            indices.Whole(uv == SurfaceAttributes::none ? missing : uv);
        }
    });
    indices.End();
}

}  // namespace

void WriteUsd(const std::string& path, const MeshSource& source, JobControl* job) {
    constexpr std::uint64_t maxCount = std::numeric_limits<std::int32_t>::max();
    if (source.VertexCount() > maxCount || source.FaceCount() > maxCount ||
        source.UvCount() >= maxCount) {
        throw HostError(path + ": the mesh has more than " + std::to_string(maxCount) +
                        " vertices, faces or texture coordinates, the limit of a USD file");
    }
    OutputFile file(path);
    const std::string prim = UsdPrimName(source.Name());
    const double meters = source.Space().metersPerUnit > 0.0 ? source.Space().metersPerUnit : 1.0;
    file.Write("#usda 1.0\n(\n    defaultPrim = \"" + prim +
               "\"\n    metersPerUnit = " + NumberText(meters) + "\n    upAxis = \"" +
               (source.Space().up == UpAxis::Z ? "Z" : "Y") + "\"\n)\n\ndef Mesh \"" + prim +
               "\"\n{\n    uniform token subdivisionScheme = \"" +
               (source.HasNormals() ? "none" : "catmullClark") + "\"\n");
    WriteFaces(file, source, job);
    WriteVertices(file, source, job);
    WriteColors(file, source, job);
    WriteUvs(file, source, job);
    WriteUsdSubsets(file, source, prim, job);
    file.Write("}\n");
    file.Commit();
}

}  // namespace trovik
