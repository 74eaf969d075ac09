// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/remesh/SourceSurface.h"

namespace trovik {

/// Predicts the result of a remeshing that both splits and removes edges (RemeshMode::Both). The
/// predictions are within about 20 % if most of the surface is free; the other modes depend on the
/// lengths of the existing edges.
struct TROVIK_API RemeshEstimate {
    /// Area of the surface without the masked triangles, which are kept. Both areas and lengths are
    /// in world units; see SourceSurface::LocalLength for scales that differ between the axes.
    double freeArea = 0.0;
    uint64_t keptFaces = 0;

    /// The number of triangles for a target edge length, including the masked ones.
    uint64_t FacesFor(float edgeLength) const;
    /// The target edge length for a number of triangles.
    float LengthFor(uint64_t faces) const;
};

/// Cost: O(faces).
TROVIK_API RemeshEstimate EstimateRemesh(SourceSurface& source);

/// Predicts the number of faces, including the masked ones, after splitting all edges that are too
/// long for a target edge length, before any edge is removed. Splitting a triangle at its longest
/// edge until its edges are short enough gives about three faces per halving while it is thin, and
/// four after that; thin triangles therefore give many more faces than their area needs. The length
/// is in world units. Cost: O(faces).
TROVIK_API uint64_t FacesWhileSplitting(SourceSurface& source, float edgeLength);

}  // namespace trovik
