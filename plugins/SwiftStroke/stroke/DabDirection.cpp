// SPDX-License-Identifier: Apache-2.0
#include "brush/SwiftStroke.h"

namespace trovik {

namespace {

/// Values of BrushOperation::Direction.
enum Direction : int {
    DirectionSurfaceNormal = 0,
    DirectionAverage = 1,
    DirectionVertexNormal = 2,
    DirectionForward = 3,
    DirectionSideways = 4,
    DirectionAxisX = 5,
    DirectionAxisY = 6,
    DirectionAxisZ = 7,
    DirectionCamera = 8,
    DirectionCameraToo = 9,
    DirectionPlaneXY = 10,
    DirectionPlaneXZ = 11,
    DirectionPlaneYZ = 12,
};

constexpr float diagonal = 0.70710677f;

Vector AxisOf(int mode) {
    switch (mode) {
        case DirectionAxisX:
            return {1.0f, 0.0f, 0.0f};
        case DirectionAxisY:
            return {0.0f, 1.0f, 0.0f};
        case DirectionAxisZ:
            return {0.0f, 0.0f, 1.0f};
        case DirectionPlaneXY:
            return {diagonal, diagonal, 0.0f};
        case DirectionPlaneXZ:
            return {diagonal, 0.0f, diagonal};
        default:
            return {0.0f, diagonal, diagonal};
    }
}

Vector TowardsCamera(const SurfacePoint& hit) {
    const Vector origin;
    Vector eyeWorld, eye;
    g_pKernel->Scene()->ActiveCamera()->Transformation()->LocalToWorld(&eyeWorld, &origin, 1.0f);
    hit.mesh->Geometry()->Transformation()->WorldToLocal(&eye, &eyeWorld, 1.0f);
    return (eye - hit.position).Normalized();
}

bool FollowsStroke(int mode) { return mode == DirectionForward || mode == DirectionSideways; }

}  // namespace

bool SwiftStroke::PrepareDab(const SurfacePoint& hit) {
    // The plane determined earlier in this stroke is kept.
    if (isPlaneTool && planeDistances[mirrorPass] != 0.0f && !updatePlane.Value()) return true;

    followVertexNormal = false;
    int mode = DirectionSurfaceNormal;
    if (!wholeMesh) mode = Direction();
    if (isBulge) mode = DirectionVertexNormal;
    if (wholeMesh && !SmoothsLayer()) mode = DirectionVertexNormal;
    if (isSmear) mode = DirectionForward;

    // A stroke has no direction of travel before its second hit.
    if (FollowsStroke(mode) && PreviousPatchPosition() == Vector()) return false;
    if (mode >= DirectionSurfaceNormal && mode <= DirectionPlaneYZ) WriteDirection(mode, hit);
    if (mirrorPass != 0) MirrorDirection(mode, hit);
    if (!followVertexNormal) SetDirectionVector(directions[mirrorPass]);
    return true;
}

void SwiftStroke::WriteDirection(int mode, const SurfacePoint& hit) {
    Vector& direction = directions[mirrorPass];
    switch (mode) {
        case DirectionAverage:
            SamplePlane(hit);
            return;
        case DirectionVertexNormal:
            followVertexNormal = true;
            return;
        case DirectionSideways:
            direction = ((hit.position - PreviousPatchPosition()) & hit.normal).Normalized();
            planePoints[mirrorPass] = hit.position;
            return;
        case DirectionSurfaceNormal:
            direction = hit.normal;
            break;
        case DirectionForward:
            direction = (hit.position - PreviousPatchPosition()).Normalized();
            break;
        case DirectionCamera:
        case DirectionCameraToo:
            direction = TowardsCamera(hit);
            break;
        default:
            direction = AxisOf(mode);
            break;
    }
    planeDistances[mirrorPass] = hit.position | direction;
    planePoints[mirrorPass] = hit.position;
}

void SwiftStroke::MirrorDirection(int mode, const SurfacePoint& hit) {
    // For axis and view directions, the mirrored pass uses the mirror image of the main pass's
    // direction.
    if (mode >= DirectionAxisX && mode <= DirectionPlaneYZ) {
        const MirrorConfiguration& mirror = MirrorConfig();
        planePoints[1] = mirror.Transform(planePoints[0], 1.0f, &hit);
        directions[1] = mirror.Transform(directions[0], 0.0f, &hit).Normalized();
        planeDistances[1] = hit.position | directions[1];
    } else if (mode == DirectionSideways) {
        directions[1] = -directions[1];
    }
}

}  // namespace trovik
