// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

/// The only function that a module exports. It returns the module's interface as a pointer to the
/// abstract class that the library declares for it. It returns null if the module was built for a
/// library version other than `libraryVersion`. The interface is valid until the process ends.
// The name is in lower case, like those of other exported C symbols.
// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" TROVIK_API const void* trovikModule(const char* libraryVersion);
