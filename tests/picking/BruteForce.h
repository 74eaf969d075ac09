// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/picking/PatchTree.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>

namespace trovik::test {

/// Brute-force computation over all triangles in double precision, with a method that differs from
/// the tree's.
class BruteForce {
public:
    using Point = std::array<double, 3>;
    static constexpr double none = std::numeric_limits<double>::infinity();

    /// Uses the faces that are not hidden.
    explicit BruteForce(const LevelMesh& mesh) {
        const uint32_t corners = mesh.CornersPerFace();
        for (uint32_t face = 0; face < mesh.faceCount; ++face) {
            if ((mesh.faceFlags[face] & faceIsHidden) != 0) continue;
            const uint32_t* v = mesh.faceVertexIndices.array + face * corners;
            for (uint32_t k = 2; k < corners; ++k)
                triangles.push_back({At(mesh, v[0]), At(mesh, v[k - 1]), At(mesh, v[k])});
        }
    }

    /// The smallest t along the ray, found by solving o + t d = a + u e + v f; infinity if there is
    /// no hit.
    double Pick(const Ray& ray) const {
        const Point o = {ray.origin.x, ray.origin.y, ray.origin.z};
        const Point d = {ray.direction.x, ray.direction.y, ray.direction.z};
        double best = none;
        for (const auto& [a, b, c] : triangles) {
            const Point e = Less(b, a);
            const Point f = Less(c, a);
            const Point s = Less(o, a);
            const double determinant = Dot(e, Cross(d, f));
            const double u = Dot(s, Cross(d, f)) / determinant;
            const double v = Dot(d, Cross(s, e)) / determinant;
            const double t = Dot(f, Cross(s, e)) / determinant;
            if (u >= 0 && v >= 0 && u + v <= 1 && t >= 0 && t <= double{ray.maxT})
                best = std::min(best, t);
        }
        return best;
    }

    /// The distance to the surface: the minimum over the projections that are inside triangles, and
    /// over the edges.
    double Nearest(const Vector& point) const {
        const Point p = {point.x, point.y, point.z};
        double best = none;
        for (const auto& [a, b, c] : triangles) {
            best = std::min({best, ToEdge(p, a, b), ToEdge(p, b, c), ToEdge(p, c, a)});
            const Point n = Cross(Less(b, a), Less(c, a));
            const auto side = [&](const Point& from, const Point& to) {
                return Dot(Cross(Less(to, from), Less(p, from)), n);
            };
            if (side(a, b) >= 0 && side(b, c) >= 0 && side(c, a) >= 0 && Dot(n, n) > 0)
                best = std::min(best, std::fabs(Dot(Less(p, a), n)) / std::sqrt(Dot(n, n)));
        }
        return best;
    }

private:
    static Point At(const LevelMesh& mesh, uint32_t vertex) {
        const Vector p = mesh.Position(vertex);
        return {p.x, p.y, p.z};
    }
    static Point Less(const Point& a, const Point& b) {
        return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
    }
    static double Dot(const Point& a, const Point& b) {
        return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
    }
    static Point Cross(const Point& a, const Point& b) {
        return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
    }
    static double ToEdge(const Point& p, const Point& a, const Point& b) {
        const Point e = Less(b, a);
        const double length = Dot(e, e);
        const double t = length > 0 ? std::clamp(Dot(Less(p, a), e) / length, 0.0, 1.0) : 0.0;
        const Point foot = {a[0] + t * e[0], a[1] + t * e[1], a[2] + t * e[2]};
        return std::sqrt(Dot(Less(p, foot), Less(p, foot)));
    }

    std::vector<std::array<Point, 3>> triangles;
};

/// Points in and around a box.
class RandomPoints {
public:
    RandomPoints(const AxisAlignedBoundingBox& bounds, uint32_t seed) : box(bounds), random(seed) {}
    Vector Next() {
        std::uniform_real_distribution<float> share(-0.5f, 1.5f);
        return {box.minX + share(random) * (box.maxX - box.minX),
                box.minY + share(random) * (box.maxY - box.minY),
                box.minZ + share(random) * (box.maxZ - box.minZ) + (share(random) - 0.5f)};
    }
    Ray NextRay() {
        const Vector from = Next();
        return {from, Next() - from};
    }

private:
    AxisAlignedBoundingBox box;
    std::mt19937 random;
};

}  // namespace trovik::test
