// SPDX-License-Identifier: Apache-2.0
#include "commands/Primitives.h"

#include "framework/files/MeshFiles.h"
#include "framework/io/ResourceFolders.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <numbers>

namespace trovik::studio {

namespace {

using Point = std::array<double, 3>;
constexpr std::uint32_t maxSegments = 1024;

/// A side of the cube from -1 to 1: its origin corner and the directions of its two grid axes, such
/// that u x v points outward.
struct Side {
    Point corner, u, v;
};
constexpr Side sides[] = {
    {{1, -1, 1}, {0, 0, -1}, {0, 1, 0}},   // +x
    {{-1, -1, -1}, {0, 0, 1}, {0, 1, 0}},  // -x
    {{-1, 1, 1}, {1, 0, 0}, {0, 0, -1}},   // +y
    {{-1, -1, -1}, {1, 0, 0}, {0, 0, 1}},  // -y
    {{-1, -1, 1}, {1, 0, 0}, {0, 1, 0}},   // +z
    {{1, -1, -1}, {-1, 0, 0}, {0, 1, 0}},  // -z
};

void AddQuad(PolygonMesh& mesh, const std::array<std::uint32_t, 4>& corners) {
    mesh.faceSizes.push_back(4);
    mesh.faceVertices.insert(mesh.faceVertices.end(), corners.begin(), corners.end());
}

/// The surface of a cube of n x n x n cells, with shared vertices; `place` maps points of the cube,
/// whose coordinates range from -1 to 1.
template <typename Place>
PolygonMesh GridCube(std::uint32_t n, const Place& place) {
    PolygonMesh mesh;
    // Keyed by integer grid coordinates, so that the sides share their borders exactly.
    std::map<std::array<int, 3>, std::uint32_t> known;
    const auto vertex = [&](const Side& side, std::uint32_t i, std::uint32_t j) {
        std::array<int, 3> key{};
        Point point{};
        for (std::size_t k = 0; k < 3; ++k) {
            const int grid = static_cast<int>(n);
            key[k] = static_cast<int>(side.corner[k]) * grid +
                     2 * (static_cast<int>(side.u[k]) * static_cast<int>(i) +
                          static_cast<int>(side.v[k]) * static_cast<int>(j));
            point[k] = static_cast<double>(key[k]) / grid;
        }
        const auto [found, isNew] =
            known.try_emplace(key, static_cast<std::uint32_t>(mesh.positions.size()));
        if (isNew) {
            const Point placed = place(point);
            mesh.positions.push_back({static_cast<float>(placed[0]),
                                      static_cast<float>(placed[1]),
                                      static_cast<float>(placed[2])});
        }
        return found->second;
    };
    for (const Side& side : sides)
        for (std::uint32_t j = 0; j < n; ++j)
            for (std::uint32_t i = 0; i < n; ++i)
                AddQuad(mesh,
                        {vertex(side, i, j),
                         vertex(side, i + 1, j),
                         vertex(side, i + 1, j + 1),
                         vertex(side, i, j + 1)});
    return mesh;
}

/// Spreads a cube's grid over the sphere more evenly than normalisation: equal steps on the cube
/// become nearly equal angles. See Ronchi, Iacono, Paolucci: "The 'Cubed Sphere': A New Method for
/// the Solution of Partial Differential Equations in Spherical Geometry" (1996).
Point OnSphere(const Point& cube) {
    Point point{};
    for (std::size_t k = 0; k < 3; ++k) point[k] = std::tan(cube[k] * std::numbers::pi / 4);
    const double length =
        std::sqrt(point[0] * point[0] + point[1] * point[1] + point[2] * point[2]);
    for (double& value : point) value /= length;
    return point;
}

/// Maps the square cross sections of the cube to discs: squares around the centre become circles.
/// See Shirley, Chiu: "A Low Distortion Map Between Disk and Square" (1997).
Point OnCylinder(const Point& cube) {
    const double x = cube[0], z = cube[2];
    const double ring = std::max(std::abs(x), std::abs(z));
    if (ring == 0) return {0, cube[1], 0};
    // The position along the side of the square as an angle; exact at the midpoints of the sides.
    const double quarter = std::numbers::pi / 4;
    if (std::abs(x) >= std::abs(z)) {
        const double angle = z / x * quarter;
        return {x * std::cos(angle), cube[1], x * std::sin(angle)};
    }
    const double angle = x / z * quarter;
    return {z * std::sin(angle), cube[1], z * std::cos(angle)};
}

/// Maps the cube to a cone with the apex at the top: the lower side becomes the base, the lateral
/// sides the lower two thirds of the slope, and the upper side the rest of it.
Point OnCone(const Point& cube) {
    const Point disc = OnCylinder(cube);
    if (cube[1] == -1.0) return disc;
    const double scale = 1.0 - (cube[1] + 1.0) / 3.0;
    const double radius = std::max(std::abs(cube[0]), std::abs(cube[2])) * scale;
    return {disc[0] * scale, 1.0 - 2.0 * radius, disc[2] * scale};
}

constexpr double torusTubeRadius = 0.3;

/// Numbers of faces around the axis and around the tube, so that they are nearly square.
std::array<std::uint32_t, 2> TorusCounts(std::uint32_t n) {
    return {4 * n, std::max<std::uint32_t>(2 * n, 3)};
}

PolygonMesh MakeTorus(std::uint32_t n) {
    const auto [around, tube] = TorusCounts(n);
    PolygonMesh mesh;
    const auto angle = [](std::uint32_t i, std::uint32_t count) {
        return 2.0 * std::numbers::pi * i / count;
    };
    for (std::uint32_t i = 0; i < around; ++i) {
        const double turn = angle(i, around);
        for (std::uint32_t j = 0; j < tube; ++j) {
            const double roll = angle(j, tube);
            const double radius = 1.0 - torusTubeRadius + torusTubeRadius * std::cos(roll);
            mesh.positions.push_back({static_cast<float>(radius * std::cos(turn)),
                                      static_cast<float>(torusTubeRadius * std::sin(roll)),
                                      static_cast<float>(-radius * std::sin(turn))});
        }
    }
    for (std::uint32_t i = 0; i < around; ++i)
        for (std::uint32_t j = 0; j < tube; ++j) {
            const std::uint32_t ring = i * tube;
            const std::uint32_t nextRing = (i + 1) % around * tube;
            const std::uint32_t next = (j + 1) % tube;
            AddQuad(mesh, {ring + j, nextRing + j, nextRing + next, ring + next});
        }
    return mesh;
}

PolygonMesh MakePlane(std::uint32_t n) {
    PolygonMesh mesh;
    for (std::uint32_t j = 0; j <= n; ++j)
        for (std::uint32_t i = 0; i <= n; ++i)
            mesh.positions.push_back({static_cast<float>(2.0 * i / n - 1.0),
                                      0.0f,
                                      static_cast<float>(1.0 - 2.0 * j / n)});
    const auto at = [n](std::uint32_t i, std::uint32_t j) { return j * (n + 1) + i; };
    for (std::uint32_t j = 0; j < n; ++j)
        for (std::uint32_t i = 0; i < n; ++i)
            AddQuad(mesh, {at(i, j), at(i + 1, j), at(i + 1, j + 1), at(i, j + 1)});
    return mesh;
}

PolygonMesh MakeShape(Primitive primitive, std::uint32_t n) {
    switch (primitive) {
        case Primitive::Sphere:
            return GridCube(n, OnSphere);
        case Primitive::Cube:
            break;
        case Primitive::Plane:
            return MakePlane(n);
        case Primitive::Cylinder:
            return GridCube(n, OnCylinder);
        case Primitive::Cone:
            return GridCube(n, OnCone);
        case Primitive::Torus:
            return MakeTorus(n);
    }
    return GridCube(n, [](const Point& p) { return p; });
}

}  // namespace

PolygonMesh MakePrimitive(Primitive primitive, std::uint32_t segments) {
    const std::uint32_t n = std::clamp<std::uint32_t>(segments, 1, maxSegments);
    PolygonMesh mesh = MakeShape(primitive, n);
    mesh.name = NameOf(primitive);
    return mesh;
}

std::uint64_t FacesOf(Primitive primitive, std::uint32_t segments) {
    const std::uint64_t n = std::clamp<std::uint32_t>(segments, 1, maxSegments);
    if (primitive == Primitive::Torus) {
        const auto [around, tube] = TorusCounts(static_cast<std::uint32_t>(n));
        return std::uint64_t{around} * tube;
    }
    return (primitive == Primitive::Plane ? 1 : 6) * n * n;
}

std::uint32_t SegmentsFor(Primitive primitive, std::uint64_t faces) {
    const double perSegment = primitive == Primitive::Plane   ? 1.0
                              : primitive == Primitive::Torus ? 8.0
                                                              : 6.0;
    const double n = std::round(std::sqrt(static_cast<double>(faces) / perSegment));
    return static_cast<std::uint32_t>(std::clamp(n, 1.0, static_cast<double>(maxSegments)));
}

const char* NameOf(Primitive primitive) {
    switch (primitive) {
        case Primitive::Sphere:
            return "sphere";
        case Primitive::Cube:
            return "cube";
        case Primitive::Plane:
            return "plane";
        case Primitive::Cylinder:
            return "cylinder";
        case Primitive::Cone:
            return "cone";
        case Primitive::Torus:
            return "torus";
    }
    return "";
}

std::string WritePrimitive(Primitive primitive, std::uint32_t segments, const std::string& folder) {
    namespace fs = std::filesystem;
    std::error_code ignored;
    fs::create_directories(folder, ignored);
    const fs::path path = fs::path(folder) / (std::string(NameOf(primitive)) + "-" +
                                              std::to_string(segments) + ".obj");
    if (!fs::is_regular_file(path, ignored))
        WriteObj(path.string(), MakePrimitive(primitive, segments));
    return path.string();
}

std::vector<std::string> MeshFolders() {
    return ResourceFolders("TROVIK_MESH_PATH",
                           {TROVIK_INSTALLED_MESH_DIR_FROM_BIN, TROVIK_MESH_DIR_FROM_BIN});
}

std::string FindShippedMesh(const std::string& fileName) {
    namespace fs = std::filesystem;
    std::error_code ignored;
    for (const std::string& folder : MeshFolders()) {
        const fs::path path = fs::path(folder) / fileName;
        if (fs::is_regular_file(path, ignored)) return path.string();
    }
    return {};
}

}  // namespace trovik::studio
