// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/DabWeights.h"

#include "framework/mesh/SurfaceNormal.h"

#include <algorithm>
#include <cmath>

namespace trovik {

float FalloffAt(const Store<float>& samples, float distance, float radius) {
    if (samples.fill == 0) return 1.0f;
    const float sampleIndex = distance / radius * static_cast<float>(samples.fill);
    const uint32_t last = samples.fill - 1;
    const auto index =
        sampleIndex < static_cast<float>(last) ? static_cast<uint32_t>(sampleIndex) : last;
    return samples.array[index];
}

FacingFactors::FacingFactors(const BrushOperation& brush, const LevelMesh& ofLevel, bool used)
    : level(ofLevel), isUsed(used), start(brush.facingAngleStart), range(brush.facingAngleRange) {
    if (!isUsed) return;
    const Vector origin;
    Vector world;
    g_pKernel->Scene()->ActiveCamera()->Transformation()->LocalToWorld(&world, &origin, 1.0f);
    GeometryOf(level).Transform().WorldToLocal(&eye, &world, 1.0f);
}

float FacingFactors::At(uint32_t vertex) const {
    if (!isUsed) return 1.0f;
    const Vector normal = Unpacked(level.vertexNormals.array[vertex]).Normalized();
    const Vector toEye = (eye - level.Position(vertex)).Normalized();
    const float cosine = (toEye.x * normal.x + toEye.y * normal.y) + toEye.z * normal.z;
    const float angle = std::acos(std::clamp(cosine, -1.0f, 1.0f)) * 57.29578f;
    if (angle < start) return 1.0f;
    if (angle > start + range) return 0.0f;
    return range > 0.0f ? 1.0f - (angle - start) / range : 1.0f;
}

}  // namespace trovik
