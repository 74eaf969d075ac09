// SPDX-License-Identifier: Apache-2.0
#include "framework/files/OutputFile.h"
#include "framework/files/PolygonMesh.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstdint>
#include <limits>
#include <string>

namespace trovik {

namespace {

/// Old readers know `uchar` lengths and `int` indices only, so wider types are last resorts.
struct FaceTypes {
    bool wideLength;
    bool wideIndex;
};

FaceTypes ChooseTypes(const PolygonMesh& mesh) {
    const auto longest = std::max_element(mesh.faceSizes.begin(), mesh.faceSizes.end());
    return {longest != mesh.faceSizes.end() && *longest > std::numeric_limits<std::uint8_t>::max(),
            mesh.positions.size() > std::size_t{std::numeric_limits<std::int32_t>::max()}};
}

void WriteHeader(OutputFile& file,
                 const PolygonMesh& mesh,
                 PlyEncoding encoding,
                 const FaceTypes& types) {
    file.Write("ply\nformat ");
    file.Write(encoding == PlyEncoding::Text                 ? "ascii"
               : encoding == PlyEncoding::BinaryLittleEndian ? "binary_little_endian"
                                                             : "binary_big_endian");
    file.Write(" 1.0\n");
    if (!mesh.name.empty()) {
        file.Write("obj_info name ");
        for (const char letter : mesh.name) {
            // A name must not begin a header line of its own.
            file.Put(letter == '\n' || letter == '\r' ? '_' : letter);
        }
        file.Put('\n');
    }
    file.Write("element vertex ");
    file.Number(std::uint64_t{mesh.positions.size()});
    file.Write("\nproperty float x\nproperty float y\nproperty float z\n");
    if (!mesh.normals.empty()) {
        file.Write("property float nx\nproperty float ny\nproperty float nz\n");
    }
    file.Write("element face ");
    file.Number(std::uint64_t{mesh.faceSizes.size()});
    file.Write(types.wideLength ? "\nproperty list uint " : "\nproperty list uchar ");
    file.Write(types.wideIndex ? "uint" : "int");
    file.Write(" vertex_indices\nend_header\n");
}

void WriteTextBody(OutputFile& file, const PolygonMesh& mesh) {
    for (std::size_t vertex = 0; vertex < mesh.positions.size(); ++vertex) {
        const auto [x, y, z] = mesh.positions[vertex];
        file.Number(x);
        file.Put(' ');
        file.Number(y);
        file.Put(' ');
        file.Number(z);
        if (!mesh.normals.empty()) {
            for (const float coordinate : mesh.normals[vertex]) {
                file.Put(' ');
                file.Number(coordinate);
            }
        }
        file.Put('\n');
    }
    std::size_t corner = 0;
    for (const std::uint32_t size : mesh.faceSizes) {
        file.Number(std::uint64_t{size});
        for (const std::size_t end = corner + size; corner < end; ++corner) {
            file.Put(' ');
            file.Number(std::uint64_t{mesh.faceVertices[corner]});
        }
        file.Put('\n');
    }
}

template <std::endian order>
void WriteWord(OutputFile& file, std::uint32_t word) {
    auto bytes = std::bit_cast<std::array<unsigned char, sizeof(word)>>(word);
    if constexpr (order != std::endian::native) {
        std::reverse(bytes.begin(), bytes.end());
    }
    file.Write(bytes.data(), bytes.size());
}

template <std::endian order>
void WriteBinaryBody(OutputFile& file, const PolygonMesh& mesh, const FaceTypes& types) {
    for (std::size_t vertex = 0; vertex < mesh.positions.size(); ++vertex) {
        for (const float coordinate : mesh.positions[vertex]) {
            WriteWord<order>(file, std::bit_cast<std::uint32_t>(coordinate));
        }
        if (!mesh.normals.empty()) {
            for (const float coordinate : mesh.normals[vertex]) {
                WriteWord<order>(file, std::bit_cast<std::uint32_t>(coordinate));
            }
        }
    }
    std::size_t corner = 0;
    for (const std::uint32_t size : mesh.faceSizes) {
        if (types.wideLength) {
            WriteWord<order>(file, size);
        } else {
            file.Put(static_cast<char>(size));
        }
        for (const std::size_t end = corner + size; corner < end; ++corner) {
            WriteWord<order>(file, mesh.faceVertices[corner]);
        }
    }
}

}  // namespace

void WritePly(const std::string& path, const PolygonMesh& mesh, PlyEncoding encoding) {
    assert(mesh.normals.empty() || mesh.normals.size() == mesh.positions.size());
    OutputFile file(path);
    const FaceTypes types = ChooseTypes(mesh);
    WriteHeader(file, mesh, encoding, types);
    switch (encoding) {
        case PlyEncoding::Text:
            WriteTextBody(file, mesh);
            break;
        case PlyEncoding::BinaryLittleEndian:
            WriteBinaryBody<std::endian::little>(file, mesh, types);
            break;
        case PlyEncoding::BinaryBigEndian:
            WriteBinaryBody<std::endian::big>(file, mesh, types);
            break;
    }
    file.Commit();
}

}  // namespace trovik
