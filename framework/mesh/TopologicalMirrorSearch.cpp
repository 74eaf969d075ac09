// SPDX-License-Identifier: Apache-2.0

/// \file
/// The search for the mirror of a mesh: seeds are derived from positions, and the rest of the map
/// is derived from adjacency.
#include "framework/jobs/JobPhase.h"
#include "framework/mesh/LevelMesh.h"
#include "framework/mesh/TopologicalMirror.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace trovik {

namespace {

/// Maximum number of seeds to try per component.
constexpr std::size_t seedLimit = 1024;
/// Maximum number of candidate mirrors; the one closest to a reflection is selected.
constexpr std::size_t mirrorLimit = 8;
/// Maximum number of other components to try as the mirror image of a component.
constexpr std::size_t partnerLimit = 4;
/// Maximum total number of walk steps for each list of seeds, as a multiple of the component's face
/// count.
constexpr uint64_t walkLimit = 200;
/// A seed or map whose error is at most this fraction of its size is a reflection up to rounding.
constexpr double exactRatio = 1e-10;

struct Seed {
    /// The sum of two squared distances. The first is the distance from one face to the other's
    /// reflection in a plane x = c, relative to the face size. The second is the distance from that
    /// plane to x = 0, relative to the component size.
    double error;
    uint32_t face;
    uint32_t across;
    uint32_t shift;
};

/// A set of faces that are connected by edges.
struct Component {
    std::vector<uint32_t> faces;
    double centre[3] = {0.0, 0.0, 0.0};
    /// Mean squared distance from the centre.
    double spread = 0.0;
    bool isDone = false;
};

}  // namespace

class TopologicalMirrorSearch {
public:
    TopologicalMirrorSearch(LevelMesh& baseLevel,
                            std::vector<uint32_t>& result,
                            int mirrorAxis,
                            JobControl* job)
        : phase(job, "Finding the mirror", baseLevel.faceCount),
          base(baseLevel),
          axis(mirrorAxis),
          corners(baseLevel.CornersPerFace()),
          images(result),
          vertexImages(baseLevel.VertexCount(), openBorder) {
        images.assign(base.faceCount, openBorder);
    }

    static std::unique_ptr<TopologicalMirror> Run(LevelMesh& base, int axis, JobControl* job) {
        std::unique_ptr<TopologicalMirror> mirror(new TopologicalMirror);
        mirror->baseCorners = base.CornersPerFace();
        TopologicalMirrorSearch search(base, mirror->images, axis, job);
        return search.FindAll() ? std::move(mirror) : nullptr;
    }

private:
    struct Map {
        double error = std::numeric_limits<double>::infinity();
        /// Each face and its packed image.
        std::vector<std::pair<uint32_t, uint32_t>> faces;
    };

    /// Returns the position of the vertex, with the mirror axis as x.
    Vector PointOf(uint32_t vertex) const {
        Vector point = base.Position(vertex);
        if (axis == 1) std::swap(point.x, point.y);
        if (axis == 2) std::swap(point.x, point.z);
        return point;
    }
    uint32_t VertexAt(uint32_t face, uint32_t corner) const {
        return base.faceVertexIndices.array[face * corners + corner];
    }
    uint32_t CornerAcross(uint32_t shift, uint32_t corner) const {
        return (shift + corners - corner) % corners;
    }

    bool FindAll();
    void FindParts();
    Map BestMap(std::size_t part);
    void KeepSeed(std::vector<Seed>& seeds, uint32_t face, uint32_t across, uint32_t shift) const;
    bool TrySeeds(std::vector<Seed>& seeds, std::vector<Map>& maps);
    bool IsReflection(const Map& map);
    double MiddleOf(uint32_t face, uint32_t across) const;
    double ErrorOf(uint32_t face, uint32_t across, uint32_t shift, double plane) const;
    double SizeOf(uint32_t face) const;

    bool Walk(const Seed& seed);
    bool Pair(uint32_t face, uint32_t across, uint32_t shift);
    bool PairVertices(uint32_t vertex, uint32_t across);
    Map EndWalk();

    /// Counts the faces of finished components; also polled during walks, so that they can be
    /// cancelled.
    JobPhase phase;
    LevelMesh& base;
    int axis;
    uint32_t corners;
    std::vector<uint32_t>& images;
    std::vector<uint32_t> vertexImages;
    std::vector<Component> parts;
    std::vector<uint32_t> partOf;
    /// The entries added by the current walk, in order.
    std::vector<uint32_t> walked;
    std::vector<uint32_t> pairedVertices;
    /// Remaining number of walk steps.
    uint64_t steps = 0;
};

