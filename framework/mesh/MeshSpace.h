// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <array>
#include <string>

namespace trovik {

/// The axis that points up.
enum class UpAxis { Unknown, Y, Z };

/// What a mesh's numbers mean: how long a unit is, and which axis points up. Many formats do not
/// tell; then both are unknown, and numbers pass from file to file as they are.
struct MeshSpace {
    /// 0: unknown.
    double metersPerUnit = 0.0;
    UpAxis up = UpAxis::Unknown;

    bool operator==(const MeshSpace&) const = default;
};

/// The length of a unit by its name: mm, cm, dm, m, km, in, ft, yd. \return 0 for any other name.
TROVIK_API double MetersPerUnit(const std::string& name);
/// The name of a unit of this length; empty where it has none.
TROVIK_API std::string UnitName(double metersPerUnit);
/// "y" or "z"; Unknown for any other text.
TROVIK_API UpAxis UpAxisOf(const std::string& name);
/// "y", "z", or empty.
TROVIK_API std::string UpAxisName(UpAxis axis);

/// `over` where it knows, `under` where it does not.
TROVIK_API MeshSpace Overlaid(const MeshSpace& under, const MeshSpace& over);

/// How numbers of one space become those of another: first scaled, then turned about x, so that
/// left and right stay. What either side does not know stays as it is, to the bit.
class TROVIK_API SpaceConversion {
public:
    SpaceConversion() = default;
    SpaceConversion(const MeshSpace& from, const MeshSpace& to);

    bool IsIdentity() const { return factor == 1.0f && turn == Turn::None; }
    std::array<float, 3> Point(const std::array<float, 3>& p) const {
        if (factor == 1.0f) {
            return Direction(p);
        }
        return Direction({p[0] * factor, p[1] * factor, p[2] * factor});
    }
    /// Of unit vectors, which are turned only.
    std::array<float, 3> Direction(const std::array<float, 3>& d) const {
        switch (turn) {
            case Turn::ZToY:
                return {d[0], d[2], -d[1]};
            case Turn::YToZ:
                return {d[0], -d[2], d[1]};
            case Turn::None:
                break;
        }
        return d;
    }

private:
    enum class Turn { None, ZToY, YToZ };
    float factor = 1.0f;
    Turn turn = Turn::None;
};

}  // namespace trovik
