// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/HoleFilling.h"

#include "framework/jobs/JobPhase.h"
#include "framework/remesh/FaceTable.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

namespace trovik {

namespace {

constexpr uint32_t none = NewSurface::none;
constexpr uint32_t maxRings = 64;
constexpr uint32_t fairingIterations = 1000;

Vector At(const PolygonMesh& mesh, uint32_t vertex) {
    const auto& p = mesh.positions[vertex];
    return {p[0], p[1], p[2]};
}

/// Adds the faces of one hole.
class HoleFiller {
public:
    HoleFiller(NewSurface& newSurface, bool usesQuads) : surface(newSurface), quads(usesQuads) {}

    void Fill(std::vector<uint32_t> border, HoleFill fill) {
        Vector centre;
        for (const uint32_t v : border) centre += At(surface.mesh, v);
        centre *= 1.0f / static_cast<float>(border.size());
        const uint32_t rings = fill == HoleFill::Smooth ? RingCount(border, centre) : 0;
        const std::vector<uint32_t> outer = border;
        for (uint32_t ring = 1; ring <= rings; ++ring) {
            const float inwards = static_cast<float>(ring) / static_cast<float>(rings + 1);
            std::vector<uint32_t> inner;
            for (const uint32_t v : outer) {
                const Vector p = At(surface.mesh, v);
                inner.push_back(AddVertex(p + (centre - p) * inwards));
            }
            for (std::size_t i = 0; i < border.size(); ++i) {
                const std::size_t next = (i + 1) % border.size();
                AddQuad(border[i], border[next], inner[next], inner[i]);
            }
            border = std::move(inner);
        }
        Close(border, centre);
    }

private:
    /// Number of rings that have about the width of the border's edges.
    uint32_t RingCount(const std::vector<uint32_t>& border, const Vector& centre) const {
        float edges = 0.0f;
        float radii = 0.0f;
        for (std::size_t i = 0; i < border.size(); ++i) {
            const Vector p = At(surface.mesh, border[i]);
            edges += (At(surface.mesh, border[(i + 1) % border.size()]) - p).Length();
            radii += (centre - p).Length();
        }
        if (edges <= 0.0f) return 0;
        return std::min(static_cast<uint32_t>(std::max(std::lround(radii / edges) - 1L, 0L)),
                        maxRings);
    }

    void Close(const std::vector<uint32_t>& border, const Vector& centre) {
        const std::size_t count = border.size();
        if (count == 3 || (quads && count == 4)) {
            AddFace(border);
            return;
        }
        const uint32_t middle = AddVertex(centre);
        std::size_t i = 0;
        if (quads)
            for (; i + 2 <= count; i += 2)
                AddFace({border[i], border[i + 1], border[(i + 2) % count], middle});
        for (; i < count; ++i) AddFace({border[i], border[(i + 1) % count], middle});
    }

    void AddQuad(uint32_t a, uint32_t b, uint32_t c, uint32_t d) {
        if (quads) {
            AddFace({a, b, c, d});
            return;
        }
        AddFace({a, b, c});
        AddFace({a, c, d});
    }

    void AddFace(const std::vector<uint32_t>& vertices) {
        PolygonMesh& mesh = surface.mesh;
        mesh.faceSizes.push_back(static_cast<uint32_t>(vertices.size()));
        mesh.faceVertices.insert(mesh.faceVertices.end(), vertices.begin(), vertices.end());
        if (!mesh.attributes.cornerUvs.empty())
            mesh.attributes.cornerUvs.resize(mesh.faceVertices.size(), SurfaceAttributes::none);
    }

    uint32_t AddVertex(const Vector& p) {
        surface.mesh.positions.push_back({p.x, p.y, p.z});
        return static_cast<uint32_t>(surface.mesh.positions.size() - 1);
    }

