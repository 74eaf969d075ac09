// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstddef>
#include <string>

/// \file
/// Modules: parts of this library that are built as separate files, because they link large
/// libraries that most programs never use. A module is loaded when it is first needed and stays
/// loaded until the process ends. Plug-ins differ from modules in that they add classes and a host
/// loads all of them.
namespace trovik {

/// Returns the folder of the modules: `trovik/modules` next to this library, with symbolic links
/// resolved.
/// \throw HostError if the system does not report the path of the library.
TROVIK_API std::string ModuleFolder();

/// Loads a module and returns its interface; see ModuleEntry.h. Never returns null. Further calls
/// for the same module return the same interface. Thread-safe.
/// \param path  the file of the module.
/// \param purpose  the feature that needs the module, for the error message, such as "images" or
/// "renders".
/// \throw HostError with the file and the reason: the file is missing, cannot be loaded (with the
/// loader's message), is not a module, or was built for another version of this library.
TROVIK_API const void* OpenModule(const std::string& path, const char* purpose);

/// Describes a module that the library may load.
struct ModuleFile {
    /// File name in ModuleFolder, for example "trovik-embree.so".
    const char* name;
    /// The feature that needs the module, for error messages.
    const char* purpose;
    /// Address space that loading may need, in bytes. It is checked before loading: the loader
    /// reports a failed mapping, but a library whose static initialisers run out of memory
    /// terminates the process.
    std::size_t addressSpace;
};

/// Loads a module of the library and returns its interface, like the other overload. The caller
/// stores the interface in a static variable, so that the module is loaded only once; if loading
/// throws, the next call tries again.
/// \throw HostError under the same conditions as the other overload, and if the process cannot map
/// that much address space.
TROVIK_API const void* OpenModule(const ModuleFile& module);

template <class Interface>
const Interface& ModuleInterface(const ModuleFile& module) {
    return *static_cast<const Interface*>(OpenModule(module));
}

}  // namespace trovik
