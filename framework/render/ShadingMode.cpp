// SPDX-License-Identifier: Apache-2.0
#include "framework/render/ShadingMode.h"

#include "framework/errors/HostError.h"

#include <algorithm>

namespace trovik {

const std::vector<std::string>& ShadingModeNames() {
    static const std::vector<std::string> names = {
        "clay", "matcap", "cavity", "flat", "normals", "uv"};
    return names;
}

ShadingMode ShadingModeOf(const std::string& name) {
    const auto& names = ShadingModeNames();
    const auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end()) throw HostError("unknown shading mode \"" + name + "\"");
    return static_cast<ShadingMode>(found - names.begin());
}

}  // namespace trovik
