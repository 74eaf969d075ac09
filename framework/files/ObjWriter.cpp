// SPDX-License-Identifier: Apache-2.0
#include "framework/files/OutputFile.h"
#include "framework/files/PolygonMesh.h"

#include <array>
#include <cassert>
#include <cstdint>
#include <string>
#include <vector>

namespace trovik {

namespace {

void WriteVectors(OutputFile& file,
                  const char* keyword,
                  const std::vector<std::array<float, 3>>& vectors) {
    for (const std::array<float, 3>& vector : vectors) {
        file.Write(keyword);
        for (const float coordinate : vector) {
            file.Put(' ');
            file.Number(coordinate);
        }
        file.Put('\n');
    }
}

}  // namespace

void WriteObj(const std::string& path, const PolygonMesh& mesh) {
    assert(mesh.normals.empty() || mesh.normals.size() == mesh.positions.size());
    OutputFile file(path);
    if (!mesh.name.empty()) {
        file.Write("o ");
        for (const char letter : mesh.name) {
            // A name must not begin a line of its own, nor tie the next line to this one.
            const bool isBreak = letter == '\n' || letter == '\r' || letter == '\0';
            file.Put(isBreak || letter == '\\' ? '_' : letter);
        }
        file.Put('\n');
    }
    WriteVectors(file, "v", mesh.positions);
    WriteVectors(file, "vn", mesh.normals);

    std::size_t corner = 0;
    for (const std::uint32_t size : mesh.faceSizes) {
        assert(mesh.faceVertices.size() - corner >= size);
        file.Put('f');
        for (const std::size_t end = corner + size; corner < end; ++corner) {
            const std::uint64_t index = std::uint64_t{mesh.faceVertices[corner]} + 1;
            file.Put(' ');
            file.Number(index);
            if (!mesh.normals.empty()) {
                file.Write("//");
                file.Number(index);
            }
        }
        file.Put('\n');
    }
    file.Commit();
}

}  // namespace trovik
