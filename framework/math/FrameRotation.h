// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"

#include <cmath>

namespace trovik {

/// The rotation of the surface around one vertex between two states. It maps the frame of the
/// vertex in the first state to its frame in the second. The third axis of the frame is the normal.
/// The other two axes need not be chosen, because only the rotation matters. The rotation consists
/// of the shortest rotation from normal to normal, followed by a rotation about the normal by the
/// angle that best aligns the old edges with the new ones. The angle is a least-squares fit to all
/// edges of the vertex, so no edge is preferred, and borders and poles of any valence are handled
/// in the same way.
///
/// The rotation preserves lengths under any deformation of the surface. If the normals of the faces
/// cancel, for example where two coincident parts of the surface face each other, the face that is
/// largest in both states is used instead, so that noise has no effect. If all faces are
/// degenerate, the rotation is the identity. If the edges do not determine an angle, only the
/// shortest rotation is used.
///
/// All computations are in double precision, so squared lengths neither underflow nor overflow. The
/// shortest rotation is computed as in Möller, Hughes: "Efficiently Building a Matrix to Rotate One
/// Vector to Another" (1999), and the rotation about the normal is computed by the formula of
/// Rodrigues: "Des lois géométriques qui régissent les déplacements d'un système solide dans
/// l'espace" (1840).
class TROVIK_API FrameRotation {
    struct Double3 {
        double x = 0.0;
        double y = 0.0;
        double z = 0.0;
    };

public:
    /// The normals of an adjacent face in both states, of any length. One object can be used for
    /// all vertices of the face.
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
    /// The contribution of one edge at the vertex.
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
    /// Called once, after the last normal and before the first edge.
    void CloseNormals();
    /// \param before, after  the edge vector, from the vertex outwards, in both states.
    Edge EdgeOf(const Vector& before, const Vector& after) const {
        if (!isDefined) return {};
        const Double3 a = ShortestRotationOf(Double(before));
        const Double3 b = Double(after);
        return {Dot(normalAfter, Cross(a, b)),
                Dot(a, b) - Dot(normalAfter, a) * Dot(normalAfter, b),
                std::sqrt(Dot(a, a) * Dot(b, b))};
    }
    /// \param edge  the result of EdgeOf. An edge is added once for each of its faces.
    void AddEdge(const Edge& edge) {
        across += edge.across;
        along += edge.along;
        size += edge.size;
    }
    /// Called once, after the last edge.
    void CloseEdges();

    /// Returns the rotated vector.
    Vector Turned(const Vector& v) const;

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
    Double3 ShortestRotationOf(const Double3& v) const {
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

    /// If 1 plus the cosine of the angle between the normals is at most this, the normals are
    /// nearly opposite and do not determine the shortest rotation.
    static constexpr double oppositeMargin = 1e-6;

    Double3 normalBefore;
    Double3 normalAfter;
    /// The sum of the lengths of the added normals, and the normals of the largest face.
    double areaBefore = 0.0;
    double areaAfter = 0.0;
    Double3 largestBefore;
    Double3 largestAfter;
    double largest = 0.0;
    /// Cross and dot product of the two normals.
    Double3 axis;
    double cosine = 1.0;
    /// Sums over the edges that determine the angle about the normal, and an upper bound on those
    /// sums.
    double across = 0.0;
    double along = 0.0;
    double size = 0.0;
    double rotationSine = 0.0;
    double rotationCosine = 1.0;
    bool isDefined = false;
};

/// The motion of one point of a refined surface between two states. Nearby points move as if they
/// were attached to the surface.
struct SurfaceMove {
    Vector before;
    Vector after;
    /// A rotation for which CloseEdges has been called, or the identity if there is no surface.
    FrameRotation turn;

    /// Returns the new position of `position`. A position that coincides with the point moves
    /// exactly with it.
    Vector Carried(const Vector& position) const {
        const Vector detail = position - before;
        return detail == Vector() ? after : after + turn.Turned(detail);
    }
};

}  // namespace trovik
