// SPDX-License-Identifier: Apache-2.0
#include "framework/detail/RegionPasses.h"

#include "framework/detail/FaceDistance.h"

namespace trovik {

namespace {

constexpr uint32_t none = EditableMesh::none;
using Edit = StrokeTessellator::Edit;

constexpr int maxCollapseSweeps = 1;
constexpr int maxFlipSweeps = 2;
/// How far a vertex moves towards the middle of its neighbours in one pass.
constexpr float relaxation = 0.5f;
/// Mask amount that stops all movement.
constexpr float fullFreeze = 127.0f;

/// Calls edit(half-edge) once for each edge, until no edge is changed.
template <typename EditOne>
int Sweep(const EditableMesh& mesh, int maxSweeps, const EditOne& editOne) {
    int total = 0;
    int before = -1;
    for (int sweep = 0; sweep < maxSweeps && total != before; ++sweep) {
        before = total;
        for (uint32_t h = 0; h < mesh.FaceLimit() * 3; ++h) {
            if (!mesh.HasFace(EditableMesh::FaceOf(h))) continue;
            const uint32_t twin = mesh.Twin(h);
            if (twin != none && twin < h) continue;
            if (editOne(h)) ++total;
        }
    }
    return total;
}

float SquaredLength(const EditableMesh& mesh, uint32_t halfEdge) {
    const Vector along = mesh.Position(mesh.To(halfEdge)) - mesh.Position(mesh.From(halfEdge));
    return along | along;
}

}  // namespace

RegionPasses::RegionPasses(DetailRegion& ofRegion,
                           const StrokeTessellator::Reach& ofReach,
                           float length)
    : region(ofRegion), mesh(ofRegion.Mesh()), reach(ofReach), lengths(length) {}

bool RegionPasses::IsReached(uint32_t halfEdge) const {
    return SquaredDistance(reach.centre,
                           mesh.Position(mesh.From(halfEdge)),
                           mesh.Position(mesh.To(halfEdge))) <= reach.radius * reach.radius;
}

// Large faces may be reached while none of their edges is.
bool RegionPasses::IsToBeSplit(uint32_t halfEdge) const {
    if (!(SquaredLength(mesh, halfEdge) > lengths.longest * lengths.longest)) return false;
    for (const uint32_t side : {halfEdge, mesh.Twin(halfEdge)}) {
        if (side == none) continue;
        const auto [a, b, c] = mesh.VerticesOf(EditableMesh::FaceOf(side));
        if (IsWithin(
                reach.centre, reach.radius, mesh.Position(a), mesh.Position(b), mesh.Position(c)))
            return true;
    }
    return false;
}

void RegionPasses::Touch(uint32_t vertex) {
    region.Data(vertex).isTouched = true;
    mesh.ForEachNeighbour(vertex, [this](uint32_t n) { region.Data(n).isTouched = true; });
}

int RegionPasses::Run(const StrokeTessellator::Passes& passes) {
    int total = 0;
    for (int pass = 0; pass < passes.maxPasses; ++pass) {
        int edited = 0;
        if (passes.splits) edited += SplitLongEdges();
        if (passes.collapses) edited += CollapseShortEdges();
        if (edited == 0 && pass > 0) break;
        edited += FlipEdges();
        total += edited;
        if (edited == 0) break;
        if (passes.relaxes) Relax();
    }
    return total;
}

// The edge to be split and the longest edge of its faces are followed until an edge is the longest
// of both its faces, and that one is split. This keeps faces from becoming thinner with each split,
// and the splitting always ends, because an edge next to a longer one that is kept is not split.
// See Rivara: "New Longest-Edge Algorithms for the Refinement and/or Improvement of Unstructured
// Triangulations" (1997).
uint32_t RegionPasses::SplitTowards(uint32_t halfEdge) {
    uint32_t at = halfEdge;
    while (true) {
        uint32_t longest = at;
        float best = SquaredLength(mesh, at);
        for (const uint32_t side : {at, mesh.Twin(at)}) {
            if (side == none) continue;
            for (const uint32_t h : {EditableMesh::Next(side), EditableMesh::Previous(side)}) {
                const float squared = SquaredLength(mesh, h);
                if (!(squared > best)) continue;
                best = squared;
                longest = h;
            }
        }
        if (longest == at) break;
        at = longest;
    }
    if (!mesh.CanSplit(at)) return none;
    const uint32_t a = mesh.From(at);
    const uint32_t b = mesh.To(at);
    const Vector middle = (mesh.Position(a) + mesh.Position(b)) * 0.5f;
    // At the resolution of single precision, an edge cannot be split.
    if (middle == mesh.Position(a) || middle == mesh.Position(b)) return none;
    const DetailVertex data = Between(region.Data(a), region.Data(b));
    const uint32_t made = mesh.SplitEdge(at, middle);
    region.Data(made) = data;
    Touch(made);
    edits.push_back({Edit::Split, {a, b, made}});
    return made;
}

int RegionPasses::SplitLongEdges() {
    std::vector<uint32_t> pending;
    const auto add = [&](uint32_t h) {
        if (IsToBeSplit(h)) pending.push_back(h);
    };
    for (uint32_t h = mesh.FaceLimit() * 3; h-- > 0;) {
        if (!mesh.HasFace(EditableMesh::FaceOf(h))) continue;
        const uint32_t twin = mesh.Twin(h);
        if (twin == none || twin > h) add(h);
    }
    int splits = 0;
    while (!pending.empty() && splits < maxSplits) {
        const uint32_t h = pending.back();
        if (!IsToBeSplit(h)) {
            pending.pop_back();
            continue;
        }
        const uint32_t made = SplitTowards(h);
        if (made == none) {
            pending.pop_back();
            continue;
        }
        ++splits;
        mesh.ForEachOutgoing(made, [&](uint32_t out) {
            add(out);
            add(EditableMesh::Next(out));
        });
    }
    return splits;
}

int RegionPasses::CollapseShortEdges() {
    return Sweep(mesh, maxCollapseSweeps, [&](uint32_t h) {
        if (!(SquaredLength(mesh, h) < lengths.shortest * lengths.shortest) || !IsReached(h))
            return false;
        const CollapsedEdge collapsed = CollapseShortEdge(mesh, h, lengths);
        if (!collapsed) return false;
        DetailVertex& kept = region.Data(collapsed.kept);
        DetailVertex& removed = region.Data(collapsed.removed);
        if (collapsed.isAtMidpoint) {
            DetailVertex middle = Between(kept, removed);
            middle.number = kept.number;
            kept = middle;
        }
        edits.push_back({Edit::Collapse, {collapsed.kept, removed.number, 0}});
        removed = DetailVertex();
        Touch(collapsed.kept);
        return true;
    });
}

int RegionPasses::FlipEdges() {
    return Sweep(mesh, maxFlipSweeps, [&](uint32_t h) {
        const uint32_t twin = mesh.Twin(h);
        if (twin == none) return false;
        const uint32_t a = mesh.From(h);
        const uint32_t b = mesh.To(h);
        if (!IsTouched(a) && !IsTouched(b) && !IsTouched(mesh.Opposite(h)) &&
            !IsTouched(mesh.Opposite(twin)))
            return false;
        if (!FlipToImprove(mesh, h)) return false;
        edits.push_back({Edit::Flip, {a, b, 0}});
        return true;
    });
}

// The positions at the beginning of the stroke move along, so that tools that limit the movement
// do not treat the relaxation as part of it.
void RegionPasses::Relax() {
    for (uint32_t v = 0; v < mesh.VertexLimit(); ++v) {
        if (!mesh.HasVertex(v) || !IsTouched(v)) continue;
        if (mesh.KindOf(v) != EditableMesh::VertexKind::Free) continue;
        DetailVertex& data = region.Data(v);
        const Vector old = mesh.Position(v);
        const Vector moved =
            (RelaxedPosition(mesh, v) - old) * (relaxation * (1.0f - data.freeze / fullFreeze));
        const NearbyPosition at = PositionNear(mesh, v, old + moved);
        if (!MoveFreeVertex(mesh, v, old + moved)) continue;
        data.original += moved;
        if (at.halfEdge == none) continue;
        Blend(data,
              region.Data(mesh.To(at.halfEdge)),
              at.s,
              region.Data(mesh.Opposite(at.halfEdge)),
              at.t);
    }
}

}  // namespace trovik