    NewSurface& surface;
    bool quads;
};

/// Moves the vertices from `firstNew` on so that the surface has as little change of curvature as
/// possible; see Kobbelt, Campagna, Vorsatz, Seidel: "Interactive Multi-Resolution Modeling on
/// Arbitrary Meshes" (1998).
class Fairing {
    /// A point or vector in double precision.
    struct Point : std::array<double, 3> {
        Point(double x = 0.0, double y = 0.0, double z = 0.0) : std::array<double, 3>{x, y, z} {}
        Point& operator+=(const Point& o) {
            for (std::size_t i = 0; i < 3; ++i) (*this)[i] += o[i];
            return *this;
        }
        Point& operator-=(const Point& o) { return *this += -o; }
        Point operator+(const Point& o) const { return Point(*this) += o; }
        Point operator-(const Point& o) const { return Point(*this) -= o; }
        Point operator-() const { return *this * -1.0; }
        Point operator*(double f) const { return {(*this)[0] * f, (*this)[1] * f, (*this)[2] * f}; }
        double Square() const {
            return (*this)[0] * (*this)[0] + (*this)[1] * (*this)[1] + (*this)[2] * (*this)[2];
        }
    };
    using Values = std::vector<Point>;

public:
    Fairing(PolygonMesh& polygons, uint32_t firstNew) : mesh(polygons), first(firstNew) {
        const std::vector<FaceSide> sides = SortedSides(mesh);
        ForEachEdge(sides, [&](const FaceSide* side, const FaceSide*) {
            if (side->high >= first) Number(side->low);
        });
        for (auto v = first; v < mesh.positions.size(); ++v) Number(v);
        neighbours.resize(vertices.size());
        ForEachEdge(sides, [&](const FaceSide* side, const FaceSide*) {
            AddNeighbour(side->low, side->high);
            AddNeighbour(side->high, side->low);
        });
    }

    /// Minimises the sum of the squared Laplacians with the conjugate gradient method for least
    /// squares; see Hestenes, Stiefel: "Methods of Conjugate Gradients for Solving Linear Systems"
    /// (1952).
    void Run(JobControl* job) {
        JobPhase phase(job, "Smoothing filled holes", fairingIterations, 1);
        Values moves(vertices.size());
        Values residual(vertices.size());
        for (std::size_t n = 0; n < vertices.size(); ++n) residual[n] = -Laplacian(n);
        Values gradient = Transposed(residual);
        Values direction = gradient;
        double size = SquareOf(gradient);
        const double enough = size * 1e-16;
        for (uint32_t i = 0; i < fairingIterations && size > enough; ++i) {
            phase.Add();
            const Values image = Applied(direction);
            const double step = size / SquareOf(image);
            for (std::size_t n = 0; n < vertices.size(); ++n) {
                moves[n] += direction[n] * step;
                residual[n] -= image[n] * step;
            }
            gradient = Transposed(residual);
            const double before = std::exchange(size, SquareOf(gradient));
            for (std::size_t n = 0; n < vertices.size(); ++n)
                direction[n] = gradient[n] + direction[n] * (size / before);
        }
        phase.Finish();
        for (std::size_t n = 0; n < vertices.size(); ++n) {
            if (vertices[n] < first) continue;
            for (std::size_t axis = 0; axis < 3; ++axis) {
                float& coordinate = mesh.positions[vertices[n]][axis];
                coordinate = static_cast<float>(static_cast<double>(coordinate) + moves[n][axis]);
            }
        }
    }

private:
    void Number(uint32_t vertex) {
        if (numbers.try_emplace(vertex, vertices.size()).second) vertices.push_back(vertex);
    }
    void AddNeighbour(uint32_t vertex, uint32_t neighbour) {
        const auto found = numbers.find(vertex);
        if (found != numbers.end()) neighbours[found->second].push_back(neighbour);
    }
    Point At(uint32_t vertex) const {
        const auto& p = mesh.positions[vertex];
        return {static_cast<double>(p[0]), static_cast<double>(p[1]), static_cast<double>(p[2])};
    }
    /// Returns the mean of the neighbours, less the vertex.
    Point Laplacian(std::size_t number) const {
        Point mean(0.0, 0.0, 0.0);
        for (const uint32_t v : neighbours[number]) mean += At(v);
        return mean * (1.0 / static_cast<double>(neighbours[number].size())) - At(vertices[number]);
    }
    /// Returns the Laplacians of moves of the new vertices.
    Values Applied(const Values& moves) const {
        Values result(vertices.size());
        for (std::size_t n = 0; n < vertices.size(); ++n) {
            Point sum(0.0, 0.0, 0.0);
            for (const uint32_t v : neighbours[n])
                if (v >= first) sum += moves[numbers.at(v)];
            result[n] = sum * (1.0 / static_cast<double>(neighbours[n].size()));
            if (vertices[n] >= first) result[n] -= moves[n];
        }
        return result;
    }
    /// Multiplies by the transpose of the matrix of Applied.
    Values Transposed(const Values& values) const {
        Values result(vertices.size());
        for (std::size_t n = 0; n < vertices.size(); ++n) {
            const Point share = values[n] * (1.0 / static_cast<double>(neighbours[n].size()));
            for (const uint32_t v : neighbours[n])
                if (v >= first) result[numbers.at(v)] += share;
            if (vertices[n] >= first) result[n] -= values[n];
        }
        return result;
    }
    static double SquareOf(const Values& values) {
        double sum = 0.0;
        for (const Point& value : values) sum += value.Square();
        return sum;
    }

