// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelGeometry.h"
#include "host/BrushOperation.h"

namespace trovik {

/// Returns the sample of a falloff curve at a distance from the dab centre; 1 if there are no
/// samples.
/// \param samples  from the centre to the rim. \param distance, radius  in the same unit.
TROVIK_API float FalloffAt(const Store<float>& samples, float distance, float radius);

/// The facing factors of vertices for one dab of a host brush: 1 where the angle between the vertex
/// normal and the direction to the active camera is below the brush's start angle, decreasing
/// linearly to 0 beyond the start angle plus the range, as for sculpting.
class TROVIK_API FacingFactors {
public:
    /// Borrows the level. Reads the angles of the brush and the position of the active camera.
    /// \param used  if false, all factors are 1.
    FacingFactors(const BrushOperation& brush, const LevelMesh& ofLevel, bool used);
    float At(uint32_t vertex) const;

private:
    const LevelMesh& level;
    bool isUsed;
    float start;
    float range;
    /// Position of the camera, mesh-local.
    Vector eye;
};

}  // namespace trovik
