// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/remesh/SurfaceReplacement.h"

namespace trovik {

/// Splits each face with n corners into n quads around its centre, without changing the shape: the
/// new vertices are at the middle of the edges and at the centres of the faces. Sources and
/// attributes are kept; a new vertex is `own` if one of its faces is. \throw Cancelled.
void SplitIntoFlatQuads(NewSurface& surface, JobControl* job = nullptr);

/// Splits faces with more than three corners into fans of triangles. Attributes are kept.
/// \throw Cancelled.
void SplitIntoTriangles(PolygonMesh& mesh, JobControl* job = nullptr);

}  // namespace trovik
