// SPDX-License-Identifier: Apache-2.0
#include "brush/SwiftStroke.h"
#include "kernels/stages/PackedNormals.h"
#include "topology/NormalCalculator.h"

namespace trovik {

// On a mesh without patches, normals are recomputed at the end of the dab. patchMesh and mesh are
// then the same level.
void SwiftStroke::FlushDeferredNormals() {
    const TVCrashReporterFlag flag(4, 0x10);
    NormalCalculator calculator(patchMesh);
    for (uint32_t i = 0; i < deferredNormals.fill; ++i) {
        const DeferredNormal& pending = deferredNormals.array[i];
        Vector normal;
        calculator.Calculate(normal, pending.vertex, pending.face);
        PackNormal(HWVector(normal), patchMesh->vertexNormals[pending.vertex]);
    }
    deferredNormals.SetFill(0, true);
}

}  // namespace trovik
