// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/stages/DabConstants.h"
#include "kernels/stages/RecordLookup.h"

namespace trovik {

/// Returns the facing factor, which depends on the angle between the surface normal and the view
/// direction: 1 below facingAngleStart, 0 beyond facingAngleStart + facingAngleRange. Reads the
/// camera for each vertex. The caller checks whether the facing falloff is on.
inline float FacingFactor(const SwiftStroke& brush, const StoredVertexInfo& record) {
    const Vector normal = UnpackNormal(record.originalNormal);
    const Vector origin;
    Vector eyeWorld, eye;
    g_pKernel->Scene()->ActiveCamera()->Transformation()->LocalToWorld(&eyeWorld, &origin, 1.0f);
    brush.mesh->Geometry()->Transformation()->WorldToLocal(&eye, &eyeWorld, 1.0f);
    Vector toEye =
        eye -
        Vector(record.originalPosition[0], record.originalPosition[1], record.originalPosition[2]);
    toEye.Normalize();
    const float cosine = (toEye.y * normal.y + toEye.x * normal.x) + toEye.z * normal.z;
    float angle = acosf(cosine) * 57.29578f;
    // Rounding can make the cosine exceed 1 if the surface faces the camera directly.
    if (std::isnan(angle)) angle = 0.0f;

    const float start = brush.facingAngleStart;
    const float range = brush.facingAngleRange;
    if (start > angle) return 1.0f;
    if (angle > start + range) return 0.0f;
    // With a range of 0, an angle equal to the start still counts as facing.
    if (range == 0.0f) return 1.0f;
    return 1.0f - (angle - start) / range;
}

/// Computes the weight from the distance: applies the distance test, the falloff, the Wax scale and
/// the build-up damping. The facing factor is computed even if it is not used.
template <class Switches>
TROVIK_FORCE_INLINE StageResult ComputeWeight(const Switches& sw,
                                              const DabConstants& dab,
                                              VertexState& v) {
    float facing = 1.0f;
    if (dab.facingActive) facing = FacingFactor(dab.brush, *v.record);

    if (!sw.withoutRadius) {
        const HWVector toCenter = dab.center - v.measured;
        const float distanceSquared = (toCenter | toCenter).First();
        if (distanceSquared > dab.radiusSquared) return StageResult::OutOfReach;
        const float distance = std::sqrt(distanceSquared);
        // The CPU converts NaN and values beyond the integer range to the most negative integer,
        // which exceeds every valid index when interpreted as unsigned.
        const auto index =
            static_cast<uint32_t>(_mm_cvttss_si32(_mm_set_ss(distance * dab.falloffScale)));
        v.weight = index > dab.falloffLast ? 0.0f : facing * dab.falloffTable[index];
    } else if (dab.brush.wholeMeshFacing) {
        const Vector normal = UnpackNormal(dab.normals[v.vertex]);
        const Vector& view = dab.brush.wholeMeshView;
        v.weight = (normal.y * view.y + normal.x * view.x) + normal.z * view.z;
        if (v.weight < 0.0f) v.weight = 0.0f;
    } else {
        v.weight = 1.0f;
    }

    if (dab.scaleAsWax) v.weight = v.weight * dab.waxScale;

    if (sw.family == Family::Pushing && !sw.withoutRadius) {
        v.weight = v.weight * dab.buildUpRateCubed * (1.0f - v.record->buildUp);
        if (!sw.withStamp) v.record->buildUp = v.weight * dab.dabPressure + v.record->buildUp;
    }
    return StageResult::Continue;
}

/// Applies the dab strength and the mask weight to the weight or, for a vector stamp, to its three
/// channels.
template <class Switches>
TROVIK_FORCE_INLINE void ApplyStrength(const Switches& sw,
                                       const DabConstants& dab,
                                       VertexState& v) {
    const bool onVector = sw.withStamp && dab.brush.stampIsVector;
    if (onVector)
        v.weightVector *= dab.dabStrength;
    else
        v.weight = v.weight * dab.dabStrength;
    if (sw.withFreeze) {
        const float freeze =
            static_cast<float>(v.vertexRecord->freeze & freezeAmountMask) * freezeAmountToWeight;
        if (onVector)
            v.weightVector *= 1.0f - freeze;
        else
            v.weight = v.weight * (1.0f - freeze);
    }
}

}  // namespace trovik
