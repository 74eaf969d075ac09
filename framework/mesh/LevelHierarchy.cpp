// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/LevelHierarchy.h"

#include "framework/mesh/ChangedPatches.h"

#include <algorithm>

namespace trovik {

void LevelHierarchy::AddObserver(GeometryObserver& observer, ObserverOrder order) {
    if (std::find(observers.begin(), observers.end(), &observer) != observers.end()) return;
    if (order == ObserverOrder::First)
        observers.insert(observers.begin() + firstObservers++, &observer);
    else
        observers.push_back(&observer);
}

void LevelHierarchy::RemoveObserver(GeometryObserver& observer) {
    const auto found = std::find(observers.begin(), observers.end(), &observer);
    if (found == observers.end()) return;
    if (found - observers.begin() < firstObservers) --firstObservers;
    observers.erase(found);
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

void LevelHierarchy::ReportTopology(std::span<const uint32_t> faces) {
    constexpr uint8_t everything = SurfaceChange::Topology | SurfaceChange::Positions |
                                   SurfaceChange::Normals | SurfaceChange::Mask |
                                   SurfaceChange::Visibility;
    if (!observers.empty()) Report({0, everything, 0, faces, false});
}

void LevelHierarchy::Report(const SurfaceChange& change) const {
    for (GeometryObserver* observer : observers) observer->SurfaceChanged(change);
}

}  // namespace trovik
