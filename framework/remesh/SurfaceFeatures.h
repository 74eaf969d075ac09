// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/remesh/SourceSurface.h"
#include "framework/tessellation/EditableMesh.h"

namespace trovik {

/// Which properties of a surface are kept when its triangles change.
struct KeptFeatures {
    /// Keeps the positions of all vertices of open borders.
    bool borders = true;
    /// Keeps the borders between face groups, materials and smoothing groups.
    bool groups = true;
    /// Keeps edges between faces whose normals form a larger angle than this, in degrees.
    std::optional<float> creaseAngle = {};
};

/// The parts into which features divide a surface.
struct SurfaceParts {
    /// The part of each face of the source.
    std::vector<uint32_t> partOfFace;
    /// A face of each part.
    std::vector<uint32_t> firstFaces;
};

/// Marks the features of a mesh, in addition to its UV seams, fixes the vertices that must be kept,
/// and sets the tag of each triangle to the number of its part. Vertices that are masked by at least
/// half are kept.
/// \param mesh  the faces of the source, with their numbers as tags.
/// \throw Cancelled. Cost: O(faces).
SurfaceParts MarkFeatures(EditableMesh& mesh,
                          SourceSurface& source,
                          const KeptFeatures& kept,
                          JobControl* job = nullptr);

}  // namespace trovik
