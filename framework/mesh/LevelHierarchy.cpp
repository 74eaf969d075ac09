// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/LevelHierarchy.h"

#include "framework/mesh/ChangedPatches.h"

#include <algorithm>

namespace trovik {

void LevelHierarchy::AddObserver(GeometryObserver& observer) {
    if (std::find(observers.begin(), observers.end(), &observer) == observers.end())
        observers.push_back(&observer);
}

void LevelHierarchy::RemoveObserver(GeometryObserver& observer) {
    std::erase(observers, &observer);
}

void LevelHierarchy::ReportVertices(uint32_t level,
                                    uint8_t what,
                                    const std::vector<uint32_t>& vertices) {
    if (observers.empty() || vertices.empty()) return;
    const uint32_t patchLevel = ReportedPatchLevel(level);
    const std::vector<uint32_t> patches = PatchesAt(*levels[level], patchLevel, vertices);
    ReportPatches(level, what, patchLevel, patches);
}

void LevelHierarchy::ReportPatches(uint32_t level,
                                   uint8_t what,
                                   uint32_t patchLevel,
                                   std::span<const uint32_t> patches) {
    if (observers.empty() || patches.empty()) return;
    Report({level, what, patchLevel, patches, false});
}

void LevelHierarchy::ReportAll(uint32_t level, uint8_t what) {
    if (observers.empty()) return;
    Report({level, what, 0, {}, true});
}

void LevelHierarchy::Report(const SurfaceChange& change) const {
    for (GeometryObserver* observer : observers) observer->SurfaceChanged(change);
}

}  // namespace trovik
