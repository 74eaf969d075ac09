// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <csignal>
#include <sys/resource.h>

namespace trovik::test {

/// Limits the size of every file of the process, which has nearly the same effect on a writer as a
/// full disk.
class FullDisk {
public:
    explicit FullDisk(rlim_t mostBytes) {
        before = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &limit);
        const rlimit small = {mostBytes, limit.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &limit);
        std::signal(SIGXFSZ, before);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    void (*before)(int);
    rlimit limit{};
};

}  // namespace trovik::test
