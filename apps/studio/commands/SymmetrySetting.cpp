// SPDX-License-Identifier: Apache-2.0
#include "commands/SymmetrySetting.h"

#include "framework/math/SameBits.h"

#include <algorithm>

namespace trovik::studio {

namespace {

constexpr const char* axisNames[] = {"x", "y", "z"};

bool AreSame(const std::vector<Matrix>& left, const std::vector<Matrix>& right) {
    return left.size() == right.size() &&
           std::equal(left.begin(), left.end(), right.begin(), SameBits<Matrix>);
}

std::vector<int> PlanesOf(unsigned bits) {
    std::vector<int> planes;
    for (int axis = 0; axis < 3; ++axis)
        if ((bits >> axis & 1u) != 0) planes.push_back(axis);
    return planes;
}

}  // namespace

SymmetrySetting SymmetrySetting::Of(const DocumentState& state) {
    SymmetrySetting setting;
    setting.isTopological = state.symmetry.topological;
    const std::vector<Matrix>& maps = state.symmetry.maps;
    if (setting.isTopological || maps.empty()) return setting;
    // Coincident copies are omitted, so the number of copies cannot be computed from the number of
    // maps: n copies about the axis, with planes, give at most 8 n maps.
    for (int copies = 1; copies <= static_cast<int>(maps.size()) + 1; ++copies) {
        for (unsigned bits = 0; bits < 8; ++bits) {
            for (int axis = 0; axis < (copies == 1 ? 1 : 3); ++axis) {
                const MirrorSetting candidate{PlanesOf(bits), copies, copies == 1 ? 1 : axis};
                if (!AreSame(MirrorMaps(candidate), maps)) continue;
                setting.mirrors = candidate;
                return setting;
            }
        }
    }
    return setting;
}

bool SymmetrySetting::HasPlane(int axis) const {
    return !isTopological && std::count(mirrors.planes.begin(), mirrors.planes.end(), axis) > 0;
}

void SymmetrySetting::TogglePlane(int axis) {
    const bool had = HasPlane(axis);
    if (isTopological) mirrors = {};
    isTopological = false;
    std::erase(mirrors.planes, axis);
    if (!had) mirrors.planes.push_back(axis);
    std::sort(mirrors.planes.begin(), mirrors.planes.end());
}

nlohmann::json SymmetrySetting::ToJson() const {
    if (isTopological) return "topological";
    nlohmann::json planes = nlohmann::json::array();
    for (int axis : mirrors.planes) planes.push_back(axisNames[axis]);
    if (mirrors.copies <= 1) return planes;
    return {{"radial", mirrors.copies}, {"axis", axisNames[mirrors.axis]}, {"planes", planes}};
}

}  // namespace trovik::studio
