// SPDX-License-Identifier: Apache-2.0
#include "framework/trace/TraceFolder.h"

#include "framework/errors/HostError.h"

#include <cstdio>
#include <filesystem>
#include <vector>

namespace trovik {

namespace {

namespace fs = std::filesystem;

bool IsPartOfATrace(const std::string& name) {
    return name == traceLineFile || name == "arrays" || name == "before" || name == "after" ||
           name.rfind("dab-", 0) == 0 || name.rfind("change-", 0) == 0;
}

}  // namespace

void PrepareTraceFolder(const std::string& folder) {
    std::error_code failed;
    fs::create_directories(folder, failed);
    if (failed) throw HostError("cannot create the folder " + folder + ": " + failed.message());
    std::vector<fs::path> parts;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        if (!IsPartOfATrace(entry.path().filename().string())) {
            throw HostError(folder +
                            ": the folder contains files that are not part of a trace, such as " +
                            entry.path().filename().string());
        }
        parts.push_back(entry.path());
    }
    for (const fs::path& part : parts) {
        fs::remove_all(part, failed);
        if (failed) throw HostError("cannot remove " + part.string() + ": " + failed.message());
    }
    fs::create_directories(fs::path(folder) / "arrays", failed);
    if (failed)
        throw HostError("cannot create the folder " + folder + "/arrays: " + failed.message());
}

std::string NumberedTraceFolder(const char* kind, unsigned number) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "-%06u", number);
    return kind + std::string(digits);
}

}  // namespace trovik
