// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/memory/FreeMemory.h"
#include "tests/files/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace trovik::test {
namespace {

constexpr uint64_t mebibyte = uint64_t{1} << 20;

/// A folder with files like those under `/proc` and `/sys`.
class FreeMemoryOfSystem : public ::testing::Test {
protected:
    FreeMemoryOfSystem() {
        Fill("proc/meminfo",
             "MemTotal:       16000000 kB\nMemFree:         1000000 kB\n"
             "MemAvailable:    8388608 kB\nBuffers:          100000 kB\n");
    }
    void Fill(const std::string& name, const std::string& content) {
        std::filesystem::create_directories(std::filesystem::path(folder.Path(name)).parent_path());
        folder.Fill(name, content);
    }
    FreeMemory Query() const { return QueryFreeMemory(folder.Path("")); }

    TemporaryFolder folder;
};

TEST_F(FreeMemoryOfSystem, IsTheAvailableMemoryOfTheMachine) {
    EXPECT_EQ(Query().bytes, 8192 * mebibyte);
    EXPECT_EQ(Query().limit, "machine");
    EXPECT_EQ(Query().Text(), "8589934592 bytes of memory are free (machine)");
}

TEST_F(FreeMemoryOfSystem, IsLimitedByTheControlGroupAndItsParents) {
    Fill("proc/self/cgroup", "0::/outer/inner\n");
    Fill("sys/fs/cgroup/outer/inner/memory.max", "max\n");
    Fill("sys/fs/cgroup/outer/inner/memory.current", "12345\n");
    EXPECT_EQ(Query().bytes, 8192 * mebibyte);
    Fill("sys/fs/cgroup/outer/memory.max", std::to_string(1000 * mebibyte) + "\n");
    Fill("sys/fs/cgroup/outer/memory.current", std::to_string(700 * mebibyte) + "\n");
    EXPECT_EQ(Query().bytes, 300 * mebibyte);
    EXPECT_EQ(Query().limit, "control group");
    // The kernel reclaims cached file pages before it refuses an allocation.
    Fill("sys/fs/cgroup/outer/memory.stat",
         "anon 5\ninactive_file " + std::to_string(200 * mebibyte) + "\nactive_file " +
             std::to_string(100 * mebibyte) + "\n");
    EXPECT_EQ(Query().bytes, 600 * mebibyte);
    Fill("sys/fs/cgroup/outer/inner/memory.max", std::to_string(50 * mebibyte) + "\n");
    EXPECT_EQ(Query().bytes, 50 * mebibyte - 12345);
}

TEST_F(FreeMemoryOfSystem, ReadsVersionOneControlGroups) {
    Fill("proc/self/cgroup", "5:cpu,cpuacct:/x\n4:memory:/docker/0123\n0::/\n");
    // Inside a container, the container's own control group appears as the root folder.
    Fill("sys/fs/cgroup/memory/memory.limit_in_bytes", std::to_string(500 * mebibyte) + "\n");
    Fill("sys/fs/cgroup/memory/memory.usage_in_bytes", std::to_string(100 * mebibyte) + "\n");
    EXPECT_EQ(Query().bytes, 400 * mebibyte);
    // More memory is in use than allowed, as can happen after a limit is lowered.
    Fill("sys/fs/cgroup/memory/memory.usage_in_bytes", std::to_string(900 * mebibyte) + "\n");
    EXPECT_EQ(Query().bytes, 0u);
}

TEST_F(FreeMemoryOfSystem, IgnoresUnreadableFiles) {
    Fill("proc/meminfo", "MemAvailable: much\n");
    Fill("proc/self/cgroup", "nonsense\n0:\n");
    EXPECT_EQ(Query().bytes, std::numeric_limits<uint64_t>::max());
}

TEST_F(FreeMemoryOfSystem, IsLimitedByTheProcessLimits) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "a sanitized process cannot run with little address space";
#endif
    // Sizes are in pages: the first field is the address space, and the sixth is data and stack.
    Fill("proc/self/statm", "25600 1 1 1 0 12800 0\n");
    const auto page = static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const auto limited = [&](auto resource, uint64_t bytes, uint64_t used, const char* name) {
            rlimit before{};
            getrlimit(resource, &before);
            const rlimit limit = {bytes, before.rlim_max};
            setrlimit(resource, &limit);
            const FreeMemory free = Query();
            setrlimit(resource, &before);
            return free.bytes == bytes - used * page && free.limit == name;
        };
        const uint64_t bytes = 7000 * mebibyte;
        const bool isRight = limited(RLIMIT_AS, bytes, 25600, "address space limit") &&
                             limited(RLIMIT_DATA, bytes, 12800, "data segment limit");
        // Little free memory does not mean little address space.
        Fill("proc/meminfo", "MemAvailable: 1 kB\n");
        rlimit before{};
        getrlimit(RLIMIT_AS, &before);
        const bool isUnsetNothing = before.rlim_cur != RLIM_INFINITY || !QueryFreeAddressSpace();
        const rlimit lower = {bytes, before.rlim_max};
        setrlimit(RLIMIT_AS, &lower);
        const auto left = QueryFreeAddressSpace(folder.Path(""));
        const bool isAlone = isUnsetNothing && left && *left == bytes - 25600 * page;
        _exit(isRight && isAlone ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST(FreeMemory, OfThisMachineAllowsSmallAndRefusesHugeRequests) {
    CheckFreeMemory("working", 1);
    const std::string message = MessageOf<HostError>(
        [] { CheckFreeMemory("working", std::numeric_limits<uint64_t>::max()); });
    EXPECT_EQ(message.find("working takes about 18446744073709551615 bytes, but only "), 0u)
        << message;
}

}  // namespace
}  // namespace trovik::test
