// SPDX-License-Identifier: Apache-2.0
#include "topology/NormalCalculator.h"

namespace trovik {

void NormalCalculator::Calculate(Vector& out, uint32_t vertex, uint32_t face) {
    sum = Vector();
    count = 0;
    mesh->EnumerateAdjacentVertices(this, vertex, face);
    out = sum * (1.0f / static_cast<float>(count));
}

void NormalCalculator::Operator(uint32_t, uint32_t face) {
    Vector normal;
    mesh->FaceNormal(&normal, face);
    sum += normal.Normalized();
    ++count;
}

}  // namespace trovik
