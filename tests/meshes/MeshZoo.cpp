// SPDX-License-Identifier: Apache-2.0
#include "tests/meshes/MeshZoo.h"

#include "framework/files/MeshFiles.h"
#include "framework/multires/LevelGeometry.h"

#include <cmath>
#include <cstdlib>
#include <initializer_list>

namespace trovik::test {

namespace {

constexpr double pi = 3.14159265358979323846;

void AddFace(PolygonMesh& mesh, std::initializer_list<uint32_t> corners) {
    mesh.faceSizes.push_back(static_cast<uint32_t>(corners.size()));
    mesh.faceVertices.insert(mesh.faceVertices.end(), corners);
}

void AddPoint(PolygonMesh& mesh, double x, double y, double z) {
    mesh.positions.push_back({static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)});
}

}  // namespace

PolygonMesh GridMesh(unsigned n, unsigned m) {
    PolygonMesh mesh;
    mesh.name = "grid";
    for (unsigned row = 0; row <= m; ++row)
        for (unsigned column = 0; column <= n; ++column) AddPoint(mesh, column, row, 0);
    for (unsigned row = 0; row < m; ++row) {
        for (unsigned column = 0; column < n; ++column) {
            const uint32_t at = row * (n + 1) + column;
            AddFace(mesh, {at, at + 1, at + n + 2, at + n + 1});
        }
    }
    return mesh;
}

PolygonMesh SingleQuad() { return GridMesh(1, 1); }

PolygonMesh RotatedCornerGrid(unsigned n) {
    PolygonMesh mesh = GridMesh(n, n);
    for (std::size_t face = 0; face < mesh.faceSizes.size(); ++face) {
        uint32_t corners[4];
        for (std::size_t k = 0; k < 4; ++k)
            corners[k] = mesh.faceVertices[face * 4 + (k + face * 3 + face / n) % 4];
        for (std::size_t k = 0; k < 4; ++k) mesh.faceVertices[face * 4 + k] = corners[k];
    }
    return mesh;
}

PolygonMesh Cube() {
    PolygonMesh mesh;
    mesh.name = "cube";
    for (int i = 0; i < 8; ++i)
        AddPoint(mesh, (i & 1) != 0 ? 1 : -1, (i & 2) != 0 ? 1 : -1, (i & 4) != 0 ? 1 : -1);
    AddFace(mesh, {0, 2, 3, 1});
    AddFace(mesh, {4, 5, 7, 6});
    AddFace(mesh, {0, 1, 5, 4});
    AddFace(mesh, {2, 6, 7, 3});
    AddFace(mesh, {0, 4, 6, 2});
    AddFace(mesh, {1, 3, 7, 5});
    return mesh;
}

PolygonMesh Torus(unsigned n, unsigned m) {
    PolygonMesh mesh;
    mesh.name = "torus";
    for (unsigned i = 0; i < n; ++i) {
        const double around = 2 * pi * i / n;
        for (unsigned j = 0; j < m; ++j) {
            const double tube = 2 * pi * j / m;
            const double r = 2 + std::cos(tube);
            AddPoint(mesh, r * std::cos(around), r * std::sin(around), std::sin(tube));
        }
    }
    for (unsigned i = 0; i < n; ++i)
        for (unsigned j = 0; j < m; ++j)
            AddFace(mesh,
                    {i * m + j,
                     (i + 1) % n * m + j,
                     (i + 1) % n * m + (j + 1) % m,
                     i * m + (j + 1) % m});
    return mesh;
}

PolygonMesh OpenCylinder(unsigned n, unsigned m) {
    PolygonMesh mesh;
    mesh.name = "cylinder";
    for (unsigned row = 0; row <= m; ++row)
        for (unsigned i = 0; i < n; ++i)
            AddPoint(mesh, std::cos(2 * pi * i / n), std::sin(2 * pi * i / n), row);
    for (unsigned row = 0; row < m; ++row)
        for (unsigned i = 0; i < n; ++i)
            AddFace(mesh,
                    {row * n + i,
                     row * n + (i + 1) % n,
                     (row + 1) * n + (i + 1) % n,
                     (row + 1) * n + i});
    return mesh;
}

