// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace trovik::python {

/// Throws an exception of the Python module `trovik._errors`. Requires the GIL.
[[noreturn]] void Raise(const char* type, const std::string& message);

/// Registers the conversion of the host library's exceptions to those of `trovik._errors`.
void RegisterErrors();

}  // namespace trovik::python
