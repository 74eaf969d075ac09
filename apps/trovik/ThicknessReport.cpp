// SPDX-License-Identifier: Apache-2.0
#include "ThicknessReport.h"

#include <nlohmann/json.hpp>

#include <cstdio>

namespace trovik {

std::string TextOf(const ThicknessReport& report) {
    const ThinWalls& walls = report.walls;
    char text[200];
    if (walls.faces == 0) {
        std::snprintf(
            text, sizeof text, "no wall is thinner than %g", static_cast<double>(report.limit));
        return text;
    }
    std::snprintf(text,
                  sizeof text,
                  "%llu %s thinner than %g, with %.3g %% of the area; the thinnest wall is %.4g",
                  static_cast<unsigned long long>(walls.faces),
                  walls.faces == 1 ? "face is" : "faces are",
                  static_cast<double>(report.limit),
                  walls.totalArea > 0.0 ? 100.0 * walls.area / walls.totalArea : 0.0,
                  static_cast<double>(walls.thinnest.value_or(0.0f)));
    return text;
}

nlohmann::json JsonOf(const ThicknessReport& report) {
    const ThinWalls& walls = report.walls;
    nlohmann::json json = {{"limit", report.limit},
                           {"thinFaces", walls.faces},
                           {"thinArea", walls.area},
                           {"area", walls.totalArea},
                           {"thinnest", nullptr}};
    if (walls.thinnest) json["thinnest"] = *walls.thinnest;
    return json;
}

}  // namespace trovik
