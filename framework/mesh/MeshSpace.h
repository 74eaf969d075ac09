// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <array>
#include <string>

namespace trovik {

/// The axis that points up.
enum class UpAxis { Unknown, Y, Z };

/// The length of a coordinate unit and the axis that points up. Many file formats specify neither.
/// Both are then unknown, and coordinates are copied between files unchanged.
struct MeshSpace {
    /// 0 if unknown.
    double metersPerUnit = 0.0;
    UpAxis up = UpAxis::Unknown;

    bool operator==(const MeshSpace&) const = default;
};

/// Returns the length of the unit with this name: mm, cm, dm, m, km, in, ft or yd. Returns 0 for
/// any other name.
TROVIK_API double MetersPerUnit(const std::string& name);
/// Returns the name of the unit with this length, or an empty string if there is none.
TROVIK_API std::string UnitName(double metersPerUnit);
/// Converts "y" or "z"; returns Unknown for any other text.
TROVIK_API UpAxis UpAxisOf(const std::string& name);
/// Returns "y", "z", or an empty string for Unknown.
TROVIK_API std::string UpAxisName(UpAxis axis);

/// Returns `over`, with its unknown members replaced by those of `under`.
TROVIK_API MeshSpace Overlaid(const MeshSpace& under, const MeshSpace& over);

/// Converts coordinates from one space to another: scales them, then rotates them about x, so that
/// left and right are preserved. A property that is unknown in either space is ignored; if both are
/// ignored, coordinates stay bit-identical.
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
    /// Converts unit vectors, which are only rotated.
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
