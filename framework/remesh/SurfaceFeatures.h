// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/remesh/IsotropicRemeshing.h"
#include "framework/tessellation/EditableMesh.h"

namespace trovik {

/// The parts into which features divide a surface.
struct SurfaceParts {
    /// The part of each face of the source.
    std::vector<uint32_t> partOfFace;
    /// A face of each part.
    std::vector<uint32_t> firstFaces;
};

/// Marks the features of a mesh, in addition to its UV seams, fixes the vertices that must be kept,
/// and sets the tag of each triangle to the number of its part. Vertices that are masked by at
/// least half are kept. \param mesh  the faces of the source, with their numbers as tags. \throw
/// Cancelled. Cost: O(faces).
SurfaceParts MarkFeatures(EditableMesh& mesh,
                          SourceSurface& source,
                          const KeptFeatures& kept,
                          JobControl* job = nullptr);

}  // namespace trovik
