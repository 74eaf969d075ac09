// SPDX-License-Identifier: Apache-2.0
#include "framework/memory/FreeMemory.h"

#include "framework/errors/HostError.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <limits>
#include <optional>
#include <sys/resource.h>
#include <unistd.h>

namespace trovik {

namespace {

namespace fs = std::filesystem;

constexpr uint64_t unlimited = std::numeric_limits<uint64_t>::max();

uint64_t Difference(uint64_t limit, uint64_t used) { return limit > used ? limit - used : 0; }

/// Returns the single number that a file contains, or nothing if the file is missing or contains
/// "max".
std::optional<uint64_t> NumberIn(const fs::path& path) {
    std::ifstream file(path);
    uint64_t number = 0;
    if (file >> number) return number;
    return std::nullopt;
}

/// Returns the number after a key, in the format of /proc/meminfo ("MemAvailable:") and memory.stat
/// ("inactive_file"); nothing if the file or the key is missing.
std::optional<uint64_t> FieldIn(const fs::path& path, const std::string& key) {
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (line.rfind(key, 0) != 0) continue;
        try {
            return std::stoull(line.substr(key.size()));
        } catch (const std::exception&) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

/// Replaces `least` if fewer bytes are left under this limit.
void Apply(FreeMemory& least, uint64_t bytes, const char* limit) {
    if (bytes < least.bytes) least = {bytes, limit};
}

/// The names of the corresponding files in the two versions of control groups.
struct GroupFiles {
    const char* folder;
    const char* limit;
    const char* usage;
    const char* droppable[2];
};

constexpr GroupFiles versionOne = {"sys/fs/cgroup/memory",
                                   "memory.limit_in_bytes",
                                   "memory.usage_in_bytes",
                                   {"total_inactive_file ", "total_active_file "}};
constexpr GroupFiles versionTwo = {
    "sys/fs/cgroup", "memory.max", "memory.current", {"inactive_file ", "active_file "}};

/// Applies the limits of a group and of all its ancestors. In a container, the group itself may
/// appear as the root although /proc reports a longer path, so missing folders are skipped.
void ApplyGroup(FreeMemory& least,
                const fs::path& systemRoot,
                const GroupFiles& files,
                fs::path group) {
    const fs::path top = systemRoot / files.folder;
    for (group = group.relative_path();; group = group.parent_path()) {
        const fs::path folder = group.empty() ? top : top / group;
        const auto limit = NumberIn(folder / files.limit);
        const auto usage = NumberIn(folder / files.usage);
        if (limit && usage) {
            uint64_t droppable = 0;
            for (const char* key : files.droppable)
                droppable += FieldIn(folder / "memory.stat", key).value_or(0);
            Apply(least, Difference(*limit, Difference(*usage, droppable)), "control group");
        }
        if (group.empty()) return;
    }
}

void ApplyGroups(FreeMemory& least, const fs::path& systemRoot) {
    std::ifstream file(systemRoot / "proc/self/cgroup");
    // Each line contains the hierarchy's number, its controllers, and the group's path.
    for (std::string line; std::getline(file, line);) {
        const auto first = line.find(':');
        const auto second = first == std::string::npos ? first : line.find(':', first + 1);
        if (second == std::string::npos) continue;
        const std::string controllers = "," + line.substr(first + 1, second - first - 1) + ",";
        const std::string group = line.substr(second + 1);
        if (controllers == ",,")
            ApplyGroup(least, systemRoot, versionTwo, group);
        else if (controllers.find(",memory,") != std::string::npos)
            ApplyGroup(least, systemRoot, versionOne, group);
    }
}

/// Fields of /proc/self/statm, in pages.
constexpr std::size_t addressSpaceField = 0;
constexpr std::size_t dataField = 5;

/// Returns the difference between a process limit and the current usage.
template <typename Resource>
std::optional<uint64_t> ProcessLimit(Resource resource,
                                     std::size_t usedField,
                                     const fs::path& systemRoot) {
    rlimit limit{};
    if (getrlimit(resource, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return std::nullopt;
    std::ifstream file(systemRoot / "proc/self/statm");
    uint64_t pages = 0;
    for (std::size_t field = 0; field <= usedField; ++field) file >> pages;
    const long pageBytes = sysconf(_SC_PAGESIZE);
    if (!file || pageBytes <= 0) return std::nullopt;
    return Difference(limit.rlim_cur, pages * static_cast<uint64_t>(pageBytes));
}

/// Applies RLIMIT_AS and RLIMIT_DATA.
void ApplyProcessLimits(FreeMemory& least, const fs::path& systemRoot) {
    if (const auto bytes = QueryFreeAddressSpace(systemRoot))
        Apply(least, *bytes, "address space limit");
    if (const auto bytes = ProcessLimit(RLIMIT_DATA, dataField, systemRoot))
        Apply(least, *bytes, "data segment limit");
}

}  // namespace

std::string FreeMemory::Text() const {
    return std::to_string(bytes) + " bytes of memory are free (" + limit + ")";
}

std::optional<uint64_t> QueryFreeAddressSpace(const std::string& systemRoot) {
    return ProcessLimit(RLIMIT_AS, addressSpaceField, systemRoot);
}

FreeMemory QueryFreeMemory(const std::string& systemRoot) {
    FreeMemory least{unlimited, "machine"};
    const fs::path root(systemRoot);
    if (const auto available = FieldIn(root / "proc/meminfo", "MemAvailable:"))
        Apply(least, *available * 1024, "machine");
    ApplyGroups(least, root);
    ApplyProcessLimits(least, root);
    return least;
}

void CheckFreeMemory(const std::string& what, uint64_t bytes) {
    const FreeMemory free = QueryFreeMemory();
    if (bytes <= free.bytes) return;
    throw HostError(what + " takes about " + std::to_string(bytes) + " bytes, but only " +
                    free.Text());
}

}  // namespace trovik
