// SPDX-License-Identifier: Apache-2.0
#include "framework/display/DirtyPatches.h"

namespace trovik {

DirtyPatches::DirtyPatches(const PatchLayout& ofLayout)
    : layout(ofLayout), what(ofLayout.PatchCount(), uint8_t{0}) {}

void DirtyPatches::Add(const SurfaceChange& change) {
    if ((change.what & SurfaceChange::Topology) != 0) layoutChanged = true;
    if (layoutChanged || change.level != layout.Level() || change.what == 0) return;
    const auto add = [&](uint32_t patch) {
        if (what[patch] == 0) patches.push_back(patch);
        what[patch] |= change.what;
    };
    if (change.all) {
        for (uint32_t patch = 0; patch < layout.PatchCount(); ++patch) add(patch);
        return;
    }
    for (const uint32_t face : change.patches)
        layout.VisitPatchesUnder(change.patchLevel, face, add);
}

void DirtyPatches::Remove(std::span<const uint32_t> packed) {
    for (const uint32_t patch : packed) what[patch] = 0;
    std::erase_if(patches, [&](uint32_t patch) { return what[patch] == 0; });
}

void DirtyPatches::Clear() {
    for (const uint32_t patch : patches) what[patch] = 0;
    patches.clear();
}

}  // namespace trovik
