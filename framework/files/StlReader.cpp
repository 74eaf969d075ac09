// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/files/MeshImport.h"
#include "framework/files/StlFile.h"
#include "framework/files/VertexWeld.h"
#include "framework/io/InputFile.h"
#include "framework/io/NumberText.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>

namespace trovik {

namespace {

constexpr std::size_t MaxLineBytes = 64 * 1024;

using Triangle = std::array<std::array<float, 3>, 3>;

/// Builds an indexed triangle list: equal positions share a vertex.
class TriangleList {
public:
    void Add(const Triangle& triangle) {
        const std::size_t number = count++;
        // Degenerate triangles are skipped here instead of in FinishImport, so that their corners
        // do not become vertices.
        if (VertexWeld::AreSame(triangle[0], triangle[1]) ||
            VertexWeld::AreSame(triangle[1], triangle[2]) ||
            VertexWeld::AreSame(triangle[2], triangle[0])) {
            dropped.Add(number);
            return;
        }
        for (const std::array<float, 3>& position : triangle) {
            const auto [vertex, isNew] =
                weld.Number(position, static_cast<std::uint32_t>(mesh.positions.size()));
            if (isNew) {
                mesh.positions.push_back(position);
            }
            mesh.faceVertices.push_back(vertex);
        }
        mesh.faceSizes.push_back(3);
        mesh.attributes.faceGroups.push_back(group);
    }

    void BeginSolid(std::string name) {
        if (mesh.name.empty()) {
            mesh.name = name;
        }
        std::vector<std::string>& names = mesh.attributes.groupNames;
        const auto known = std::find(names.begin(), names.end(), name);
        group = static_cast<std::uint32_t>(known - names.begin());
        if (known == names.end()) {
            names.push_back(std::move(name));
        }
    }

    PolygonMesh Finish(const std::string& path, JobControl* job) {
        if (mesh.attributes.groupNames.size() < 2) {
            mesh.attributes.groupNames.clear();
            mesh.attributes.faceGroups.clear();
        }
        FinishImport(mesh, path, job, dropped);
        return std::move(mesh);
    }

private:
    PolygonMesh mesh;
    VertexWeld weld;
    std::uint32_t group = 0;
    std::size_t count = 0;
    DroppedFaces dropped;
};

PolygonMesh ReadBinary(InputFile& file, std::uint32_t count, JobControl* job) {
    TriangleList triangles;
    const unsigned char* header = file.Take(stl_file::headerBytes);
    std::string name(reinterpret_cast<const char*>(header), stl_file::headerBytes);
    name.resize(std::min(name.size(), name.find('\0')));
    triangles.BeginSolid(name.starts_with(stl_file::nameMark)
                             ? name.substr(stl_file::nameMark.size())
                             : std::string());
    file.Take(sizeof(std::uint32_t));
    for (std::uint32_t number = 0; number < count; ++number) {
        const unsigned char* row = file.Take(stl_file::triangleBytes);
        if (row == nullptr) {
            throw HostError(file.Path() + ", byte " + std::to_string(file.Position()) +
                            ": the file ends inside triangle " + std::to_string(number) + " of " +
                            std::to_string(count) + " (counted from 0)");
        }
        Triangle triangle;
        for (std::size_t corner = 0; corner < 3; ++corner) {
            for (std::size_t axis = 0; axis < 3; ++axis) {
                // The corners follow the three numbers of the normal.
                const unsigned char* bytes = row + (3 + corner * 3 + axis) * sizeof(float);
                const float coordinate = stl_file::LoadFloat(bytes);
                if (!std::isfinite(coordinate)) {
                    throw HostError(file.Path() + ", byte " +
                                    std::to_string(file.Position() - stl_file::triangleBytes) +
                                    ": triangle " + std::to_string(number) +
                                    " (counted from 0) has a non-finite coordinate");
                }
                triangle[corner][axis] = coordinate;
            }
        }
        triangles.Add(triangle);
    }
    return triangles.Finish(file.Path(), job);
}

/// Returns whether the word is this keyword, in upper or lower case.
bool IsWord(std::string_view word, std::string_view keyword) {
    return word.size() == keyword.size() &&
           std::equal(word.begin(), word.end(), keyword.begin(), [](char a, char b) {
               return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b;
           });
}

/// Reads the words of a text file and tracks the line number.
class StlText {
public:
    StlText(InputFile& input, JobControl* jobControl) : file(input), job(jobControl) {}