    PolygonMesh& mesh;
    uint32_t first;
    /// The new vertices and their neighbours.
    std::map<uint32_t, std::size_t> numbers;
    std::vector<uint32_t> vertices;
    std::vector<std::vector<uint32_t>> neighbours;
};

}  // namespace

std::vector<std::vector<uint32_t>> HolesOf(const PolygonMesh& mesh) {
    // In a manifold, each border vertex has exactly one next border vertex.
    std::vector<uint32_t> next(mesh.positions.size(), none);
    const std::vector<FaceSide> sides = SortedSides(mesh);
    ForEachEdge(sides, [&](const FaceSide* side, const FaceSide* end) {
        if (end - side != 1) return;
        // A face that fills the hole traverses the edge in the other direction.
        if (side->rises)
            next[side->high] = side->low;
        else
            next[side->low] = side->high;
    });
    std::vector<std::vector<uint32_t>> holes;
    for (uint32_t start = 0; start < next.size(); ++start) {
        if (next[start] == none) continue;
        std::vector<uint32_t>& hole = holes.emplace_back();
        for (uint32_t v = start; next[v] != none;) {
            hole.push_back(v);
            v = std::exchange(next[v], none);
        }
    }
    return holes;
}

std::size_t FillHoles(NewSurface& surface, HoleFill fill, std::size_t maxEdges, JobControl* job) {
    PolygonMesh& mesh = surface.mesh;
    const bool quads = std::all_of(
        mesh.faceSizes.begin(), mesh.faceSizes.end(), [](uint32_t size) { return size == 4; });
    const auto firstNew = static_cast<uint32_t>(mesh.positions.size());
    const std::vector<std::vector<uint32_t>> holes = HolesOf(mesh);
    HoleFiller filler(surface, quads);
    std::size_t filled = 0;
    JobPhase phase(job, "Filling holes", holes.size());
    for (const std::vector<uint32_t>& hole : holes) {
        phase.Add();
        if (hole.size() < 3 || hole.size() > maxEdges) continue;
        filler.Fill(hole, fill);
        ++filled;
    }
    phase.Finish();
    if (fill == HoleFill::Smooth && mesh.positions.size() > firstNew)
        Fairing(mesh, firstNew).Run(job);
    return filled;
}

}  // namespace trovik
