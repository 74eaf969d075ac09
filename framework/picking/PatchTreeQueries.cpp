// SPDX-License-Identifier: Apache-2.0
#include "framework/math/IsFinite.h"
#include "framework/picking/PatchTree.h"
#include "framework/picking/TriangleQueries.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace trovik {

namespace {

/// Relative amount by which the distance to a box is reduced. It is much larger than the rounding
/// error of either query, but too small to cause additional visits.
constexpr double boxSlack = 1e-9;

double Lower(double t) { return t * (t > 0.0 ? 1.0 - boxSlack : 1.0 + boxSlack); }
double Higher(double t) { return -Lower(-t); }

/// The best triangle so far. At equal distances, the triangle with the lower face number is
/// selected, regardless of the order of visits.
struct Best {
    double t;
    uint32_t face = openBorder;
    std::array<uint32_t, 3> corners{};
    std::array<double, 3> weights{};

    void Take(const TrianglePoint& point,
              uint32_t ofFace,
              uint32_t cornerA,
              uint32_t cornerB,
              uint32_t cornerC) {
        if (!(point.t < t || (point.t == t && ofFace < face))) return;
        t = point.t;
        face = ofFace;
        corners = {cornerA, cornerB, cornerC};
        weights = point.weights;
    }
};

PickHit MakeHit(const LevelMesh& mesh, const Best& best) {
    Vector3d position{};
    Vector3d normal{};
    std::array<Vector3d, 3> corners;
    for (std::size_t i = 0; i < 3; ++i) {
        const uint32_t vertex = best.corners[i];
        corners[i] = ToDouble(mesh.Position(vertex));
        for (std::size_t axis = 0; axis < 3; ++axis)
            position[axis] += best.weights[i] * corners[i][axis];
        if (vertex >= mesh.vertexNormals.fill) continue;
        const PackedNormal& packed = mesh.vertexNormals.array[vertex];
        // Only the direction matters, so the packed integers are not scaled.
        const Vector3d words = {static_cast<double>(packed.x),
                                static_cast<double>(packed.y),
                                static_cast<double>(packed.z)};
        for (std::size_t axis = 0; axis < 3; ++axis) normal[axis] += best.weights[i] * words[axis];
    }
    if (Dot(normal, normal) < 1.0) normal = Cross(corners[1] - corners[0], corners[2] - corners[0]);
    const double length = std::sqrt(Dot(normal, normal));
    const double scale = length > 0.0 ? 1.0 / length : 0.0;
    const auto toVector = [](const Vector3d& v, double factor) {
        return Vector(static_cast<float>(v[0] * factor),
                      static_cast<float>(v[1] * factor),
                      static_cast<float>(v[2] * factor));
    };
    return {
        best.face, toVector(position, 1.0), toVector(normal, scale), static_cast<float>(best.t)};
}

/// Tests boxes by the distances at which a ray crosses their pairs of planes; see Kay, Kajiya: "Ray
/// Tracing Complex Scenes" (1986).
class RayQuery {
public:
    RayQuery(const LevelMesh& ofMesh, const Ray& ray)
        : mesh(ofMesh),
          frame(ray.origin, ray.direction),
          origin(ToDouble(ray.origin)),
          direction(ToDouble(ray.direction)) {
        best.t = static_cast<double>(ray.maxT);
        for (std::size_t axis = 0; axis < 3; ++axis) inverse[axis] = 1.0 / direction[axis];
    }

    /// \param nearest  receives a lower bound of t in the box.
    /// \return false if the ray misses the box or enters it beyond the best hit.
    template <class Box>
    bool Reaches(const Box& box, double& nearest) const {
        double entry = 0.0;
        double exit = best.t;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const double low = static_cast<double>(box.low[axis]) - origin[axis];
            const double high = static_cast<double>(box.high[axis]) - origin[axis];
            if (direction[axis] == 0.0) {
                if (!(low <= 0.0 && high >= 0.0)) return false;
                continue;
            }
            const bool forward = direction[axis] > 0.0;
            const double in = (forward ? low : high) * inverse[axis];
            const double out = (forward ? high : low) * inverse[axis];
            entry = std::max(entry, Lower(in));
            exit = std::min(exit, Higher(out));
        }
        nearest = entry;
        return entry <= exit;
    }

    bool IsBehindBest(double nearest) const { return nearest > best.t; }

    void Face(uint32_t face, const uint32_t* vertex, uint32_t corners) {
        std::array<Vector3d, 4> placed;
        for (uint32_t k = 0; k < corners; ++k) placed[k] = frame.Place(mesh.Position(vertex[k]));
        for (uint32_t k = 2; k < corners; ++k) {
            TrianglePoint point;
            if (frame.Hit(placed[0], placed[k - 1], placed[k], point) && point.t >= 0.0)
                best.Take(point, face, vertex[0], vertex[k - 1], vertex[k]);
        }
    }

    Best best;

private:
    const LevelMesh& mesh;
    RayFrame frame;
    Vector3d origin;
    Vector3d direction;
    Vector3d inverse;
};

/// Visits only boxes whose minimum distance is below the best distance so far; see Roussopoulos,
/// Kelley, Vincent: "Nearest Neighbor Queries" (1995).
class NearestQuery {
public:
    NearestQuery(const LevelMesh& ofMesh, const Vector& p, const NearestLimits& toLimits)
        : mesh(ofMesh), point(ToDouble(p)), limits(toLimits), facing(ToDouble(toLimits.facing)) {
        isFacing = limits.facing != Vector();
        best.t = std::numeric_limits<double>::infinity();
    }

