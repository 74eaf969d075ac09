// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/VertexStep.h"

/// \file
/// The kernel of one patch, and how its 1024 specialisations reach the table. This header is
/// included by the instance files only; each of them makes 64 of the specialisations.
namespace trovik {

/// Runs the vertex step over a patch. A layer that refuses changes ends it at once; the grid then
/// still receives the present positions, since the patch's normals are made from it.
/// \return whether the dab reached a vertex of the patch.
template <KernelSwitches switches>
bool SwiftStroke::PatchKernel(uint32_t face) {
    const TVCrashReporterFlag flag(4, 65536);
    constexpr FixedSwitches<switches> sw;
    if (sw.throughLayer && layer != nullptr && !layer->Writable()) {
        ReadPatchPositions(PatchSlice(face));
        return false;
    }

    const bool mirroredStamp = WantsMirroredStampRead();
    const uint32_t count = BuildWorkList(face);
    DabConstants dab(*this, mirroredStamp);
    bool reached = false;
    for (const PatchVertexEntry* entry = patchVertexList; entry != patchVertexList + count; ++entry)
        reached |= StepVertex(sw, dab, *entry);
    dab.StoreBounds();
    strokeVertexCount += count;
    return reached;
}

}  // namespace trovik
