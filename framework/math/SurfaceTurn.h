// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"

#include <cmath>

namespace trovik {

/// How the surface around one vertex turned between two states: what takes the vertex's frame in
/// the first state to its frame in the second. The frame's third axis is the normal; the other two
/// are not chosen, since only the turn counts: it takes normal to normal by the shortest way, and
/// then about the normal by the angle that lays the edges before best over the edges after (least
/// squares over all edges of the ring, so that no edge is preferred and poles of any valence and
/// borders are treated alike).
///
/// A turn never changes a length, whatever the surface did. Where the normals of the ring's faces
/// cancel, as where two sheets lie on each other, the face that is largest in both states stands
/// for them, and noise does not; where there is no area, the turn is none; where the edges say
/// nothing about the angle, it is the shortest way alone.
///
/// Inside it calculates in double precision: squares of lengths then neither vanish nor overflow.
class SurfaceTurn {
    struct Double3 {
        double x = 0.0;
        double y = 0.0;
        double z = 0.0;
    };

public:
    /// The normals of a face of the ring in both states, of any length. One object serves all
    /// vertices of the face.
    struct Face {
        Face(const Vector& normalBefore, const Vector& normalAfter)
            : before(Double(normalBefore)),
              after(Double(normalAfter)),
              lengthBefore(std::sqrt(Dot(before, before))),
              lengthAfter(std::sqrt(Dot(after, after))) {}
        Double3 before;
        Double3 after;
        double lengthBefore;
        double lengthAfter;
    };
    /// What an edge of the ring adds.
    struct Edge {
        double across = 0.0;
        double along = 0.0;
        double size = 0.0;
    };

    void AddNormal(const Face& face) {
        normalBefore = Sum(normalBefore, face.before);
        normalAfter = Sum(normalAfter, face.after);
        areaBefore += face.lengthBefore;
        areaAfter += face.lengthAfter;
        if (!(face.lengthBefore * face.lengthAfter > largest)) return;
        largest = face.lengthBefore * face.lengthAfter;
        largestBefore = face.before;
        largestAfter = face.after;
    }
    /// To be called once, behind the last normal and ahead of the first edge.
    void CloseNormals();
    /// \param before, after  the edge from the vertex outwards, in both states.
    Edge EdgeOf(const Vector& before, const Vector& after) const {
        if (!turns) return {};
        const Double3 a = ByShortestWay(Double(before));
        const Double3 b = Double(after);
        return {Dot(normalAfter, Cross(a, b)),
                Dot(a, b) - Dot(normalAfter, a) * Dot(normalAfter, b),
                std::sqrt(Dot(a, a) * Dot(b, b))};
    }
    /// \param edge  by EdgeOf. An edge is added once for each face that it belongs to.
    void AddEdge(const Edge& edge) {
        across += edge.across;
        along += edge.along;
        size += edge.size;
    }
    /// To be called once, behind the last edge.
    void CloseEdges();

    /// The vector, turned with the surface.
    Vector Turned(const Vector& v) const;
    /// The unit normals, zero where there is none.
    Vector NormalBefore() const { return Single(normalBefore); }
    Vector NormalAfter() const { return Single(normalAfter); }

private:
    static Double3 Double(const Vector& v) { return {v.x, v.y, v.z}; }
    static Vector Single(const Double3& v) {
        return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
    }
    static double Dot(const Double3& a, const Double3& b) {
        return a.x * b.x + a.y * b.y + a.z * b.z;
    }
    static Double3 Cross(const Double3& a, const Double3& b) {
        return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
    }
    static Double3 Sum(const Double3& a, const Double3& b) {
        return {a.x + b.x, a.y + b.y, a.z + b.z};
    }
    static bool MakeUnit(Double3& v);
    Double3 ByShortestWay(const Double3& v) const {
        const double share = Dot(axis, v);
        if (1.0 + cosine <= oppositeMargin) {
            return {
                2.0 * share * axis.x - v.x, 2.0 * share * axis.y - v.y, 2.0 * share * axis.z - v.z};
        }
        const Double3 sideways = Cross(axis, v);
        const double f = share / (1.0 + cosine);
        return {v.x * cosine + sideways.x + axis.x * f,
                v.y * cosine + sideways.y + axis.y * f,
                v.z * cosine + sideways.z + axis.z * f};
    }

    /// Closer than this to opposite, the shortest way does not follow from the normals any more.
    static constexpr double oppositeMargin = 1e-6;

    Double3 normalBefore;
    Double3 normalAfter;
    /// Sums of the lengths of what was added, and the normals of the largest face.
    double areaBefore = 0.0;
    double areaAfter = 0.0;
    Double3 largestBefore;
    Double3 largestAfter;
    double largest = 0.0;
    /// Cross and dot product of the two normals.
    Double3 axis;
    double cosine = 1.0;
    /// Sums over the edges that tell the angle about the normal, and how large they could be.
    double across = 0.0;
    double along = 0.0;
    double size = 0.0;
    double turnSine = 0.0;
    double turnCosine = 1.0;
    bool turns = false;
};

/// How one point of a refined surface went from one state to another: what lies around it goes
/// along as if it hung on the surface.
struct SurfaceMove {
    Vector before;
    Vector after;
    /// Closed, or never begun where there is no surface to turn with.
    SurfaceTurn turn;

    /// Where a place goes. One without distance from the point goes exactly with it.
    Vector Carried(const Vector& place) const {
        const Vector detail = place - before;
        return detail == Vector() ? after : after + turn.Turned(detail);
    }
};

}  // namespace trovik
