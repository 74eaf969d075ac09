// SPDX-License-Identifier: Apache-2.0
#include "framework/files/PlyVertexTargets.h"

#include "framework/errors/HostError.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace trovik {

PlyVertexTargets FindPlyVertexTargets(const std::string& path, const PlyElement& element) {
    constexpr std::pair<std::string_view, int> names[] = {{"x", 0},
                                                          {"y", 1},
                                                          {"z", 2},
                                                          {"nx", 3},
                                                          {"ny", 4},
                                                          {"nz", 5},
                                                          {"s", 6},
                                                          {"t", 7},
                                                          {"u", 6},
                                                          {"v", 7},
                                                          {"texture_u", 6},
                                                          {"texture_v", 7},
                                                          {"red", 8},
                                                          {"green", 9},
                                                          {"blue", 10},
                                                          {"alpha", 11}};
    PlyVertexTargets targets;
    std::array<bool, plyVertexNumbers> found = {};
    for (const PlyProperty& property : element.properties) {
        const auto* name =
            std::find_if(std::begin(names), std::end(names), [&property](const auto& entry) {
                return entry.first == property.name;
            });
        int slot = name == std::end(names) || property.isList ? -1 : name->second;
        // If several properties provide the same number, the first one is used.
        if (slot >= 0 && found[static_cast<std::size_t>(slot)]) {
            slot = -1;
        }
        targets.slots.push_back(slot);
        if (slot >= 0) {
            found[static_cast<std::size_t>(slot)] = true;
        }
    }
    for (std::size_t i = 0; i < plyFirstNormal; ++i) {
        if (!found[i]) {
            throw HostError(path + ": element 'vertex' has no scalar property '" +
                            std::string(names[i].first) + "'");
        }
    }
    const auto all = [&found](std::size_t first, std::size_t count) {
        return std::all_of(found.begin() + static_cast<std::ptrdiff_t>(first),
                           found.begin() + static_cast<std::ptrdiff_t>(first + count),
                           [](bool one) { return one; });
    };
    targets.hasNormals = all(plyFirstNormal, 3);
    targets.hasUvs = all(plyFirstUv, 2);
    targets.hasColors = all(plyFirstColor, 3);
    targets.hasAlpha = targets.hasColors && found[plyAlpha];
    return targets;
}

}  // namespace trovik