PolygonMesh Pillow() {
    PolygonMesh mesh = SingleQuad();
    mesh.name = "pillow";
    mesh.positions[0][2] = 0.5f;
    mesh.positions[3][2] = 0.5f;
    AddFace(mesh, {0, 2, 3, 1});
    return mesh;
}

PolygonMesh ValenceFan(unsigned k) {
    PolygonMesh mesh;
    mesh.name = "fan";
    AddPoint(mesh, 0, 0, 0);
    for (unsigned i = 0; i < 2 * k; ++i) {
        const double angle = pi * i / k;
        const double r = i % 2 == 0 ? 1.0 : 1.3;
        AddPoint(mesh, r * std::cos(angle), r * std::sin(angle), 0);
    }
    for (unsigned i = 0; i < k; ++i)
        // 2 k is not 0 here, because k is small. NOLINTNEXTLINE(clang-analyzer-core.DivideZero)
        AddFace(mesh, {0, 2 * i + 1, 2 * i + 2, (2 * i + 2) % (2 * k) + 1});
    return mesh;
}

PolygonMesh SteppedBox() {
    PolygonMesh mesh = Cube();
    mesh.name = "stepped box";
    // The top face (z = 1) is replaced by a ring of four faces and a box in its centre.
    for (const double z : {1.0, 2.0})
        for (int i = 0; i < 4; ++i)
            AddPoint(mesh, (i & 1) != 0 ? 0.5 : -0.5, (i & 2) != 0 ? 0.5 : -0.5, z);
    mesh.faceSizes.erase(mesh.faceSizes.begin() + 1);
    mesh.faceVertices.erase(mesh.faceVertices.begin() + 4, mesh.faceVertices.begin() + 8);
    const uint32_t outer[4] = {4, 5, 7, 6};
    const uint32_t inner[4] = {8, 9, 11, 10};
    const uint32_t top[4] = {12, 13, 15, 14};
    for (unsigned k = 0; k < 4; ++k) {
        const unsigned n = (k + 1) % 4;
        AddFace(mesh, {outer[k], outer[n], inner[n], inner[k]});
        AddFace(mesh, {inner[k], inner[n], top[n], top[k]});
    }
    AddFace(mesh, {top[0], top[1], top[2], top[3]});
    return mesh;
}

PolygonMesh SphereQuads(unsigned n) {
    LevelGeometry geometry(Cube());
    for (unsigned i = 0; i < n; ++i) geometry.Subdivide();
    PolygonMesh mesh = geometry.ToPolygons(false);
    mesh.name = "sphere";
    mesh.normals.clear();
    for (auto& p : mesh.positions) {
        const float length = std::sqrt(p[0] * p[0] + p[1] * p[1] + p[2] * p[2]);
        for (float& c : p) c /= length;
    }
    return mesh;
}

