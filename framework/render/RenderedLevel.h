// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelGeometry.h"
#include "framework/render/RenderImage.h"

#include <vector>

namespace trovik {

/// Returns the bound level of a geometry for rendering; borrows its arrays. Arrays that only some
/// shading modes need are not set; see RenderedLevel.
TROVIK_API RenderMesh VisibleLevel(const LevelGeometry& geometry);

/// The bound level of a geometry with all the data that a shading mode needs. Borrows the geometry.
///
/// Cost of construction: O(faces) for ShadingMode::Cavity (4 bytes per vertex) and Uv (8 bytes per
/// corner), constant for the other modes.
class TROVIK_API RenderedLevel {
public:
    /// \throw HostError for ShadingMode::Uv if the mesh has no texture coordinates.
    RenderedLevel(const LevelGeometry& geometry, ShadingMode shading);
    /// Uses the given positions and normals (mesh-local, one per vertex; borrowed) instead of the
    /// level's own, for example those before a stroke. Freeze amounts are not used.
    RenderedLevel(const LevelGeometry& geometry,
                  ShadingMode shading,
                  const std::vector<Vector>& positions,
                  const std::vector<PackedNormal>& normals);

    const RenderMesh& Mesh() const { return mesh; }

private:
    void AddCurvatures(const LevelGeometry& geometry);
    void AddUvs(const LevelGeometry& geometry);
    void AddFor(const LevelGeometry& geometry, ShadingMode shading);

    RenderMesh mesh;
    std::vector<float> curvatures;
    std::vector<float> cornerUvs;
};

}  // namespace trovik
