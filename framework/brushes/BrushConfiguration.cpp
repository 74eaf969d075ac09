// SPDX-License-Identifier: Apache-2.0
#include "host/BrushOperation.h"

namespace trovik {

bool CheckableFloatArray::s_bActive = false;

BrushConfiguration::BrushConfiguration(const ClassDesc* ownerClass,
                                       uint32_t number,
                                       const QString& rowName,
                                       const QString& shownName,
                                       PredefinedCategory rowCategory,
                                       const QString& tip,
                                       int rowFlags)
    : brushClass(ownerClass),
      id(number),
      name(rowName),
      displayName(shownName),
      category(rowCategory),
      toolTip(tip),
      flags(rowFlags) {}
BrushConfiguration::~BrushConfiguration() = default;

StampConfiguration::StampConfiguration() = default;
StampConfiguration::~StampConfiguration() = default;

Vector MirrorConfiguration::Transform(const Vector& p, float w, const SurfacePoint*) const {
    return pointMap.AffineTransform(p, w);
}

}  // namespace trovik
