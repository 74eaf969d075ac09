// SPDX-License-Identifier: Apache-2.0
#include "framework/strokes/MirrorMaps.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace trovik {

namespace {

/// Removes rounding errors from values near 0, 1 and -1.
float Cleaned(double value) {
    const double nearest = std::round(value);
    return static_cast<float>(std::fabs(value - nearest) < 1e-12 ? nearest : value);
}

Matrix Turn(int axis, int part, int parts) {
    const double angle = 2.0 * std::numbers::pi * part / parts;
    const float cosine = Cleaned(std::cos(angle));
    const float sine = Cleaned(std::sin(angle));
    const int a = (axis + 1) % 3;
    const int b = (axis + 2) % 3;
    Matrix turn;
    turn.m[a][a] = turn.m[b][b] = cosine;
    turn.m[a][b] = sine;
    turn.m[b][a] = -sine;
    return turn;
}

bool IsNear(const Matrix& a, const Matrix& b) {
    for (int i = 0; i < 16; ++i)
        if (std::fabs(a.m[i / 4][i % 4] - b.m[i / 4][i % 4]) > 1e-6f) return false;
    return true;
}

}  // namespace

std::vector<Matrix> MirrorMaps(const MirrorSetting& setting) {
    std::vector<Matrix> maps = {Matrix()};
    for (int part = 0; part < setting.copies; ++part) {
        for (unsigned chosen = 0; chosen < 1u << setting.planes.size(); ++chosen) {
            Matrix reflection;
            for (std::size_t k = 0; k < setting.planes.size(); ++k) {
                const int plane = setting.planes[k];
                if ((chosen >> k & 1u) != 0) reflection.m[plane][plane] = -1.0f;
            }
            const Matrix map =
                part == 0 ? reflection : reflection * Turn(setting.axis, part, setting.copies);
            // Different combinations of rotations and reflections can give the same map.
            const auto isKnown = [&map](const Matrix& one) { return IsNear(one, map); };
            if (std::none_of(maps.begin(), maps.end(), isKnown)) maps.push_back(map);
        }
    }
    maps.erase(maps.begin());
    return maps;
}

}  // namespace trovik
