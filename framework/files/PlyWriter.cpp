// SPDX-License-Identifier: Apache-2.0
#include "framework/files/MeshFiles.h"
#include "framework/files/MeshWriters.h"
#include "framework/io/OutputFile.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

namespace trovik {

namespace {

/// The format of the rows. Old readers support only `uchar` lengths and `int` indices, so wider
/// types are used only if necessary.
struct PlyLayout {
    explicit PlyLayout(const MeshSource& source)
        : wideLength(source.LargestFace() > std::numeric_limits<std::uint8_t>::max()),
          wideIndex(source.VertexCount() > std::size_t{std::numeric_limits<std::int32_t>::max()}),
          wideUvLength(source.LargestFace() * std::uint64_t{2} >
                       std::numeric_limits<std::uint8_t>::max()),
          vertexUvs(source.UvCount() > 0 && source.UvsFollowVertices()),
          faceUvs(source.UvCount() > 0 && !source.UvsFollowVertices()),
          byteColors(source.ColorsAreBytes()),
          colorNumbers(source.HasAlpha()    ? 4
                       : source.HasColors() ? 3
                                            : 0) {}

    bool wideLength;
    bool wideIndex;
    bool wideUvLength;
    bool vertexUvs;
    bool faceUvs;
    bool byteColors;
    std::size_t colorNumbers;
};

void WriteHeader(OutputFile& file,
                 const MeshSource& source,
                 PlyEncoding encoding,
                 const PlyLayout& layout) {
    file.Write("ply\nformat ");
    file.Write(encoding == PlyEncoding::Text                 ? "ascii"
               : encoding == PlyEncoding::BinaryLittleEndian ? "binary_little_endian"
                                                             : "binary_big_endian");
    file.Write(" 1.0\n");
    if (!source.Name().empty()) {
        file.Write("obj_info name ");
        for (const char letter : source.Name()) {
            // The name must not start a new header line.
            file.Put(letter == '\n' || letter == '\r' ? '_' : letter);
        }
        file.Put('\n');
    }
    if (const std::string units = UnitName(source.Space().metersPerUnit); !units.empty()) {
        file.Write("obj_info units " + units + "\n");
    }
    if (const std::string up = UpAxisName(source.Space().up); !up.empty()) {
        file.Write("obj_info up " + up + "\n");
    }
    file.Write("element vertex ");
    file.Number(source.VertexCount());
    file.Write("\nproperty float x\nproperty float y\nproperty float z\n");
    if (source.HasNormals()) {
        file.Write("property float nx\nproperty float ny\nproperty float nz\n");
    }
    if (layout.vertexUvs) {
        file.Write("property float s\nproperty float t\n");
    }
    constexpr const char* colorNames[] = {"red", "green", "blue", "alpha"};
    for (std::size_t i = 0; i < layout.colorNumbers; ++i) {
        file.Write(layout.byteColors ? "property uchar " : "property float ");
        file.Write(colorNames[i]);
        file.Put('\n');
    }
    file.Write("element face ");
    file.Number(source.FaceCount());
    file.Write(layout.wideLength ? "\nproperty list uint " : "\nproperty list uchar ");
    file.Write(layout.wideIndex ? "uint" : "int");
    file.Write(" vertex_indices\n");
    if (layout.faceUvs) {
        file.Write(layout.wideUvLength ? "property list uint float texcoord\n"
                                       : "property list uchar float texcoord\n");
    }
    file.Write("end_header\n");
}

/// Writes rows as text.
class TextRows {
public:
    explicit TextRows(OutputFile& target) : file(target) {}
    void Float(float value) {
        Blank();
        file.Number(value);
    }
    void Byte(std::uint32_t value) { Whole(value); }
    void Whole(std::uint32_t value) {
        Blank();
        file.Number(std::uint64_t{value});
    }
    void End() {
        file.Put('\n');
        isFirst = true;
    }

private:
    void Blank() {
        if (!isFirst) {
            file.Put(' ');
        }
        isFirst = false;
    }

