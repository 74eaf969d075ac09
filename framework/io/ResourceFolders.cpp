// SPDX-License-Identifier: Apache-2.0
#include "framework/io/ResourceFolders.h"

#include <cstdlib>
#include <dlfcn.h>
#include <sstream>

namespace trovik {

namespace {

namespace fs = std::filesystem;

/// A variable whose address is always inside this library; that of an exported function may be
/// inside the executable instead.
const char insideThisLibrary = 0;

/// The folders that may contain the programs: those of an installed tree and of a build tree, and
/// the folder of the running program.
std::vector<fs::path> ProgramFolders() {
    std::vector<fs::path> folders;
    const fs::path library = LibraryFolder();
    if (!library.empty())
        folders = {library / TROVIK_INSTALLED_BIN_DIR_FROM_LIBRARY, library / "../bin"};
    std::error_code failed;
    const fs::path program = fs::read_symlink("/proc/self/exe", failed);
    if (!failed) folders.push_back(program.parent_path());
    return folders;
}

}  // namespace

fs::path LibraryFolder() {
    Dl_info library{};
    if (dladdr(&insideThisLibrary, &library) == 0) return {};
    std::error_code failed;
    const fs::path file = fs::canonical(library.dli_fname, failed);
    return file.parent_path();
}

std::vector<std::string> ResourceFolders(const char* variable,
                                         std::initializer_list<const char*> fromBin) {
    std::vector<std::string> folders;
    if (const char* path = std::getenv(variable); path != nullptr && *path != '\0') {
        std::istringstream parts(path);
        for (std::string folder; std::getline(parts, folder, ':');)
            if (!folder.empty()) folders.push_back(folder);
        return folders;
    }
    for (const fs::path& bin : ProgramFolders()) {
        for (const char* relative : fromBin) {
            std::error_code failed;
            const fs::path folder = (bin / relative).lexically_normal();
            if (fs::is_directory(folder, failed)) folders.push_back(folder.string());
        }
        if (!folders.empty()) break;
    }
    return folders;
}

}  // namespace trovik
