// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace trovik {

class JobControl;

/// Pairs triangles with neighbours, so that each triangle belongs to at most one pair. Results are
/// deterministic.
class TROVIK_API TriangleMatching {
public:
    static constexpr uint32_t none = 0xffffffffu;

    /// A neighbour with which a triangle may be paired, across one of its sides; `none` if it must
    /// not be. Both triangles must list each other, with the same quality.
    struct Candidate {
        uint32_t neighbour = none;
        float quality = 0.0f;
    };
    using Candidates = std::array<Candidate, 3>;

    explicit TriangleMatching(std::vector<Candidates> ofTriangles);

    /// Pairs triangles in the order of decreasing quality; equal ones in the order of the
    /// triangles. \param mayPair  called for each pair that is still possible. \throw Cancelled.
    void PairGreedily(const std::function<bool(uint32_t triangle, uint32_t side)>& mayPair,
                      JobControl* job = nullptr);

    /// Increases the number of pairs to the maximum, by replacing pairs along augmenting paths; see
    /// Edmonds: "Paths, Trees, and Flowers" (1965). Cost: nearly O(n) per path, but few triangles
    /// are visited if there is a path to a free triangle nearby. \throw Cancelled.
    void Augment(JobControl* job = nullptr);

    /// Separates a pair, which will not be formed again until LiftBans.
    void Ban(uint32_t triangle);
    void LiftBans();

    /// The partner of each triangle, or `none`.
    const std::vector<uint32_t>& Partners() const { return partners; }
    float QualityOfPair(uint32_t triangle) const;

private:
    bool Search(uint32_t root);
    bool Visit(uint32_t triangle, uint32_t next);
    uint32_t BaseOf(uint32_t triangle);
    uint32_t CommonBase(uint32_t a, uint32_t b);
    void Contract(uint32_t from, uint32_t child, uint32_t base);
    void FlipPath(uint32_t end);

    std::vector<Candidates> triangles;
    std::vector<uint32_t> partners;
    /// Candidates of banned pairs: the triangle, its side and the candidate.
    struct Banned {
        uint32_t triangle;
        std::size_t side;
        Candidate candidate;
    };
    std::vector<Banned> banned;
    /// Triangles that no augmenting path can contain.
    std::vector<bool> isExhausted;

    /// State of one search; only the touched entries differ from their initial values.
    enum class Kind : uint8_t { Unvisited, Outer, Inner };
    struct Node {
        /// The outer triangle from which an inner one was reached.
        uint32_t parent = none;
        /// Link towards the base of the blossom that contains the triangle; `none` for a base.
        uint32_t link = none;
        /// The last search of a common base that passed the triangle.
        uint64_t pass = 0;
        Kind kind = Kind::Unvisited;
    };
    std::vector<Node> nodes;
    std::vector<uint32_t> touched;
    std::vector<uint32_t> queue;
    uint64_t passes = 0;
};

}  // namespace trovik
