// SPDX-License-Identifier: Apache-2.0
#include "framework/script/commands/ViewArea.h"

#include "framework/mesh/SurfaceAttributes.h"
#include "framework/script/FieldFault.h"

#include <algorithm>

namespace trovik {

uint32_t NumberOf(const NameOrNone& wanted,
                  const std::vector<std::string>& names,
                  const std::string& kind) {
    const auto* name = std::get_if<std::string>(&wanted);
    if (name == nullptr) return SurfaceAttributes::none;
    const auto found = std::find(names.begin(), names.end(), *name);
    if (found != names.end()) return static_cast<uint32_t>(found - names.begin());
    std::string known;
    for (const std::string& one : names) known += (known.empty() ? "; there are " : ", ") + one;
    throw FieldFault("/" + kind, "the mesh has no " + kind + " \"" + *name + "\"" + known);
}

std::function<bool(const ViewPoint&)> InsideOf(
    const std::optional<std::array<float, 4>>& box,
    const std::optional<std::vector<std::array<float, 2>>>& lasso) {
    if (box) return [area = BoxOf(*box)](const ViewPoint& point) { return area.Holds(point); };
    std::vector<ViewPoint> corners;
    for (const auto& corner : *lasso) corners.push_back(PointOf(corner));
    return [area = ViewLasso(std::move(corners))](const ViewPoint& point) {
        return area.Holds(point);
    };
}

}  // namespace trovik