    PolygonMesh Read() {
        for (std::string_view word = Word(); !word.empty(); word = Word()) {
            if (IsWord(word, "solid")) {
                triangles.BeginSolid(RestOfLine());
                inSolid = true;
            } else if (IsWord(word, "endsolid") && inSolid) {
                RestOfLine();
                inSolid = false;
            } else if (IsWord(word, "facet") && inSolid) {
                ReadFacet();
            } else {
                Refuse(inSolid ? "'facet' or 'endsolid'" : "'solid'", word);
            }
        }
        if (inSolid) {
            throw HostError(Location() + ": the file ends without 'endsolid'");
        }
        return triangles.Finish(file.Path(), job);
    }

private:
    /// Returns the next word, or an empty word at the end of the file.
    std::string_view Word() {
        for (;;) {
            rest.remove_prefix(std::min(rest.find_first_not_of(" \t\r\v\f"), rest.size()));
            if (!rest.empty()) {
                const std::string_view word = rest.substr(0, rest.find_first_of(" \t\r\v\f"));
                rest.remove_prefix(word.size());
                return word;
            }
            if (!file.NextLine(rest, MaxLineBytes)) {
                rest = {};
                return {};
            }
            ++line;
        }
    }

    std::string RestOfLine() {
        const std::size_t first = std::min(rest.find_first_not_of(" \t\r"), rest.size());
        std::string text(rest.substr(first));
        text.resize(text.find_last_not_of(" \t\r") + 1);
        rest = {};
        return text;
    }

    std::string Location() const { return file.Path() + ", line " + std::to_string(line); }

    [[noreturn]] void Refuse(const std::string& expected, std::string_view word) const {
        std::string quoted;
        for (const char letter : word.substr(0, 40)) {
            quoted += letter >= ' ' && letter <= '~' ? letter : '?';
        }
        throw HostError(Location() + ": expected " + expected + ", but " +
                        (word.empty() ? "the file ends" : "found '" + quoted + "'"));
    }

    void Expect(std::string_view keyword) {
        const std::string_view word = Word();
        if (!IsWord(word, keyword)) {
            Refuse("'" + std::string(keyword) + "'", word);
        }
    }

    void ReadFacet() {
        Expect("normal");
        // Stored normals are ignored, because some programs write invalid ones; normals are
        // computed from the corners instead.
        for (int axis = 0; axis < 3; ++axis) {
            if (Word().empty()) {
                Refuse("a normal", {});
            }
        }
        Expect("outer");
        Expect("loop");
        Triangle triangle;
        for (std::array<float, 3>& corner : triangle) {
            Expect("vertex");
            for (float& coordinate : corner) {
                const std::string_view word = Word();
                if (word.empty() || !ParseFloat(word, coordinate) || !std::isfinite(coordinate)) {
                    Refuse("a finite number", word);
                }
            }
        }
        Expect("endloop");
        Expect("endfacet");
        triangles.Add(triangle);
    }

    InputFile& file;
    JobControl* job;
    TriangleList triangles;
    std::string_view rest;
    std::uint64_t line = 0;
    bool inSolid = false;
};

}  // namespace

PolygonMesh ReadStl(const std::string& path, JobControl* job) {
    constexpr std::size_t lead = stl_file::headerBytes + sizeof(std::uint32_t);
    bool beginsAsText = false;
    std::uint32_t count = 0;
    std::uint64_t wanted = 0;
    std::uint64_t size = 0;
    {
        InputFile probe(path);
        size = probe.Remaining();
        const unsigned char* start = probe.Take(std::min<std::size_t>(lead, size));
        beginsAsText = size >= 5 && IsWord({reinterpret_cast<const char*>(start), 5}, "solid");
        if (size >= lead) {
            count = stl_file::LoadWord(start + stl_file::headerBytes);
            wanted = lead + std::uint64_t{count} * stl_file::triangleBytes;
        }
    }
    InputFile file(path, job);
    // Some programs write binary files that begin with `solid`; the file size identifies them.
    if (beginsAsText && size != wanted) {
        return StlText(file, job).Read();
    }
    if (size < lead) {
        throw HostError(path + ", byte " + std::to_string(size) +
                        ": the file ends inside its header, and it does not begin with 'solid'");
    }
    if (size < wanted) {
        throw HostError(path + ", byte " + std::to_string(stl_file::headerBytes) + ": " +
                        std::to_string(count) +
                        " triangles are declared, but the file is too short for them");
    }
    return ReadBinary(file, count, job);
}

}  // namespace trovik
