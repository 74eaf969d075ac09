// SPDX-License-Identifier: Apache-2.0
#include "framework/files/MaterialFiles.h"
#include "framework/files/MeshFiles.h"
#include "framework/files/MeshWriters.h"
#include "framework/io/OutputFile.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace trovik {

namespace {

/// The name must neither start a new line nor continue the statement on the next line.
void WriteNameLine(OutputFile& file, std::string_view keyword, const std::string& name) {
    file.Write(keyword);
    for (const char letter : name) {
        const bool isBreak = letter == '\n' || letter == '\r' || letter == '\0';
        file.Put(isBreak || letter == '\\' ? '_' : letter);
    }
    file.Put('\n');
}

void WriteSpace(OutputFile& file, const MeshSpace& space) {
    if (const std::string units = UnitName(space.metersPerUnit); !units.empty()) {
        file.Write("# units " + units + "\n");
    }
    if (const std::string up = UpAxisName(space.up); !up.empty()) {
        file.Write("# up " + up + "\n");
    }
}

template <std::size_t count>
void WriteNumbers(OutputFile& file, const std::array<float, count>& numbers, std::size_t wanted) {
    for (std::size_t i = 0; i < wanted; ++i) {
        file.Put(' ');
        file.Number(numbers[i]);
    }
}

void WriteVertices(OutputFile& file, const MeshSource& source, JobControl* job) {
    constexpr unsigned shape = MeshSource::Positions | MeshSource::Colors;
    ReadVertices(source, shape, job, "Writing vertices", [&](const VertexBlock& block) {
        for (std::size_t i = 0; i < block.positions.size(); ++i) {
            file.Put('v');
            WriteNumbers(file, block.positions[i], 3);
            if (!block.colors.empty()) {
                WriteNumbers(file, block.colors[i], source.HasAlpha() ? 4 : 3);
            }
            file.Put('\n');
        }
    });
    ReadUvs(source, job, "Writing UVs", [&file](const std::vector<std::array<float, 2>>& uvs) {
        for (const std::array<float, 2>& uv : uvs) {
            file.Write("vt");
            WriteNumbers(file, uv, 2);
            file.Put('\n');
        }
    });
    if (!source.HasNormals()) {
        return;
    }
    constexpr const char* phase = "Writing normals";
    ReadVertices(source, MeshSource::Normals, job, phase, [&file](const VertexBlock& block) {
        for (const std::array<float, 3>& normal : block.normals) {
            file.Write("vn");
            WriteNumbers(file, normal, 3);
            file.Put('\n');
        }
    });
}

/// Writes an `s` line when the smoothing group changes between faces. A group applies to all faces
/// up to the next `s` line, so `s off` precedes faces without a group if an earlier face had one.
class SmoothingChange {
public:
    void Write(OutputFile& file, const std::vector<std::uint32_t>& groups, std::size_t face) {
        if (groups.empty() || groups[face] == present) {
            return;
        }
        present = groups[face];
        if (present == SurfaceAttributes::none || present == 0) {
            file.Write("s off\n");
            return;
        }
        file.Write("s ");
        file.Number(std::uint64_t{present});
        file.Put('\n');
    }

private:
    std::uint32_t present = SurfaceAttributes::none;
};

/// Writes a line when the group or material changes between faces.
class NameChange {
public:
    NameChange(std::string_view lineKeyword, const std::vector<std::string>& listOfNames)
        : keyword(lineKeyword), names(listOfNames) {}

    void Write(OutputFile& file, const std::vector<std::uint32_t>& numbers, std::size_t face) {
        if (numbers.empty() || numbers[face] == present) {
            return;
        }
        present = numbers[face];
        const bool isNone = present == SurfaceAttributes::none;
        WriteNameLine(file, keyword, isNone ? std::string() : names[present]);
    }

private:
    std::string_view keyword;
    const std::vector<std::string>& names;
    std::uint32_t present = SurfaceAttributes::none;
};

}  // namespace

std::vector<std::string> WriteObj(const std::string& path,
                                  const MeshSource& source,
                                  JobControl* job) {
    OutputFile file(path);
    PlacedMaterialFiles materials = PlaceMaterialFiles(path, source.MaterialFiles());
    WriteSpace(file, source.Space());
    for (const std::string& reference : materials.references) {
        WriteNameLine(file, "mtllib ", reference);
    }
    if (!source.Name().empty()) {
        WriteNameLine(file, "o ", source.Name());
    }
    WriteVertices(file, source, job);

    NameChange groupLine("g ", source.GroupNames());
    NameChange materialLine("usemtl ", source.MaterialNames());
    SmoothingChange smoothingLine;
    const bool hasNormals = source.HasNormals();
    ReadFaces(source, MeshSource::Uvs, job, "Writing faces", [&](const FaceBlock& block) {
        std::size_t corner = 0;
        for (std::size_t face = 0; face < block.sizes.size(); ++face) {
            groupLine.Write(file, block.groups, face);
            materialLine.Write(file, block.materials, face);
            smoothingLine.Write(file, block.smoothing, face);
            file.Put('f');
            for (const std::size_t end = corner + block.sizes[face]; corner < end; ++corner) {
                const std::uint64_t vertex = std::uint64_t{block.vertices[corner]} + 1;
                file.Put(' ');
                file.Number(vertex);
                const bool hasUv =
                    !block.uvIndices.empty() && block.uvIndices[corner] != SurfaceAttributes::none;
                if (hasUv) {
                    file.Put('/');
                    file.Number(std::uint64_t{block.uvIndices[corner]} + 1);
                }
                if (hasNormals) {
                    file.Write(hasUv ? "/" : "//");
                    file.Number(vertex);
                }
            }
            file.Put('\n');
        }
    });
    file.Commit();
    return std::move(materials.written);
}

}  // namespace trovik
