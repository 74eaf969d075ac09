// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/files/MeshWriters.h"
#include "framework/files/StlFile.h"
#include "framework/io/OutputFile.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

namespace trovik {

namespace {

using Point = std::array<float, 3>;

/// Returns the normal of a triangle by the right-hand rule; zero if the triangle is degenerate.
Point NormalOf(const Point& a, const Point& b, const Point& c) {
    const Point u = {b[0] - a[0], b[1] - a[1], b[2] - a[2]};
    const Point v = {c[0] - a[0], c[1] - a[1], c[2] - a[2]};
    const Point n = {
        u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
    const float length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
    if (!(length > 0.0f) || !std::isfinite(length)) {
        return {};
    }
    return {n[0] / length, n[1] / length, n[2] / length};
}

class TextTriangles {
public:
    TextTriangles(OutputFile& target, const MeshSource& source, std::uint32_t) : file(target) {
        for (const char letter : source.Name()) {
            name += letter == '\n' || letter == '\r' ? '_' : letter;
        }
        file.Write("solid " + name + "\n");
    }
    void Write(const Point& normal, const std::array<Point, 3>& corners) {
        file.Write(" facet normal");
        WriteNumbers(normal);
        file.Write("  outer loop\n");
        for (const Point& corner : corners) {
            file.Write("   vertex");
            WriteNumbers(corner);
        }
        file.Write("  endloop\n endfacet\n");
    }
    void End() { file.Write("endsolid " + name + "\n"); }

private:
    void WriteNumbers(const Point& numbers) {
        for (const float number : numbers) {
            file.Put(' ');
            file.Number(number);
        }
        file.Put('\n');
    }

    OutputFile& file;
    std::string name;
};

class BinaryTriangles {
public:
    BinaryTriangles(OutputFile& target, const MeshSource& source, std::uint32_t count)
        : file(target) {
        std::string header = std::string(stl_file::nameMark) + source.Name();
        header.resize(stl_file::headerBytes, '\0');
        file.Write(header);
        WriteWord(count);
    }
    void Write(const Point& normal, const std::array<Point, 3>& corners) {
        WriteNumbers(normal);
        for (const Point& corner : corners) {
            WriteNumbers(corner);
        }
        file.Put('\0');
        file.Put('\0');
    }
    void End() {}

private:
    void WriteWord(std::uint32_t word) {
        for (int shift = 0; shift < 32; shift += 8) {
            file.Put(static_cast<char>(word >> shift & 0xFFu));
        }
    }
    void WriteNumbers(const Point& numbers) {
        for (const float number : numbers) {
            WriteWord(std::bit_cast<std::uint32_t>(number));
        }
    }

    OutputFile& file;
};

template <class Triangles>
void WriteTriangles(OutputFile& file,
                    const MeshSource& source,
                    std::uint32_t count,
                    JobControl* job) {
    Triangles triangles(file, source, count);
    ReadFaces(source, 0, job, "Writing triangles", [&](const FaceBlock& block) {
        std::size_t first = 0;
        for (const std::uint32_t size : block.sizes) {
            const Point fan = source.Position(block.vertices[first]);
            Point previous = source.Position(block.vertices[first + 1]);
            for (std::size_t corner = 2; corner < size; ++corner) {
                const Point next = source.Position(block.vertices[first + corner]);
                triangles.Write(NormalOf(fan, previous, next), {fan, previous, next});
                previous = next;
            }
            first += size;
        }
    });
    triangles.End();
}

}  // namespace

void WriteStl(const std::string& path,
              const MeshSource& source,
              StlEncoding encoding,
              JobControl* job) {
    const std::uint64_t count = source.CornerCount() - 2 * source.FaceCount();
    if (count > std::numeric_limits<std::uint32_t>::max()) {
        throw HostError(path + ": " + std::to_string(count) +
                        " triangles are more than an STL file can contain");
    }
    OutputFile file(path);
    const auto number = static_cast<std::uint32_t>(count);
    if (encoding == StlEncoding::Text) {
        WriteTriangles<TextTriangles>(file, source, number, job);
    } else {
        WriteTriangles<BinaryTriangles>(file, source, number, job);
    }
    file.Commit();
}

}  // namespace trovik
