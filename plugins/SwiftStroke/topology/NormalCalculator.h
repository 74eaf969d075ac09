// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Mesh.h"

namespace trovik {

/// Computes a vertex normal as the mean of the unit normals of the faces around the vertex. Each
/// neighbouring vertex is reported with one of these faces, and a face counts once for each
/// neighbour reported with it. Face areas have no effect. See Gouraud: "Continuous Shading of
/// Curved Surfaces" (1971).
class NormalCalculator final : public AdjacentVertexEnumerator {
public:
    explicit NormalCalculator(Mesh* askedMesh) : mesh(askedMesh) {}

    /// Computes the mean, which is not normalised: if the face normals differ, its length is less
    /// than 1. For a vertex without neighbours, all components are NaN.
    void Calculate(Vector& out, uint32_t vertex, uint32_t face);
    void Operator(uint32_t vertex, uint32_t face) override;

    uint32_t count = 0;
    Vector sum;
    Mesh* mesh;
};

}  // namespace trovik
