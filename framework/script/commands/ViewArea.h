// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/freeze/FreezeInView.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

/// \file Parameters, shared by several commands, for selecting by viewport area or by name.
namespace trovik {

/// The name of a group or material; null selects faces without one.
using NameOrNone = std::variant<std::string, std::nullptr_t>;

/// Returns the index of a group or material name in the mesh's list, or SurfaceAttributes::none for
/// null.
/// \param kind  "group" or "material": the name of the parameter, also used in messages.
/// \throw FieldFault that lists the existing names if there is no such name.
uint32_t NumberOf(const NameOrNone& wanted,
                  const std::vector<std::string>& names,
                  const std::string& kind);

inline ViewPoint PointOf(const std::array<float, 2>& numbers) { return {numbers[0], numbers[1]}; }
inline ViewBox BoxOf(const std::array<float, 4>& numbers) {
    return {{numbers[0], numbers[1]}, {numbers[2], numbers[3]}};
}

/// Returns a predicate for viewport points in pixels: it is true inside the box or, without a box,
/// inside the lasso. One of the two must be given.
std::function<bool(const ViewPoint&)> InsideOf(
    const std::optional<std::array<float, 4>>& box,
    const std::optional<std::vector<std::array<float, 2>>>& lasso);

}  // namespace trovik
