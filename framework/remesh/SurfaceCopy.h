// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/remesh/SurfaceReplacement.h"

namespace trovik {

/// Returns the current surface with itself as the source of all elements. \throw Cancelled.
NewSurface CopyOf(SourceSurface& source, JobControl* job = nullptr);

/// Adds a mesh with its own data (NewSurface::own) to a surface. The vertices and faces of the
/// surface keep their numbers. Vertices of the surface that have no data of their own get white
/// colours, if the mesh has colours, and faces get no group.
/// \param component  an oriented manifold that CheckPolygonMesh accepts.
/// \throw HostError if there would be more vertices, faces or corners than a mesh can have.
void AddComponent(NewSurface& surface, const PolygonMesh& component);

}  // namespace trovik
