// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"

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
class TROVIK_API SurfaceTurn {
public:
    /// Adds the normal of a face of the ring, of any length, in both states.
    void AddNormal(const Vector& before, const Vector& after);
    /// To be called once, behind the last normal and ahead of the first edge.
    void CloseNormals();
    /// Adds an edge of the ring, from the vertex outwards, in both states.
    void AddEdge(const Vector& before, const Vector& after);
    /// To be called once, behind the last edge.
    void CloseEdges();

    /// The vector, turned with the surface.
    Vector Turned(const Vector& v) const;

private:
    struct Double3 {
        double x = 0.0;
        double y = 0.0;
        double z = 0.0;
    };
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
    static bool MakeUnit(Double3& v);
    Double3 ByShortestWay(const Double3& v) const;

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