std::unique_ptr<TopologicalMirror> TopologicalMirror::Find(LevelMesh& base,
                                                           int axis,
                                                           JobControl* job) {
    return TopologicalMirrorSearch::Run(base, axis, job);
}

bool TopologicalMirrorSearch::FindAll() {
    FindParts();
    bool isAny = false;
    for (std::size_t part = 0; part < parts.size(); ++part) {
        if (parts[part].isDone) continue;
        parts[part].isDone = true;
        const Map map = BestMap(part);
        for (const auto& [face, image] : map.faces) {
            images[face] = image;
            // A component that is the image of another one is not searched separately.
            parts[partOf[face]].isDone = true;
        }
        // If two components mirror each other, this counts the faces of both.
        phase.Add(std::max(map.faces.size(), parts[part].faces.size()));
        isAny = isAny || !map.faces.empty();
    }
    phase.Finish();
    return isAny;
}

void TopologicalMirrorSearch::FindParts() {
    partOf.assign(base.faceCount, openBorder);
    for (uint32_t first = 0; first < base.faceCount; ++first) {
        if (partOf[first] != openBorder) continue;
        const auto number = static_cast<uint32_t>(parts.size());
        Component part;
        part.faces.push_back(first);
        partOf[first] = number;
        double squares = 0.0;
        for (std::size_t at = 0; at < part.faces.size(); ++at) {
            phase.Poll();
            const uint32_t face = part.faces[at];
            for (uint32_t k = 0; k < corners; ++k) {
                const Vector p = PointOf(VertexAt(face, k));
                part.centre[0] += p.x;
                part.centre[1] += p.y;
                part.centre[2] += p.z;
                squares += static_cast<double>(p.x) * p.x + static_cast<double>(p.y) * p.y +
                           static_cast<double>(p.z) * p.z;
                const uint32_t neighbour = base.QuadEdgeNeighbour(face, k);
                if (neighbour == openBorder || partOf[neighbour >> 2] != openBorder) continue;
                partOf[neighbour >> 2] = number;
                part.faces.push_back(neighbour >> 2);
            }
        }
        const auto count = static_cast<double>(part.faces.size() * corners);
        part.spread = squares / count;
        for (double& sum : part.centre) {
            sum /= count;
            part.spread -= sum * sum;
        }
        parts.push_back(std::move(part));
    }
}

double TopologicalMirrorSearch::MiddleOf(uint32_t face, uint32_t across) const {
    double sum = 0.0;
    for (uint32_t k = 0; k < corners; ++k)
        sum += static_cast<double>(PointOf(VertexAt(face, k)).x) + PointOf(VertexAt(across, k)).x;
    return sum / (2.0 * corners);
}

/// Returns the squared distance of one face from the reflection of the other in the plane x =
/// `plane`.
double TopologicalMirrorSearch::ErrorOf(uint32_t face,
                                        uint32_t across,
                                        uint32_t shift,
                                        double plane) const {
    double error = 0.0;
    for (uint32_t k = 0; k < corners; ++k) {
        const Vector a = PointOf(VertexAt(face, k));
        const Vector b = PointOf(VertexAt(across, CornerAcross(shift, k)));
        const double x = static_cast<double>(a.x) + b.x - 2.0 * plane;
        const double y = static_cast<double>(a.y) - b.y;
        const double z = static_cast<double>(a.z) - b.z;
        error += x * x + y * y + z * z;
    }
    return error;
}

double TopologicalMirrorSearch::SizeOf(uint32_t face) const {
    double size = 0.0;
    const Vector a = PointOf(VertexAt(face, 0));
    for (uint32_t k = 1; k < corners; ++k) {
        const Vector edge = PointOf(VertexAt(face, k)) - a;
        size += static_cast<double>(edge.x) * edge.x + static_cast<double>(edge.y) * edge.y +
                static_cast<double>(edge.z) * edge.z;
    }
    return size;
}

