// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "kernels/batch/AverageRows.h"
#include "kernels/batch/ComputeWeights.h"
#include "kernels/batch/MoveVertices.h"
#include "kernels/batch/PackNormals.h"

namespace trovik {

template <class Lanes, BuildUp buildUp>
constexpr void AddWeights(BatchStages& stages) {
    auto& functions = stages.weights[static_cast<unsigned>(buildUp)];
    functions[0] = &ComputeWeights<Lanes, buildUp, false>;
    functions[1] = &ComputeWeights<Lanes, buildUp, true>;
}

template <class Lanes, Way way>
constexpr void AddMovers(BatchStages& stages) {
    auto& movers = stages.movers[static_cast<unsigned>(way)];
    movers[0] = &MoveInAnyOrder<Lanes, way, false>;
    movers[1] = &MoveInAnyOrder<Lanes, way, true>;
}

template <class Lanes>
constexpr BatchStages StagesOfLanes() {
    BatchStages stages = {};
    AddWeights<Lanes, BuildUp::None>(stages);
    AddWeights<Lanes, BuildUp::Damps>(stages);
    AddWeights<Lanes, BuildUp::DampsAndGrows>(stages);
    AddMovers<Lanes, Way::PushAlong>(stages);
    AddMovers<Lanes, Way::PushByNormals>(stages);
    AddMovers<Lanes, Way::PlaneAlong>(stages);
    AddMovers<Lanes, Way::PlaneByNormals>(stages);
    AddMovers<Lanes, Way::Pull>(stages);
    stages.rowMovers[0] = &AverageRows<Lanes, false>;
    stages.rowMovers[1] = &AverageRows<Lanes, true>;
    stages.rowsTogether = RowGroup<Lanes>::rowCount;
    stages.packNormals = &PackNormals<Lanes>;
    return stages;
}

}  // namespace trovik
