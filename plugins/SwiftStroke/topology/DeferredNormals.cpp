// SPDX-License-Identifier: Apache-2.0
#include "brush/SwiftStroke.h"
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
        int integers[4];
        HWVector(normal).StoreNormalAsInt(integers);
        PackedNormal& packed = patchMesh->vertexNormals[pending.vertex];
        packed.x = static_cast<int16_t>(integers[3]);
        packed.y = static_cast<int16_t>(integers[2]);
        packed.z = static_cast<int16_t>(integers[1]);
    }
    deferredNormals.SetFill(0, true);
}

}  // namespace trovik
