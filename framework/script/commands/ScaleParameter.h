// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/script/FieldFault.h"
#include "host/Vector.h"

#include <variant>

namespace trovik {

/// A scale: one factor for all axes, or one per axis.
using ScaleParameter = std::variant<float, Vector>;

/// \throw FieldFault at "/scale" if a factor is 0.
inline Vector ScaleOf(const ScaleParameter& given) {
    const float* factor = std::get_if<float>(&given);
    const Vector scale =
        factor != nullptr ? Vector(*factor, *factor, *factor) : std::get<Vector>(given);
    if (scale.x == 0.0f || scale.y == 0.0f || scale.z == 0.0f)
        throw FieldFault("/scale", "a scale must not be 0");
    return scale;
}

}  // namespace trovik
