// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelGeometry.h"
#include "framework/render/Picture.h"

#include <vector>

namespace trovik {

/// The visible faces of a geometry's bound level in world space; borrows its arrays. Without the
/// arrays that single shading modes need: see RenderedLevel.
TROVIK_API PictureMesh ShownLevel(const LevelGeometry& geometry);

/// The bound level of a geometry with all that a shading mode shows of it. Borrows the geometry.
///
/// Cost of construction: O(faces) for ShadingMode::Cavity (4 bytes for each vertex) and Uv (8 bytes
/// for each corner of a face), constant for the others.
class TROVIK_API RenderedLevel {
public:
    /// \throw HostError for ShadingMode::Uv when the mesh has no texture coordinates.
    RenderedLevel(const LevelGeometry& geometry, ShadingMode shading);
    /// The level with other positions and normals (mesh-local, one for each vertex; borrowed), such
    /// as those before a stroke, and without freeze.
    RenderedLevel(const LevelGeometry& geometry,
                  ShadingMode shading,
                  const std::vector<Vector>& positions,
                  const std::vector<PackedNormal>& normals);

    const PictureMesh& Mesh() const { return mesh; }

private:
    void AddBends(const LevelGeometry& geometry);
    void AddUvs(const LevelGeometry& geometry);
    void AddFor(const LevelGeometry& geometry, ShadingMode shading);

    PictureMesh mesh;
    std::vector<float> bends;
    std::vector<float> cornerUvs;
};

}  // namespace trovik
