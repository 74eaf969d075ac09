// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/Cancelled.h"

namespace trovik {

Cancelled::~Cancelled() = default;

const char* Cancelled::what() const noexcept { return "the operation was cancelled"; }

}  // namespace trovik
