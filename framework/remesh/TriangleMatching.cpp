// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/TriangleMatching.h"

#include "framework/jobs/JobPhase.h"

#include <algorithm>
#include <utility>

namespace trovik {

TriangleMatching::TriangleMatching(std::vector<Candidates> ofTriangles)
    : triangles(std::move(ofTriangles)),
      partners(triangles.size(), none),
      isExhausted(triangles.size()),
      nodes(triangles.size()) {}

void TriangleMatching::PairGreedily(
    const std::function<bool(uint32_t triangle, uint32_t side)>& mayPair, JobControl* job) {
    struct Pair {
        float quality;
        uint32_t triangle;
        uint32_t side;
    };
    std::vector<Pair> pairs;
    for (uint32_t triangle = 0; triangle < triangles.size(); ++triangle)
        for (uint32_t side = 0; side < 3; ++side) {
            const Candidate& candidate = triangles[triangle][side];
            if (candidate.neighbour != none && triangle < candidate.neighbour)
                pairs.push_back({candidate.quality, triangle, side});
        }
    std::ranges::stable_sort(pairs,
                             [](const Pair& a, const Pair& b) { return a.quality > b.quality; });
    JobPhase phase(job, "Pairing triangles", pairs.size());
    for (const Pair& pair : pairs) {
        phase.Add();
        const uint32_t neighbour = triangles[pair.triangle][pair.side].neighbour;
        if (partners[pair.triangle] != none || partners[neighbour] != none) continue;
        if (!mayPair(pair.triangle, pair.side)) continue;
        partners[pair.triangle] = neighbour;
        partners[neighbour] = pair.triangle;
    }
    phase.Finish();
}

void TriangleMatching::Augment(JobControl* job) {
    // Since an earlier call, pairs may have been separated.
    std::fill(isExhausted.begin(), isExhausted.end(), false);
    JobPhase phase(job, "Pairing the remaining triangles", triangles.size());
    for (uint32_t triangle = 0; triangle < triangles.size(); ++triangle) {
        phase.Add();
        if (partners[triangle] == none && !isExhausted[triangle]) Search(triangle);
    }
    phase.Finish();
}

void TriangleMatching::Ban(uint32_t triangle) {
    const uint32_t partner = partners[triangle];
    if (partner == none) return;
    for (const auto& [one, other] : {std::pair(triangle, partner), std::pair(partner, triangle)}) {
        partners[one] = none;
        for (std::size_t side = 0; side < 3; ++side) {
            Candidate& candidate = triangles[one][side];
            if (candidate.neighbour != other) continue;
            banned.push_back({one, side, candidate});
            candidate.neighbour = none;
        }
    }
}

void TriangleMatching::LiftBans() {
    for (const Banned& one : banned) triangles[one.triangle][one.side] = one.candidate;
    banned.clear();
}

float TriangleMatching::QualityOfPair(uint32_t triangle) const {
    for (const Candidate& candidate : triangles[triangle])
        if (candidate.neighbour == partners[triangle]) return candidate.quality;
    return 0.0f;
}

// A breadth-first search over alternating paths. Outer triangles are reached by a path of even
// length and are queued; their neighbours are inner ones. A side between two outer triangles closes
// an odd cycle (a blossom), whose triangles all become outer ones with a common base.
bool TriangleMatching::Search(uint32_t root) {
    touched.assign(1, root);
    queue.assign(1, root);
    nodes[root].kind = Kind::Outer;
    bool isFound = false;
    for (std::size_t head = 0; head < queue.size() && !isFound; ++head)
        for (const Candidate& candidate : triangles[queue[head]]) {
            const uint32_t next = candidate.neighbour;
            if (next == none || isExhausted[next]) continue;
            isFound = Visit(queue[head], next);
            if (isFound) break;
        }
    // A tree without an augmenting path cannot be part of a later one.
    for (const uint32_t triangle : touched) {
        if (!isFound) isExhausted[triangle] = true;
        nodes[triangle] = {};
    }
    return isFound;
}

/// Follows a side from an outer triangle. \return whether this completed an augmenting path.
bool TriangleMatching::Visit(uint32_t triangle, uint32_t next) {
    if (nodes[next].kind == Kind::Unvisited) {
        nodes[next].kind = Kind::Inner;
        nodes[next].parent = triangle;
        touched.push_back(next);
        const uint32_t partner = partners[next];
        if (partner == none) {
            FlipPath(next);
            return true;
        }
        nodes[partner].kind = Kind::Outer;
        touched.push_back(partner);
        queue.push_back(partner);
    } else if (nodes[next].kind == Kind::Outer && BaseOf(triangle) != BaseOf(next)) {
        const uint32_t base = CommonBase(triangle, next);
        Contract(triangle, next, base);
        Contract(next, triangle, base);
    }
    return false;
}

void TriangleMatching::FlipPath(uint32_t end) {
    while (end != none) {
        const uint32_t parent = nodes[end].parent;
        const uint32_t next = partners[parent];
        partners[end] = parent;
        partners[parent] = end;
        end = next;
    }
}

uint32_t TriangleMatching::BaseOf(uint32_t triangle) {
    uint32_t base = triangle;
    while (nodes[base].link != none) base = nodes[base].link;
    while (nodes[triangle].link != none) triangle = std::exchange(nodes[triangle].link, base);
    return base;
}

uint32_t TriangleMatching::CommonBase(uint32_t a, uint32_t b) {
    ++passes;
    // Both ends go towards the root in turn, so the cost depends on the size of the blossom.
    for (;; std::swap(a, b)) {
        if (a == none) continue;
        a = BaseOf(a);
        if (nodes[a].pass == passes) return a;
        nodes[a].pass = passes;
        a = partners[a] == none ? none : nodes[partners[a]].parent;
    }
}

void TriangleMatching::Contract(uint32_t from, uint32_t child, uint32_t base) {
    while (BaseOf(from) != base) {
        const uint32_t partner = partners[from];
        nodes[from].parent = child;
        child = partner;
        if (nodes[partner].kind == Kind::Inner) {
            nodes[partner].kind = Kind::Outer;
            queue.push_back(partner);
        }
        if (BaseOf(from) == from) nodes[from].link = base;
        if (BaseOf(partner) == partner) nodes[partner].link = base;
        from = nodes[partner].parent;
    }
}

}  // namespace trovik
