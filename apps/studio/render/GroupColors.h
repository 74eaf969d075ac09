// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QColor>
#include <QVector3D>

#include <cstdint>
#include <vector>

namespace trovik::studio {

/// The factor by which a face group multiplies the linear colour, 0 to 1 per channel. \param
/// displayGroup  as DisplayGroup returns; 0, for faces without a group, is white.
QVector3D GroupTint(uint8_t displayGroup);
/// GroupTint of all values.
const std::vector<QVector3D>& GroupTints();
/// The colour that represents a face group in lists.
QColor GroupColor(uint8_t displayGroup);

}  // namespace trovik::studio
