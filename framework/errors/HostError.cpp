// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"

#include "framework/errors/PrintableText.h"

namespace trovik {

HostError::HostError(const std::string& message) : std::runtime_error(PrintableText(message)) {}

// Defined out of line, so that the type information exists only in this library and a catch clause
// in an executable or a plug-in matches it.
HostError::~HostError() = default;

}  // namespace trovik
