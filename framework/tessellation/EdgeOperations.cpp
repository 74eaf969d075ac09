// SPDX-License-Identifier: Apache-2.0
#include "framework/tessellation/EdgeOperations.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

constexpr uint32_t none = EditableMesh::none;
using Kind = EditableMesh::VertexKind;

/// Cosine of the largest angle by which an edit may rotate the normal of a face.
constexpr float minNormalCosine = 0.25f;
/// The same for the two faces of a flipped edge, against the mean of their old normals.
constexpr float minFlipCosine = 0.7f;
/// Cosine of the largest angle by which a curve may turn at a removed vertex.
constexpr float minCurveCosine = 0.5f;
/// Smallest quality of a face that an edit may create, unless it replaces a worse one.
constexpr float minQuality = 0.1f;
/// Faces below this quality are flipped regardless of valences.
constexpr float thinQuality = 0.3f;

struct Triangle {
    Vector a;
    Vector b;
    Vector c;

    Vector AreaNormal() const { return (b - a) & (c - a); }
    /// 1 for an equilateral triangle, 0 for a degenerate one.
    float Quality() const {
        const float squares = ((b - a) | (b - a)) + ((c - b) | (c - b)) + ((a - c) | (a - c));
        // 2 sqrt(3), so that an equilateral triangle gets 1.
        return squares > 0.0f ? AreaNormal().Length() * 3.4641016f / squares : 0.0f;
    }
};

Triangle TriangleOf(const EditableMesh& mesh, uint32_t face) {
    const std::array<uint32_t, 3> v = mesh.VerticesOf(face);
    return {mesh.Position(v[0]), mesh.Position(v[1]), mesh.Position(v[2])};
}

float SquaredLength(const Vector& v) { return v | v; }

/// Whether the angle between two vectors is at most that of the cosine. True if `before` is zero.
bool IsWithin(const Vector& before, const Vector& after, float minCosine) {
    const float length = before.Length();
    if (length == 0.0f) return true;
    return (before | after) > minCosine * length * after.Length();
}

bool IsValidChange(const Triangle& before, const Triangle& after) {
    const float quality = after.Quality();
    if (!(quality > 0.0f) || (quality < minQuality && quality < before.Quality())) return false;
    return IsWithin(before.AreaNormal(), after.AreaNormal(), minNormalCosine);
}

/// Whether the faces around a vertex remain valid if it moves, except those that also use
/// `removed`.
bool KeepsFaces(const EditableMesh& mesh, uint32_t vertex, uint32_t removed, const Vector& p) {
    bool isValid = true;
    mesh.ForEachOutgoing(vertex, [&](uint32_t h) {
        const uint32_t second = mesh.To(h);
        const uint32_t third = mesh.Opposite(h);
        if (!isValid || second == removed || third == removed) return;
        const Vector& b = mesh.Position(second);
        const Vector& c = mesh.Position(third);
        isValid = IsValidChange({mesh.Position(vertex), b, c}, {p, b, c});
    });
    return isValid;
}

bool KeepsLengths(const EditableMesh& mesh, uint32_t vertex, const Vector& p, float longest) {
    bool isValid = true;
    mesh.ForEachNeighbour(vertex, [&](uint32_t n) {
        isValid = isValid && SquaredLength(mesh.Position(n) - p) <= longest * longest;
    });
    return isValid;
}

/// Whether the curve through a vertex turns by a small angle only, on the surface and, on both
/// sides, in the texture.
bool IsSmoothCurve(const EditableMesh& mesh, uint32_t vertex) {
    const auto isMarked = [&](uint32_t h) { return mesh.IsBorder(h) || mesh.IsFeature(h); };
    uint32_t first = none;
    mesh.ForEachOutgoing(vertex, [&](uint32_t h) {
        if (first == none && isMarked(h)) first = h;
    });
    if (first == none) return false;
    const Vector p = mesh.Position(vertex);
    const auto uvSide = [&](uint32_t corner, uint32_t neighbour) {
        const uint32_t own = mesh.UvOf(corner);
        const uint32_t other = mesh.UvOf(neighbour);
        if (own == none || other == none) return Vector();
        const std::array<float, 2>& from = mesh.Uv(own);
        const std::array<float, 2>& to = mesh.Uv(other);
        return Vector(to[0] - from[0], to[1] - from[1], 0.0f);
    };
    // Each side of the curve begins with a marked half-edge that leaves the vertex, and ends with
    // one that enters it.
    Vector leaving;
    Vector leavingUv;
    for (uint32_t h = first; true;) {
        if (isMarked(h)) {
            leaving = mesh.Position(mesh.To(h)) - p;
            leavingUv = uvSide(h, EditableMesh::Next(h));
        }
        const uint32_t incoming = EditableMesh::Previous(h);
        if (isMarked(incoming)) {
            const Vector entering = p - mesh.Position(mesh.From(incoming));
            if (!IsWithin(entering, leaving, minCurveCosine) ||
                !IsWithin(-uvSide(h, incoming), leavingUv, minCurveCosine))
                return false;
        }
        h = mesh.Twin(incoming);
        if (h == none || h == first) return true;
    }
}

