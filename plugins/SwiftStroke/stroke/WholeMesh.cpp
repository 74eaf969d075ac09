// SPDX-License-Identifier: Apache-2.0
#include "brush/SwiftStroke.h"
#include "stroke/HasFaces.h"

namespace trovik {

void SwiftStroke::ApplyToWholeMesh(Mesh* wholeMeshTarget, float strength, bool byFacing) {
    const TVCrashReporterFlag flag(4, 0x8000);
    if (!HasFaces(wholeMeshTarget)) return;
    // This is the state after a call to BeginStroke with the Smooth modifier and without an active
    // tool.
    if (!strokeActive && falloffTable == nullptr && ActiveConfiguration() == nullptr) return;
    wholeMesh = true;
    wholeMeshFacing = byFacing;
    if (byFacing) {
        // One direction for the whole mesh: from the origin of the mesh to the camera.
        const Vector origin;
        Vector eyeWorld, eye;
        g_pKernel->Scene()->ActiveCamera()->Transformation()->LocalToWorld(
            &eyeWorld, &origin, 1.0f);
        wholeMeshTarget->Geometry()->Transformation()->WorldToLocal(&eye, &eyeWorld, 1.0f);
        eye.Normalize();
        wholeMeshView = eye;
    }
    AxisAlignedBoundingBox box;
    const SurfacePoint start(wholeMeshTarget, wholeMeshTarget->faceVertexIndices[0], 0);
    ApplyDab(start, Vector(), 0.0f, 1.0f, strength, box);
    wholeMesh = false;
}

}  // namespace trovik
