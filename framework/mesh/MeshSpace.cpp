// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/MeshSpace.h"

#include <string_view>

namespace trovik {

namespace {

struct Unit {
    std::string_view name;
    double meters;
};

constexpr Unit units[] = {{"mm", 0.001},
                          {"cm", 0.01},
                          {"dm", 0.1},
                          {"m", 1.0},
                          {"km", 1000.0},
                          {"in", 0.0254},
                          {"ft", 0.3048},
                          {"yd", 0.9144}};

}  // namespace

double MetersPerUnit(const std::string& name) {
    for (const Unit& unit : units) {
        if (unit.name == name) {
            return unit.meters;
        }
    }
    return 0.0;
}

std::string UnitName(double metersPerUnit) {
    for (const Unit& unit : units) {
        if (unit.meters == metersPerUnit) {
            return std::string(unit.name);
        }
    }
    return {};
}

UpAxis UpAxisOf(const std::string& name) {
    return name == "y" ? UpAxis::Y : name == "z" ? UpAxis::Z : UpAxis::Unknown;
}

std::string UpAxisName(UpAxis axis) {
    return axis == UpAxis::Y ? "y" : axis == UpAxis::Z ? "z" : "";
}

MeshSpace Overlaid(const MeshSpace& under, const MeshSpace& over) {
    return {over.metersPerUnit > 0.0 ? over.metersPerUnit : under.metersPerUnit,
            over.up != UpAxis::Unknown ? over.up : under.up};
}

SpaceConversion::SpaceConversion(const MeshSpace& from, const MeshSpace& to) {
    if (from.metersPerUnit > 0.0 && to.metersPerUnit > 0.0) {
        factor = static_cast<float>(from.metersPerUnit / to.metersPerUnit);
    }
    if (from.up == UpAxis::Z && to.up == UpAxis::Y) {
        turn = Turn::ZToY;
    } else if (from.up == UpAxis::Y && to.up == UpAxis::Z) {
        turn = Turn::YToZ;
    }
}

}  // namespace trovik
