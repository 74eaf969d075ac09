// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/formulas/WeightFormula.h"
#include "kernels/lanes/Lanes1.h"
#include "kernels/stages/PackedNormals.h"

namespace trovik {

/// Returns the facing factor, which depends on the angle between the surface normal and the view
/// direction: 1 below facingAngleStart, 0 beyond facingAngleStart + facingAngleRange. Reads the
/// camera for each vertex. The caller checks whether the facing falloff is on.
inline float FacingFactor(const SwiftStroke& brush, const StoredVertexInfo& record) {
    const auto normal = static_cast<Vector>(UnpackNormal(record.originalNormal));
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

/// Returns the weight in a whole-mesh pass, before the Wax scale.
TROVIK_FORCE_INLINE float WholeMeshWeight(const DabConstants& dab, const VertexState& v) {
    if (!dab.brush.wholeMeshFacing) return 1.0f;
    const auto normal = static_cast<Vector>(UnpackNormal(dab.normals[v.vertex]));
    const Vector& view = dab.brush.wholeMeshView;
    const float facing = (normal.y * view.y + normal.x * view.x) + normal.z * view.z;
    return facing < 0.0f ? 0.0f : facing;
}

/// Only pushing kernels use build-up. With a stamp, the stamp stage adds it.
constexpr BuildUp BuildUpOf(Family family, bool withStamp) {
    if (family != Family::Pushing) return BuildUp::None;
    return withStamp ? BuildUp::Damps : BuildUp::DampsAndGrows;
}

/// Tests the distance and computes the weight. The facing factor is computed even if it is not
/// used.
template <class Switches>
TROVIK_FORCE_INLINE StageResult ComputeWeight(const Switches& sw,
                                              const DabConstants& dab,
                                              VertexState& v) {
    float facing = 1.0f;
    if (dab.facingActive) facing = FacingFactor(dab.brush, *v.record);
    if (sw.withoutRadius) {
        v.weight = WholeMeshWeight(dab, v);
        if (dab.scaleAsWax) v.weight = v.weight * dab.waxScale;
        return StageResult::Continue;
    }

    const WeightTerms<F32x1> terms(dab);
    const HWVector toCenter = dab.center - v.measured;
    const F32x1 squared = {(toCenter | toCenter).First()};
    if (!squared.IsNotGreater(terms.radiusSquared)) return StageResult::OutOfReach;
    const BuildUp use = BuildUpOf(sw.family, sw.withStamp);
    v.weight =
        WeightWithin(terms, use, squared, dab.facingActive ? &facing : nullptr, &v.record->buildUp)
            .value;
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
    if (!sw.withFreeze) return;
    const float unfrozen = UnfrozenFraction(*v.vertexRecord);
    if (onVector)
        v.weightVector *= unfrozen;
    else
        v.weight = v.weight * unfrozen;
}

}  // namespace trovik
