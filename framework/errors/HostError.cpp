// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"

#include "framework/errors/PrintableText.h"

namespace trovik {

HostError::HostError(const std::string& message) : std::runtime_error(PrintableText(message)) {}

// Out of line, so that the type's identity lives in this library alone and a catch in an
// executable or a plug-in recognises it.
HostError::~HostError() = default;

}  // namespace trovik
