// SPDX-License-Identifier: Apache-2.0
#include "framework/io/ResourceFolders.h"

#include <cstdlib>
#include <filesystem>
#include <sstream>

namespace trovik {

namespace fs = std::filesystem;

std::vector<std::string> ResourceFolders(const char* variable,
                                         std::initializer_list<const char*> nextToProgram) {
    std::vector<std::string> folders;
    if (const char* path = std::getenv(variable); path != nullptr && *path != '\0') {
        std::istringstream parts(path);
        for (std::string folder; std::getline(parts, folder, ':');)
            if (!folder.empty()) folders.push_back(folder);
        return folders;
    }
    std::error_code failed;
    const fs::path program = fs::read_symlink("/proc/self/exe", failed);
    if (failed) return folders;
    for (const char* relative : nextToProgram) {
        const fs::path folder = (program.parent_path() / relative).lexically_normal();
        if (fs::is_directory(folder, failed)) folders.push_back(folder.string());
    }
    return folders;
}

}  // namespace trovik
