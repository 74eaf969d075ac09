// SPDX-License-Identifier: Apache-2.0
#include "host/BrushOperation.h"

#include <memory>
#include <vector>

namespace trovik {

namespace {

// Never destroyed: brushes refer to their catalogue entries until the process ends.
std::vector<std::unique_ptr<BrushConfiguration>>& Catalogue() {
    static auto* rows = new std::vector<std::unique_ptr<BrushConfiguration>>;
    return *rows;
}

}  // namespace

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

void BrushOperation::AddConfiguration(BrushConfiguration* configuration) {
    Catalogue().emplace_back(configuration);
}
BrushConfiguration* BrushOperation::Configuration(uint32_t index) {
    return index < Catalogue().size() ? Catalogue()[index].get() : nullptr;
}
uint32_t BrushOperation::ConfigurationCount() { return static_cast<uint32_t>(Catalogue().size()); }

}  // namespace trovik