CollapsedEdge Collapse(EditableMesh& mesh,
                       uint32_t h,
                       uint32_t removed,
                       const EdgeLengths& lengths) {
    const uint32_t other = removed == mesh.From(h) ? mesh.To(h) : mesh.From(h);
    const Kind kind = mesh.KindOf(removed);
    if (kind == Kind::Corner) return {};
    const bool isFree = kind == Kind::Free && mesh.KindOf(other) == Kind::Free;
    const Vector p =
        isFree ? (mesh.Position(removed) + mesh.Position(other)) * 0.5f : mesh.Position(other);
    // The lengths are checked first, because that costs least and refuses most collapses.
    if (!KeepsLengths(mesh, removed, p, lengths.longest) ||
        (isFree && !KeepsLengths(mesh, other, p, lengths.longest)))
        return {};
    if (!mesh.CanCollapse(h, removed) || (kind == Kind::OnCurve && !IsSmoothCurve(mesh, removed)) ||
        !KeepsFaces(mesh, removed, other, p) || (isFree && !KeepsFaces(mesh, other, removed, p)))
        return {};
    mesh.CollapseEdge(h, removed, p, isFree ? 0.5f : 1.0f);
    return {other, removed, isFree};
}

/// Whether no other edge of the faces at an edge is longer.
bool IsLongestOfItsFaces(const EditableMesh& mesh, uint32_t halfEdge, float squaredLength) {
    for (const uint32_t side : {halfEdge, mesh.Twin(halfEdge)}) {
        if (side == none) continue;
        for (const uint32_t h : {EditableMesh::Next(side), EditableMesh::Previous(side)})
            if (SquaredLength(mesh.Position(mesh.To(h)) - mesh.Position(mesh.From(h))) >
                squaredLength)
                return false;
    }
    return true;
}

/// How far the number of neighbours of a vertex, changed by `change`, is from the regular one.
int ValenceError(const EditableMesh& mesh, uint32_t vertex, int change) {
    const int regular = mesh.IsBorderVertex(vertex) ? 4 : 6;
    const int error = static_cast<int>(mesh.Valence(vertex)) + change - regular;
    return error * error;
}

}  // namespace

Vector AreaNormalOf(const EditableMesh& mesh, uint32_t face) {
    return TriangleOf(mesh, face).AreaNormal();
}

Vector NormalAt(const EditableMesh& mesh, uint32_t vertex) {
    Vector sum;
    mesh.ForEachOutgoing(vertex,
                         [&](uint32_t h) { sum += AreaNormalOf(mesh, EditableMesh::FaceOf(h)); });
    return sum.Normalized();
}

float EdgeLength(const EditableMesh& mesh, uint32_t halfEdge) {
    return (mesh.Position(mesh.To(halfEdge)) - mesh.Position(mesh.From(halfEdge))).Length();
}

uint32_t SplitLongEdge(EditableMesh& mesh, uint32_t halfEdge, const EdgeLengths& lengths) {
    const Vector a = mesh.Position(mesh.From(halfEdge));
    const Vector b = mesh.Position(mesh.To(halfEdge));
    const float squared = SquaredLength(b - a);
    if (!(squared > lengths.longest * lengths.longest) || !mesh.CanSplit(halfEdge) ||
        !IsLongestOfItsFaces(mesh, halfEdge, squared))
        return none;
    const Vector middle = (a + b) * 0.5f;
    // At the resolution of single precision, an edge cannot be split.
    if (middle == a || middle == b) return none;
    return mesh.SplitEdge(halfEdge, middle);
}

CollapsedEdge CollapseShortEdge(EditableMesh& mesh, uint32_t halfEdge, const EdgeLengths& lengths) {
    const uint32_t a = mesh.From(halfEdge);
    const uint32_t b = mesh.To(halfEdge);
    if (!(SquaredLength(mesh.Position(b) - mesh.Position(a)) < lengths.shortest * lengths.shortest))
        return {};
    const CollapsedEdge collapsed = Collapse(mesh, halfEdge, a, lengths);
    return collapsed ? collapsed : Collapse(mesh, halfEdge, b, lengths);
}