PolygonMesh Icosahedron() {
    PolygonMesh mesh;
    mesh.name = "icosahedron";
    const double g = (1 + std::sqrt(5.0)) / 2;
    for (const double a : {-1.0, 1.0}) {
        for (const double b : {-g, g}) {
            AddPoint(mesh, a, b, 0);
            AddPoint(mesh, 0, a, b);
            AddPoint(mesh, b, 0, a);
        }
    }
    // The faces are all triples of points whose distances equal the edge length, 2, oriented
    // outwards.
    const auto distance = [&mesh](uint32_t i, uint32_t j) {
        double sum = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            const double d = static_cast<double>(mesh.positions[i][k]) -
                             static_cast<double>(mesh.positions[j][k]);
            sum += d * d;
        }
        return std::sqrt(sum);
    };
    const auto near = [&distance](uint32_t i, uint32_t j) {
        return std::fabs(distance(i, j) - 2) < 1e-3;
    };
    for (uint32_t i = 0; i < 12; ++i) {
        for (uint32_t j = i + 1; j < 12; ++j) {
            for (uint32_t k = j + 1; k < 12; ++k) {
                if (!near(i, j) || !near(j, k) || !near(i, k)) continue;
                const auto& a = mesh.positions[i];
                const auto& b = mesh.positions[j];
                const auto& c = mesh.positions[k];
                const float determinant = a[0] * (b[1] * c[2] - b[2] * c[1]) -
                                          a[1] * (b[0] * c[2] - b[2] * c[0]) +
                                          a[2] * (b[0] * c[1] - b[1] * c[0]);
                if (determinant > 0)
                    AddFace(mesh, {i, j, k});
                else
                    AddFace(mesh, {i, k, j});
            }
        }
    }
    return mesh;
}

PolygonMesh TriangleStrip(unsigned n) {
    PolygonMesh mesh;
    mesh.name = "strip";
    for (unsigned i = 0; i <= n; ++i) {
        AddPoint(mesh, i, 0, 0);
        AddPoint(mesh, i, 1, 0.25 * i);
    }
    for (uint32_t i = 0; i < n; ++i) {
        AddFace(mesh, {2 * i, 2 * i + 2, 2 * i + 1});
        AddFace(mesh, {2 * i + 1, 2 * i + 2, 2 * i + 3});
    }
    return mesh;
}

PolygonMesh NgonMix() {
    PolygonMesh mesh;
    mesh.name = "n-gons";
    AddPoint(mesh, 0, 0, 0);
    AddPoint(mesh, 1, 0, 0);
    AddPoint(mesh, 2, 0, 0);
    AddPoint(mesh, 3, 0.5, 0);
    AddPoint(mesh, 2, 1, 0.2);
    AddPoint(mesh, 1, 1, 0.2);
    AddPoint(mesh, 3.5, 1.5, 0);
    AddPoint(mesh, 2.5, 2, 0);
    AddFace(mesh, {0, 1, 5});
    AddFace(mesh, {1, 2, 4, 5});
    AddFace(mesh, {2, 3, 6, 7, 4});
    return mesh;
}

std::vector<ZooMesh> OpenMeshes() {
    std::vector<ZooMesh> meshes = {{"single quad", SingleQuad()},
                                   {"grid 3 x 2", GridMesh(3, 2)},
                                   {"turned grid", RotatedCornerGrid(4)},
                                   {"cylinder", OpenCylinder(5, 2)},
                                   {"n-gons", NgonMix()}};
    for (unsigned k = 3; k <= 8; ++k)
        meshes.push_back({"fan of " + std::to_string(k), ValenceFan(k)});
    return meshes;
}

std::vector<ZooMesh> QuadMeshes() {
    std::vector<ZooMesh> meshes = OpenMeshes();
    meshes.push_back({"cube", Cube()});
    meshes.push_back({"torus", Torus(6, 4)});
    meshes.push_back({"pillow", Pillow()});
    meshes.push_back({"stepped box", SteppedBox()});
    return meshes;
}

std::vector<ZooMesh> TriangleMeshes() {
    return {{"icosahedron", Icosahedron()}, {"strip", TriangleStrip(4)}};
}

std::vector<ZooMesh> AllMeshes() {
    std::vector<ZooMesh> meshes = QuadMeshes();
    for (ZooMesh& mesh : TriangleMeshes()) meshes.push_back(std::move(mesh));
    return meshes;
}

PolygonMesh ExampleMesh(const std::string& file) {
    const char* examples = std::getenv("TROVIK_DATA");
    PolygonMesh mesh =
        ReadMeshFile((examples == nullptr ? std::string("examples") : std::string(examples)) +
                     "/meshes/" + file);
    MakeOrientedManifold(mesh);
    return mesh;
}

}  // namespace trovik::test
