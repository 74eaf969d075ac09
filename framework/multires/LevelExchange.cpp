// SPDX-License-Identifier: Apache-2.0

/// \file Replacement of all levels of a geometry at once.
#include "framework/layers/LayerStack.h"
#include "framework/multires/LevelGeometry.h"

#include <utility>

namespace trovik {

LevelGeometry::AllLevels LevelGeometry::Adopt(LevelGeometry& other) {
    AllLevels adopted;
    adopted.levels = std::move(other.levels);
    other.levels.clear();
    for (const auto& level : adopted.levels) level->hierarchy = this;
    adopted.bound = other.bound;
    adopted.mirror = std::move(other.mirror);
    adopted.attributes = std::move(other.attributes);
    layers->Adopt(*other.layers);
    return adopted;
}

void LevelGeometry::ExchangeLevels(AllLevels& other) {
    RefuseInStroke("replacing the mesh");
    levels.swap(other.levels);
    std::swap(bound, other.bound);
    mirror.swap(other.mirror);
    std::swap(attributes, other.attributes);
    ReportAll(bound, SurfaceChange::Topology);
}

}  // namespace trovik