    OutputFile& file;
    bool isFirst = true;
};

template <std::endian order>
class BinaryRows {
public:
    explicit BinaryRows(OutputFile& target) : file(target) {}
    void Float(float value) { Whole(std::bit_cast<std::uint32_t>(value)); }
    void Byte(std::uint32_t value) { file.Put(static_cast<char>(value)); }
    void Whole(std::uint32_t value) {
        auto bytes = std::bit_cast<std::array<unsigned char, sizeof(value)>>(value);
        if constexpr (order != std::endian::native) {
            std::reverse(bytes.begin(), bytes.end());
        }
        file.Write(bytes.data(), bytes.size());
    }
    void End() {}

private:
    OutputFile& file;
};

template <class Rows>
void WriteVertices(Rows rows, const MeshSource& source, const PlyLayout& layout, JobControl* job) {
    constexpr unsigned everything =
        MeshSource::Positions | MeshSource::Normals | MeshSource::Uvs | MeshSource::Colors;
    ReadVertices(source, everything, job, "Writing vertices", [&](const VertexBlock& block) {
        for (std::size_t vertex = 0; vertex < block.positions.size(); ++vertex) {
            for (const float number : block.positions[vertex]) {
                rows.Float(number);
            }
            if (!block.normals.empty()) {
                for (const float number : block.normals[vertex]) {
                    rows.Float(number);
                }
            }
            if (layout.vertexUvs) {
                rows.Float(block.uvs[vertex][0]);
                rows.Float(block.uvs[vertex][1]);
            }
            for (std::size_t i = 0; i < layout.colorNumbers; ++i) {
                const float number = block.colors[vertex][i];
                if (layout.byteColors) {
                    rows.Byte(static_cast<std::uint32_t>(std::lround(number * 255.0f)));
                } else {
                    rows.Float(number);
                }
            }
            rows.End();
        }
    });
}

template <class Rows>
void WriteFaces(Rows rows, const MeshSource& source, const PlyLayout& layout, JobControl* job) {
    const auto length = [&rows](std::uint32_t count, bool wide) {
        if (wide) {
            rows.Whole(count);
        } else {
            rows.Byte(count);
        }
    };
    const unsigned parts = layout.faceUvs ? MeshSource::Uvs : 0u;
    ReadFaces(source, parts, job, "Writing faces", [&](const FaceBlock& block) {
        std::size_t first = 0;
        for (const std::uint32_t size : block.sizes) {
            const std::size_t end = first + size;
            length(size, layout.wideLength);
            for (std::size_t corner = first; corner < end; ++corner) {
                rows.Whole(block.vertices[corner]);
            }
            if (layout.faceUvs) {
                const auto begin = block.uvIndices.begin();
                const bool hasUvs =
                    std::find(begin + static_cast<std::ptrdiff_t>(first),
                              begin + static_cast<std::ptrdiff_t>(end),
                              SurfaceAttributes::none) == begin + static_cast<std::ptrdiff_t>(end);
                length(hasUvs ? size * 2 : 0, layout.wideUvLength);
                for (std::size_t corner = first; corner < end && hasUvs; ++corner) {
                    rows.Float(block.uvs[corner][0]);
                    rows.Float(block.uvs[corner][1]);
                }
            }
            rows.End();
            first = end;
        }
    });
}

template <class Rows>
void WriteBody(OutputFile& file,
               const MeshSource& source,
               const PlyLayout& layout,
               JobControl* job) {
    WriteVertices(Rows(file), source, layout, job);
    WriteFaces(Rows(file), source, layout, job);
}

}  // namespace

void WritePly(const std::string& path,
              const MeshSource& source,
              PlyEncoding encoding,
              JobControl* job) {
    OutputFile file(path);
    const PlyLayout layout(source);
    WriteHeader(file, source, encoding, layout);
    switch (encoding) {
        case PlyEncoding::Text:
            WriteBody<TextRows>(file, source, layout, job);
            break;
        case PlyEncoding::BinaryLittleEndian:
            WriteBody<BinaryRows<std::endian::little>>(file, source, layout, job);
            break;
        case PlyEncoding::BinaryBigEndian:
            WriteBody<BinaryRows<std::endian::big>>(file, source, layout, job);
            break;
    }
    file.Commit();
}

}  // namespace trovik