// The seeds form a heap with the worst seed on top, so that a large mesh does not need a list of
// all seeds.
void TopologicalMirrorSearch::KeepSeed(std::vector<Seed>& seeds,
                                       uint32_t face,
                                       uint32_t across,
                                       uint32_t shift) const {
    const auto isBetter = [](const Seed& a, const Seed& b) {
        if (a.error != b.error) return a.error < b.error;
        return a.face != b.face ? a.face < b.face : a.across < b.across;
    };
    const double size = SizeOf(face) + SizeOf(across);
    // A degenerate face matches every face.
    if (!(size > 0.0)) return;
    const double plane = MiddleOf(face, across);
    const double spread = parts[partOf[face]].spread;
    const double error =
        ErrorOf(face, across, shift, plane) / size + plane * plane / std::max(spread, size);
    const Seed seed{error, face, across, shift};
    if (!std::isfinite(seed.error)) return;
    if (seeds.size() == seedLimit) {
        if (!isBetter(seed, seeds.front())) return;
        std::pop_heap(seeds.begin(), seeds.end(), isBetter);
        seeds.pop_back();
    }
    seeds.push_back(seed);
    std::push_heap(seeds.begin(), seeds.end(), isBetter);
}

TopologicalMirrorSearch::Map TopologicalMirrorSearch::BestMap(std::size_t number) {
    const Component& part = parts[number];
    std::vector<Map> maps;
    std::vector<Seed> seeds;
    for (const uint32_t face : part.faces) {
        phase.Poll();
        for (uint32_t k = 0; k < corners; ++k) {
            // Seeds are faces that map to themselves, and pairs of faces at an edge that map to
            // each other.
            KeepSeed(seeds, face, face, k);
            const uint32_t neighbour = base.QuadEdgeNeighbour(face, k);
            if (neighbour != openBorder && neighbour >> 2 > face)
                KeepSeed(seeds, face, neighbour >> 2, (k + (neighbour & 3u) + 1) % corners);
        }
    }
    if (TrySeeds(seeds, maps)) return std::move(maps.back());

    // Components of the same size, ordered by the distance between their centre and the reflected
    // centre of this component.
    std::vector<std::pair<double, std::size_t>> partners;
    for (std::size_t other = number + 1; other < parts.size(); ++other) {
        const Component& candidate = parts[other];
        if (candidate.isDone || candidate.faces.size() != part.faces.size()) continue;
        const double x = candidate.centre[0] + part.centre[0];
        const double y = candidate.centre[1] - part.centre[1];
        const double z = candidate.centre[2] - part.centre[2];
        partners.emplace_back(x * x + y * y + z * z, other);
    }
    const std::size_t tried = std::min(partners.size(), partnerLimit);
    std::partial_sort(
        partners.begin(), partners.begin() + static_cast<std::ptrdiff_t>(tried), partners.end());
    partners.resize(tried);
    for (const auto& [distance, other] : partners) {
        seeds.clear();
        for (const uint32_t across : parts[other].faces) {
            phase.Poll();
            for (uint32_t shift = 0; shift < corners; ++shift)
                KeepSeed(seeds, part.faces.front(), across, shift);
        }
        if (TrySeeds(seeds, maps)) return std::move(maps.back());
    }
    Map best;
    for (Map& map : maps)
        if (map.error < best.error) best = std::move(map);
    return best;
}

/// Extends each seed to a map and adds it to `maps`.
/// \return whether the last map is a reflection.
bool TopologicalMirrorSearch::TrySeeds(std::vector<Seed>& seeds, std::vector<Map>& maps) {
    if (seeds.empty()) return false;
    steps = walkLimit * parts[partOf[seeds.front().face]].faces.size() + 10000;
    std::sort(seeds.begin(), seeds.end(), [](const Seed& a, const Seed& b) {
        if (a.error != b.error) return a.error < b.error;
        return a.face != b.face ? a.face < b.face : a.across < b.across;
    });
    std::size_t found = 0;
    for (const Seed& seed : seeds) {
        if (steps == 0 || found == mirrorLimit) break;
        const std::pair<uint32_t, uint32_t> entry(seed.face, seed.across << 2 | seed.shift);
        const auto holdsSeed = [&entry](const Map& map) {
            return std::binary_search(map.faces.begin(), map.faces.end(), entry);
        };
        if (std::any_of(maps.begin(), maps.end(), holdsSeed)) continue;
        const bool isConsistent = Walk(seed);
        Map map = EndWalk();
        if (!isConsistent || !IsReflection(map)) continue;
        double size = 0.0;
        map.error = 0.0;
        for (const auto& [face, image] : map.faces) {
            phase.Poll();
            map.error += ErrorOf(face, image >> 2, image & 3u, 0.0);
            size += SizeOf(face);
        }
        const bool isExact = map.error <= exactRatio * size;
        maps.push_back(std::move(map));
        if (isExact) return true;
        ++found;
    }
    return false;
}

