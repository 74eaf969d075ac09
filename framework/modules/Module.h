// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstddef>
#include <string>

/// \file
/// Modules: parts of this library in files of their own, because they link large libraries that
/// most programs never use. A module is loaded when it is first needed and stays loaded until the
/// process ends. Plug-ins are different: they add classes, and hosts load them all.
namespace trovik {

/// The folder that holds the modules: `trovik/modules` next to this library, with symbolic links
/// resolved. \throw HostError if the system does not report where the library is.
TROVIK_API std::string ModuleFolder();

/// Loads a module and returns its interface; see ModuleEntry.h. Never null. Loading a module again
/// returns the same interface. Thread-safe.
/// \param path  the module's file.
/// \param purpose  what needs the module, for the error message: "images", "renders".
/// \throw HostError naming the file and the reason: missing, not loadable (with the loader's
/// reason), not a module, built for another version of this library.
TROVIK_API const void* OpenModule(const std::string& path, const char* purpose);

/// What the library has to know of one of its modules before it is loaded.
struct ModuleFile {
    /// In ModuleFolder, for example "trovik-embree.so".
    const char* name;
    /// What needs it, for error messages.
    const char* purpose;
    /// Address space that loading may take, in bytes. The loader reports what it cannot map, but
    /// libraries that run out of memory in their static initialisers end the process.
    std::size_t addressSpace;
};

/// Loads one of the library's modules and returns its interface, as OpenModule does. The caller
/// keeps it in a static variable, so that the module is loaded once; if loading throws, the next
/// call tries again. \throw HostError also if the process may not map that much address space.
TROVIK_API const void* OpenModule(const ModuleFile& module);

template <class Interface>
const Interface& ModuleInterface(const ModuleFile& module) {
    return *static_cast<const Interface*>(OpenModule(module));
}

}  // namespace trovik
