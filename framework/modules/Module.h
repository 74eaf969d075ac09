// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

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

/// The interface of a module in ModuleFolder. The caller keeps it in a static variable, so that the
/// module is loaded once; if loading throws, the next call tries again.
/// \param fileName  for example "trovik-embree.so".
template <class Interface>
const Interface& ModuleInterface(const char* fileName, const char* purpose) {
    return *static_cast<const Interface*>(OpenModule(ModuleFolder() + "/" + fileName, purpose));
}

}  // namespace trovik
