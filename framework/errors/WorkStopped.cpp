// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/WorkStopped.h"

namespace trovik {

WorkStopped::~WorkStopped() = default;

const char* WorkStopped::what() const noexcept { return "the work was stopped"; }

}  // namespace trovik