    template <class Box>
    bool Reaches(const Box& box, double& nearest) const {
        if (!(box.low[0] <= box.high[0])) return false;
        double squared = 0.0;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const double below = static_cast<double>(box.low[axis]) - point[axis];
            const double above = point[axis] - static_cast<double>(box.high[axis]);
            const double outside = std::max({below, above, 0.0});
            squared += outside * outside;
        }
        nearest = Lower(squared);
        return !IsBehindBest(nearest);
    }

    bool IsBehindBest(double nearest) const { return nearest > best.t; }

    void Face(uint32_t face, const uint32_t* vertex, uint32_t corners) {
        if (!limits.parts.empty() && limits.parts[face] != limits.part) return;
        std::array<Vector3d, 4> placed;
        for (uint32_t k = 0; k < corners; ++k) {
            const Vector position = mesh.Position(vertex[k]);
            if (!IsFinite(position)) return;
            placed[k] = ToDouble(position);
        }
        for (uint32_t k = 2; k < corners; ++k) {
            if (isFacing &&
                Dot(Cross(placed[k - 1] - placed[0], placed[k] - placed[0]), facing) < 0.0)
                continue;
            best.Take(NearestOfTriangle(point, placed[0], placed[k - 1], placed[k]),
                      face,
                      vertex[0],
                      vertex[k - 1],
                      vertex[k]);
        }
    }

    Best best;

private:
    const LevelMesh& mesh;
    Vector3d point;
    const NearestLimits& limits;
    Vector3d facing;
    bool isFacing;
};

}  // namespace

template <class Query>
void PatchTree::VisitFaces(Query& query, uint32_t leaf) const {
    const uint32_t faces = FacesUnder(leafLevel);
    const uint32_t corners = level->CornersPerFace();
    const uint32_t first = leaf * faces;
    const uint32_t* vertex = level->faceVertexIndices.array + std::size_t{first} * corners;
    const bool isAnyHidden = level->HiddenFaceCount() != 0;
    for (uint32_t face = first; face < first + faces; ++face, vertex += corners)
        if (!isAnyHidden || !level->IsFaceHidden(face)) query.Face(face, vertex, corners);
}

template <class Query>
void PatchTree::Walk(Query& query) const {
    // Level number of items that belong to the top tree, which is above the patch levels.
    constexpr uint32_t top = 0xffffffffu;
    struct Item {
        double nearest;
        uint32_t levelIndex;
        uint32_t index;
    };
    // Sufficient for the maximum depth: each of the at most 65 top levels leaves one item on the
    // stack, a top leaf leaves four, and each of the 16 patch levels leaves three.
    std::array<Item, 128> stack;
    std::size_t size = 0;
    std::array<Item, 4> fan;
    std::size_t fanSize = 0;
    // Keeps the children in order of decreasing distance, so that the nearest one is popped first.
    const auto consider = [&](const Box& box, uint32_t levelIndex, uint32_t index) {
        double nearest;
        if (!query.Reaches(box, nearest)) return;
        std::size_t slot = fanSize++;
        for (; slot > 0 && fan[slot - 1].nearest < nearest; --slot) fan[slot] = fan[slot - 1];
        fan[slot] = {nearest, levelIndex, index};
    };

    consider(topNodes[0].box, top, 0);
    if (fanSize == 1) stack[size++] = fan[0];
    while (size > 0) {
        const Item item = stack[--size];
        if (query.IsBehindBest(item.nearest)) continue;
        fanSize = 0;
        if (item.levelIndex == top) {
            const TopNode& node = topNodes[item.index];
            if (node.count == 0) {
                consider(topNodes[node.first].box, top, node.first);
                consider(topNodes[node.first + 1].box, top, node.first + 1);
            }
            if (nextListed.empty()) {
                for (uint32_t i = node.first; i < node.first + node.count; ++i)
                    consider(patchBoxes[0][order[i]], 0, order[i]);
            } else {
                // Only level 0 has lists, and its boxes are those of single faces.
                ForEachInLeaf(item.index, [&](uint32_t face) {
                    double nearest;
                    if (query.Reaches(patchBoxes[0][face], nearest)) VisitFaces(query, face);
                });
            }
        } else if (item.levelIndex == leafLevel) {
            VisitFaces(query, item.index);
        } else {
            const uint32_t children = ChildCount(item.levelIndex);
            const uint32_t first = item.index * children;
            for (uint32_t child = first; child < first + children; ++child)
                consider(patchBoxes[item.levelIndex + 1][child], item.levelIndex + 1, child);
        }
        for (std::size_t i = 0; i < fanSize; ++i) stack[size++] = fan[i];
    }
}

std::optional<PickHit> PatchTree::Pick(const Ray& ray) const {
    if (!IsFinite(ray.origin) || !IsFinite(ray.direction) || ray.direction == Vector()) return {};
    if (!(ray.maxT >= 0.0f)) return {};
    RayQuery query(*level, ray);
    Walk(query);
    if (query.best.face == openBorder) return {};
    return MakeHit(*level, query.best);
}

std::optional<PickHit> PatchTree::Nearest(const Vector& p, const NearestLimits& limits) const {
    if (!IsFinite(p)) return {};
    NearestQuery query(*level, p, limits);
    Walk(query);
    if (query.best.face == openBorder) return {};
    PickHit hit = MakeHit(*level, query.best);
    hit.t = static_cast<float>(std::sqrt(query.best.t));
    return hit;
}

}  // namespace trovik
