// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/remesh/SurfaceFeatures.h"

namespace trovik {

class JobPhase;

/// Moves the free vertices of a mesh towards the means of their neighbours, along the old surface.
/// Borrows everything.
class SurfaceRelaxation {
public:
    SurfaceRelaxation(SourceSurface& ofSource, const SurfaceParts& itsParts)
        : source(ofSource), parts(itsParts) {}

    /// Relaxes all free vertices once, or only those without a source. Each vertex is moved to the
    /// nearest point of its part of the old surface; one that cannot move without making a face
    /// invalid is only projected. UVs are those of the old surface at that point, unless it is on
    /// the other side of a seam. \param phase  is polled. Runs on several threads; results do not
    /// depend on their number.
    void Relax(EditableMesh& mesh, bool onlyNew, JobPhase& phase);

private:
    void MoveAll(EditableMesh& mesh,
                 const std::vector<uint32_t>& vertices,
                 const std::vector<Vector>& points,
                 std::vector<uint32_t>& refused,
                 JobPhase& phase);
    void TakeUv(EditableMesh& mesh, uint32_t vertex, const NearestPoint& at);

    SourceSurface& source;
    const SurfaceParts& parts;
};

}  // namespace trovik
