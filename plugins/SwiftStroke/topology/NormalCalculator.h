// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Mesh.h"

namespace trovik {

/// Normal of a vertex as the mean of the unit normals of the faces in which its neighbours are met.
/// A face counts once for each neighbour reported in it; areas do not count.
class NormalCalculator final : public AdjacentVertexEnumerator {
public:
    explicit NormalCalculator(Mesh* askedMesh) : mesh(askedMesh) {}

    /// The mean, not normalised: where the faces disagree it is shorter than 1. A vertex without
    /// neighbours gives what the division by 0 gives.
    void Calculate(Vector& out, uint32_t vertex, uint32_t face);
    void Operator(uint32_t vertex, uint32_t face) override;

    uint32_t count = 0;
    Vector sum;
    Mesh* mesh;
};

}  // namespace trovik
