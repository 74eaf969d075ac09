// SPDX-License-Identifier: Apache-2.0

/// \file Split, flip and collapse of EditableMesh. In all of them, the faces at the edge are
/// f = (a, b, c) with the half-edge h from a to b, and g = (b, a, d) with its twin.
#include "framework/tessellation/EditableMesh.h"

#include <algorithm>
#include <cassert>

namespace trovik {

void EditableMesh::Connect(uint32_t a, uint32_t b) {
    if (a != none) CornerAt(a).twin = b;
    if (b != none) CornerAt(b).twin = a;
}

uint32_t EditableMesh::MidUv(uint32_t from, uint32_t to, float t) {
    if (from == none || to == none) return none;
    const std::array<float, 2> a = uvs[from];
    const std::array<float, 2> b = uvs[to];
    return AddUv({a[0] + (b[0] - a[0]) * t, a[1] + (b[1] - a[1]) * t});
}

uint32_t EditableMesh::SplitEdge(uint32_t halfEdge, const Vector& position, float t) {
    CheckRoom(2);
    const uint32_t h = halfEdge;
    const uint32_t twin = Twin(h);
    const bool isFeature = IsFeature(h);
    const uint32_t b = To(h);
    const uint32_t toC = Next(h);
    const uint32_t fNew = AddFace(TagOf(FaceOf(h))) * 3;
    const uint32_t gNew = twin == none ? none : AddFace(TagOf(FaceOf(twin))) * 3;
    const uint32_t m = AddVertex(position);
    uint32_t uv = MidUv(UvOf(h), UvOf(toC), t);

    // f = (a, b, c) becomes (a, m, c), and (m, b, c) is added.
    CornerAt(fNew) = {m, none, uv, isFeature};
    CornerAt(fNew + 1) = {b, none, UvOf(toC), IsFeature(toC)};
    CornerAt(fNew + 2) = {Opposite(h), none, UvOf(Previous(h)), false};
    Connect(fNew + 1, Twin(toC));
    CornerAt(toC) = {m, none, uv, false};
    Connect(toC, fNew + 2);
    vertices[m].halfEdge = fNew;
    vertices[m].valence = twin == none ? 3u : 4u;
    ++vertices[From(fNew + 2)].valence;
    if (vertices[b].halfEdge == toC) vertices[b].halfEdge = fNew + 1;
    if (twin == none) return m;

    // g = (b, a, d) becomes (m, a, d), and (b, m, d) is added.
    const uint32_t d = Opposite(twin);
    const uint32_t fromD = Previous(twin);
    ++vertices[d].valence;
    if (UvOf(twin) != UvOf(fNew + 1) || UvOf(Next(twin)) != UvOf(h))
        uv = MidUv(UvOf(twin), UvOf(Next(twin)), 1.0f - t);
    CornerAt(gNew) = {b, none, UvOf(twin), isFeature};
    CornerAt(gNew + 1) = {m, none, uv, false};
    CornerAt(gNew + 2) = {d, none, UvOf(fromD), IsFeature(fromD)};
    Connect(gNew + 2, Twin(fromD));
    CornerAt(fromD).isFeature = false;
    Connect(fromD, gNew + 1);
    CornerAt(twin).vertex = m;
    CornerAt(twin).uv = uv;
    Connect(fNew, gNew);
    if (vertices[b].halfEdge == twin) vertices[b].halfEdge = gNew;
    if (vertices[d].halfEdge == fromD) vertices[d].halfEdge = gNew + 2;
    return m;
}

bool EditableMesh::CanFlip(uint32_t halfEdge) const {
    const uint32_t twin = Twin(halfEdge);
    if (twin == none || IsFeature(halfEdge) || IsKeptEdge(halfEdge)) return false;
    const uint32_t c = Opposite(halfEdge);
    const uint32_t d = Opposite(twin);
    for (const uint32_t v : {From(halfEdge), To(halfEdge), c, d})
        if (IsPartial(v)) return false;
    if (c == d || FindHalfEdge(c, d) != none || FindHalfEdge(d, c) != none) return false;
    for (const uint32_t v : {From(halfEdge), To(halfEdge)})
        if (Valence(v) < (IsBorderVertex(v) ? 3u : 4u)) return false;
    return true;
}

void EditableMesh::FlipEdge(uint32_t halfEdge) {
    assert(CanFlip(halfEdge));
    const uint32_t h = halfEdge;
    const uint32_t twin = Twin(h);
    const Corner a = CornerAt(h);
    const Corner b = CornerAt(twin);
    const Corner bc = CornerAt(Next(h));
    const Corner ca = CornerAt(Previous(h));
    const Corner ad = CornerAt(Next(twin));
    const Corner db = CornerAt(Previous(twin));
    // f becomes (c, d, b), and g becomes (d, c, a).
    const uint32_t hDb = Next(h);
    const uint32_t hBc = Previous(h);
    const uint32_t hCa = Next(twin);
    const uint32_t hAd = Previous(twin);
    CornerAt(h) = {ca.vertex, twin, ca.uv, false};
    CornerAt(twin) = {db.vertex, h, db.uv, false};
    CornerAt(hDb) = db;
    CornerAt(hBc) = bc;
    CornerAt(hCa) = ca;
    CornerAt(hAd) = ad;
    Connect(hDb, db.twin);
    Connect(hBc, bc.twin);
    Connect(hCa, ca.twin);
    Connect(hAd, ad.twin);
    --vertices[a.vertex].valence;
    --vertices[b.vertex].valence;
    ++vertices[ca.vertex].valence;
    ++vertices[db.vertex].valence;
    Anchor(a.vertex, hAd);
    Anchor(b.vertex, hBc);
    Anchor(ca.vertex, hCa);
    Anchor(db.vertex, hDb);
}

bool EditableMesh::CanCollapse(uint32_t halfEdge, uint32_t removed) const {
    const uint32_t twin = Twin(halfEdge);
    const uint32_t other = removed == From(halfEdge) ? To(halfEdge) : From(halfEdge);
    const VertexKind kind = KindOf(removed);
    if (kind == VertexKind::Corner || IsPartial(other)) return false;
    if (kind == VertexKind::OnCurve && !IsMarked(halfEdge)) return false;
    if (twin != none && IsBorderVertex(removed) && IsBorderVertex(other)) return false;
    for (const uint32_t side : {halfEdge, twin}) {
        if (side == none) continue;
        const uint32_t c = Opposite(side);
        if (Valence(c) < (IsBorderVertex(c) ? 3u : 4u)) return false;
        if (IsMarked(Next(side)) && IsMarked(Previous(side))) return false;
    }
    // The link condition: the only common neighbours are the vertices opposite to the edge.
    uint32_t common = 0;
    ForEachNeighbour(removed, [&](uint32_t n) {
        if (n == other) return;
        bool isCommon = false;
        ForEachNeighbour(other, [&](uint32_t m) { isCommon = isCommon || m == n; });
        common += isCommon ? 1 : 0;
    });
    return common == (twin == none ? 1u : 2u);
}

void EditableMesh::FreeUvsOf(uint32_t vertex) {
    const std::size_t first = freeUvs.size();
    ForEachOutgoing(vertex, [&](uint32_t h) {
        const uint32_t uv = UvOf(h);
        const auto end = freeUvs.end();
        if (uv != none &&
            std::find(freeUvs.begin() + static_cast<std::ptrdiff_t>(first), end, uv) == end)
            freeUvs.push_back(uv);
    });
}

void EditableMesh::CloseFace(uint32_t halfEdge) {
    const uint32_t next = Next(halfEdge);
    const uint32_t previous = Previous(halfEdge);
    const uint32_t outerNext = Twin(next);
    const uint32_t outerPrevious = Twin(previous);
    const bool isFeature = IsFeature(next) || IsFeature(previous);
    const uint32_t c = From(previous);
    Connect(outerNext, outerPrevious);
    const uint32_t outer = outerNext != none ? outerNext : outerPrevious;
    SetFeature(outer, isFeature);
    --vertices[c].valence;
    RemoveFace(FaceOf(halfEdge));
    Anchor(c, From(outer) == c ? outer : Next(outer));
}

void EditableMesh::CollapseEdge(uint32_t halfEdge,
                                uint32_t removed,
                                const Vector& position,
                                float t) {
    assert(CanCollapse(halfEdge, removed));
    const bool isReverse = removed != From(halfEdge);
    // A border edge has no half-edge in the other direction.
    const uint32_t h = isReverse && !IsBorder(halfEdge) ? Twin(halfEdge) : halfEdge;
    const bool startsAtRemoved = removed == From(h);
    const uint32_t twin = Twin(h);
    const uint32_t other = startsAtRemoved ? To(h) : From(h);
    const uint32_t uvLeft = startsAtRemoved ? UvOf(Next(h)) : UvOf(h);
    const uint32_t uvRight = twin == none ? none : UvOf(twin);
    if (uvLeft != none && UvOf(h) != none && KindOf(removed) == VertexKind::Free &&
        KindOf(other) == VertexKind::Free) {
        const std::array<float, 2> from = uvs[UvOf(h)];
        std::array<float, 2>& to = uvs[uvLeft];
        for (std::size_t i = 0; i < 2; ++i) to[i] = from[i] + (to[i] - from[i]) * t;
    }
    if (hasUvs) FreeUvsOf(removed);
    // The corners of the removed vertex, counter-clockwise from the left-hand side of the edge.
    // Those behind another feature are on its right-hand side.
    const uint32_t first = startsAtRemoved ? h : HalfEdgeOf(removed);
    bool isRight = false;
    for (uint32_t out = first; true;) {
        Corner& corner = CornerAt(out);
        corner.vertex = other;
        corner.uv = isRight ? uvRight : uvLeft;
        const uint32_t incoming = Previous(out);
        out = Twin(incoming);
        if (out == none || out == first) break;
        if (IsFeature(incoming)) isRight = true;
    }
    const uint32_t in = Twin(Next(h));
    const uint32_t out = Twin(Previous(h));
    // The vertices opposite to the edge are neighbours of both ends.
    vertices[other].valence += Valence(removed) - (twin == none ? 3u : 4u);
    // A half-edge of a remaining face that starts at the merged vertex.
    const uint32_t anchor = out != none ? out : Next(in);
    CloseFace(h);
    if (twin != none) CloseFace(twin);
    Anchor(other, anchor);
    if (position != Position(other)) {
        vertices[other].position = position;
        vertices[other].source = none;
    }
    RemoveVertex(removed);
}

}  // namespace trovik