/// Returns whether the map exchanges left and right, not front and back. In the sums over all
/// edges, x must predominantly change sign, and y and z must predominantly keep it. A pose may bend
/// and move limbs arbitrarily but must not reverse the model.
bool TopologicalMirrorSearch::IsReflection(const Map& map) {
    double sums[3] = {0.0, 0.0, 0.0};
    for (const auto& [face, image] : map.faces) {
        phase.Poll();
        for (uint32_t k = 0; k < corners; ++k) {
            const uint32_t next = (k + 1) % corners;
            const Vector a = PointOf(VertexAt(face, next)) - PointOf(VertexAt(face, k));
            const Vector b = PointOf(VertexAt(image >> 2, CornerAcross(image & 3u, next))) -
                             PointOf(VertexAt(image >> 2, CornerAcross(image & 3u, k)));
            sums[0] += static_cast<double>(a.x) * b.x;
            sums[1] += static_cast<double>(a.y) * b.y;
            sums[2] += static_cast<double>(a.z) * b.z;
        }
    }
    // An axis along which the mesh is nearly flat has little influence.
    const double total = std::fabs(sums[0]) + std::fabs(sums[1]) + std::fabs(sums[2]);
    return sums[0] <= 1e-6 * total && sums[1] >= -0.1 * total && sums[2] >= -0.1 * total;
}

bool TopologicalMirrorSearch::Walk(const Seed& seed) {
    if (!Pair(seed.face, seed.across, seed.shift)) return false;
    for (std::size_t at = 0; at < walked.size(); ++at) {
        phase.Poll();
        const uint32_t face = walked[at];
        const uint32_t across = images[face] >> 2;
        const uint32_t shift = images[face] & 3u;
        for (uint32_t k = 0; k < corners; ++k) {
            if (steps == 0) return false;
            --steps;
            // Side k runs from corner k to the next corner; its mirror image runs in the opposite
            // direction.
            const uint32_t neighbour = base.QuadEdgeNeighbour(face, k);
            const uint32_t other =
                base.QuadEdgeNeighbour(across, (shift + 2 * corners - k - 1) % corners);
            if (neighbour == openBorder || other == openBorder) {
                if (neighbour != other) return false;
                continue;
            }
            const uint32_t nextShift = ((neighbour & 3u) + (other & 3u) + 1) % corners;
            if (!Pair(neighbour >> 2, other >> 2, nextShift)) return false;
        }
    }
    return true;
}

bool TopologicalMirrorSearch::Pair(uint32_t face, uint32_t across, uint32_t shift) {
    if (images[face] != openBorder) return images[face] == (across << 2 | shift);
    if (images[across] != openBorder) return false;
    images[face] = across << 2 | shift;
    walked.push_back(face);
    if (across != face) {
        images[across] = face << 2 | shift;
        walked.push_back(across);
    }
    for (uint32_t k = 0; k < corners; ++k) {
        const uint32_t a = VertexAt(face, k);
        const uint32_t b = VertexAt(across, CornerAcross(shift, k));
        if (!PairVertices(a, b) || !PairVertices(b, a)) return false;
    }
    return true;
}

bool TopologicalMirrorSearch::PairVertices(uint32_t vertex, uint32_t across) {
    if (vertexImages[vertex] == openBorder) {
        vertexImages[vertex] = across;
        pairedVertices.push_back(vertex);
    }
    return vertexImages[vertex] == across;
}

/// Returns the pairs that the walk has found, by face, and restores the tables to their state
/// before the walk.
TopologicalMirrorSearch::Map TopologicalMirrorSearch::EndWalk() {
    Map map;
    map.faces.reserve(walked.size());
    for (const uint32_t face : walked) {
        map.faces.emplace_back(face, images[face]);
        images[face] = openBorder;
    }
    for (const uint32_t vertex : pairedVertices) vertexImages[vertex] = openBorder;
    walked.clear();
    pairedVertices.clear();
    std::sort(map.faces.begin(), map.faces.end());
    return map;
}

}  // namespace trovik