bool FlipToImprove(EditableMesh& mesh, uint32_t halfEdge) {
    const uint32_t twin = mesh.Twin(halfEdge);
    if (twin == none || mesh.IsFeature(halfEdge)) return false;
    const uint32_t a = mesh.From(halfEdge);
    const uint32_t b = mesh.To(halfEdge);
    const uint32_t c = mesh.Opposite(halfEdge);
    const uint32_t d = mesh.Opposite(twin);
    int gain = 0;
    for (const uint32_t v : {a, b}) gain += ValenceError(mesh, v, 0) - ValenceError(mesh, v, -1);
    for (const uint32_t v : {c, d}) gain += ValenceError(mesh, v, 0) - ValenceError(mesh, v, 1);
    const Triangle f = TriangleOf(mesh, EditableMesh::FaceOf(halfEdge));
    const Triangle g = TriangleOf(mesh, EditableMesh::FaceOf(twin));
    const float before = std::min(f.Quality(), g.Quality());
    if (gain <= 0 && before >= thinQuality) return false;
    const Triangle newF{mesh.Position(c), mesh.Position(d), mesh.Position(b)};
    const Triangle newG{mesh.Position(d), mesh.Position(c), mesh.Position(a)};
    const float after = std::min(newF.Quality(), newG.Quality());
    const bool isThin = before < thinQuality && after > 2.0f * before;
    // Flipping for valences must not undo what flipping a thin face has improved.
    if (!isThin && (gain <= 0 || after < std::min(before, thinQuality))) return false;
    if (!(after > 0.0f) || (after < minQuality && after < before)) return false;
    const Vector normal = f.AreaNormal().Normalized() + g.AreaNormal().Normalized();
    if (!IsWithin(normal, newF.AreaNormal(), minFlipCosine) ||
        !IsWithin(normal, newG.AreaNormal(), minFlipCosine) || !mesh.CanFlip(halfEdge))
        return false;
    mesh.FlipEdge(halfEdge);
    return true;
}

Vector RelaxedPosition(const EditableMesh& mesh, uint32_t vertex) {
    Vector sum;
    uint32_t count = 0;
    mesh.ForEachNeighbour(vertex, [&](uint32_t n) {
        sum += mesh.Position(n);
        ++count;
    });
    const Vector p = mesh.Position(vertex);
    const Vector mean = sum * (1.0f / static_cast<float>(count));
    const Vector normal = NormalAt(mesh, vertex);
    return mean + normal * (normal | (p - mean));
}

NearbyPosition PositionNear(const EditableMesh& mesh, uint32_t vertex, const Vector& position) {
    const Vector old = mesh.Position(vertex);
    const Vector moved = position - old;
    NearbyPosition best;
    float bestInside = -1e30f;
    mesh.ForEachOutgoing(vertex, [&](uint32_t h) {
        const Vector b = mesh.Position(mesh.To(h)) - old;
        const Vector c = mesh.Position(mesh.Opposite(h)) - old;
        const float bb = b | b;
        const float bc = b | c;
        const float cc = c | c;
        const float determinant = bb * cc - bc * bc;
        if (!(determinant > 0.0f)) return;
        const float s = ((moved | b) * cc - (moved | c) * bc) / determinant;
        const float t = ((moved | c) * bb - (moved | b) * bc) / determinant;
        if (std::min(s, t) <= bestInside) return;
        bestInside = std::min(s, t);
        best = {h, s, t};
    });
    return best;
}

bool MoveFreeVertex(EditableMesh& mesh, uint32_t vertex, const Vector& position) {
    if (!KeepsFaces(mesh, vertex, none, position)) return false;
    // All corners of a free vertex have the same UV, or none has one.
    const uint32_t own = mesh.UvOf(mesh.HalfEdgeOf(vertex));
    if (own != none) {
        const NearbyPosition at = PositionNear(mesh, vertex, position);
        if (at.halfEdge != none) {
            const uint32_t uvB = mesh.UvOf(EditableMesh::Next(at.halfEdge));
            const uint32_t uvC = mesh.UvOf(EditableMesh::Previous(at.halfEdge));
            std::array<float, 2> moved = mesh.Uv(own);
            for (std::size_t i = 0; i < 2 && uvB != none && uvC != none; ++i) {
                const float u = mesh.Uv(own)[i];
                moved[i] = u + at.s * (mesh.Uv(uvB)[i] - u) + at.t * (mesh.Uv(uvC)[i] - u);
            }
            mesh.SetUv(own, moved);
        }
    }
    mesh.SetPosition(vertex, position);
    mesh.ClearSource(vertex);
    return true;
}

}  // namespace trovik
