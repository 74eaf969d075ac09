// SPDX-License-Identifier: Apache-2.0
#include "framework/modules/Module.h"

#include "framework/errors/HostError.h"
#include "framework/io/ResourceFolders.h"
#include "framework/memory/AddressSpace.h"
#include "framework/modules/ModuleEntry.h"

#include <dlfcn.h>

namespace trovik {

namespace {

[[noreturn]] void ThrowModuleError(const std::string& path,
                                   const char* purpose,
                                   std::string reason) {
    // The loader's message starts with the path if the file itself is the problem.
    if (reason.rfind(path + ": ", 0) == 0) reason.erase(0, path.size() + 2);
    throw HostError("cannot load the module " + path + ", which is needed for " + purpose + ": " +
                    reason);
}

}  // namespace

std::string ModuleFolder() {
    const std::filesystem::path library = LibraryFolder();
    if (library.empty()) throw HostError("cannot find the module folder of this library");
    return (library / TROVIK_MODULE_DIR_FROM_LIBRARY).string();
}

const void* OpenModule(const std::string& path, const char* purpose) {
    // Functions are bound lazily, because a module's libraries call only a few of the functions
    // that they reference, and binding all of these functions would take most of the loading time.
    void* module = dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
    if (module == nullptr) ThrowModuleError(path, purpose, dlerror());
    const auto entry = reinterpret_cast<decltype(&trovikModule)>(dlsym(module, "trovikModule"));
    if (entry == nullptr) ThrowModuleError(path, purpose, "it is not a module of this library");
    const void* interface = entry(TROVIK_MODULE_VERSION);
    if (interface == nullptr)
        ThrowModuleError(path,
                         purpose,
                         "it was built for another version of this library, which has "
                         "version " TROVIK_MODULE_VERSION);
    return interface;
}

const void* OpenModule(const ModuleFile& module) {
    const std::string path = ModuleFolder() + "/" + module.name;
    if (!CanMapMemory(module.addressSpace))
        ThrowModuleError(path,
                         module.purpose,
                         "not enough memory; the process cannot map " +
                             std::to_string(module.addressSpace >> 20) + " MiB more");
    return OpenModule(path, module.purpose);
}

}  // namespace trovik
