// SPDX-License-Identifier: Apache-2.0
#include "kernels/batch/StagesOfLanes.h"
#include "kernels/lanes/Lanes4.h"

namespace trovik {

constinit const BatchStages batchStages4 = StagesOfLanes<Lanes4>();

}  // namespace trovik
