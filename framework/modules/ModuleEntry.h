// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

/// The only function that a module exports. It returns the interface of the module, as a pointer to
/// the abstract class that the library declares for it, or null if `libraryVersion` is not the
/// library version with which the module was built. The interface is valid until the process ends.
extern "C" TROVIK_API const void* trovikModule(const char* libraryVersion);
