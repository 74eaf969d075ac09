// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"

#include "framework/errors/PrintableText.h"

namespace trovik {

HostError::HostError(const std::string& message) : std::runtime_error(PrintableText(message)) {}

// Defined out of line so that only this library contains the type information. Otherwise, catch
// clauses in executables and plug-ins might not match.
HostError::~HostError() = default;

}  // namespace trovik
