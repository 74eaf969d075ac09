// SPDX-License-Identifier: Apache-2.0
#include "framework/modules/ModuleEntry.h"

const void* trovikModule(const char* libraryVersion) {
    static const char interface = 0;
    return libraryVersion == nullptr ? &interface : nullptr;
}
