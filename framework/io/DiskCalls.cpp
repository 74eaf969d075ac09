// SPDX-License-Identifier: Apache-2.0
#include "framework/io/DiskCalls.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace trovik {

namespace {

DiskCalls* inUse = nullptr;

}  // namespace

DiskCalls::~DiskCalls() = default;

int DiskCalls::Open(const char* path, int flags, mode_t mode) { return open(path, flags, mode); }

ssize_t DiskCalls::Write(int file, const void* bytes, std::size_t size) {
    return write(file, bytes, size);
}

int DiskCalls::Sync(int file) { return fsync(file); }

int DiskCalls::Close(int file) { return close(file); }

int DiskCalls::Rename(const char* from, const char* to) { return std::rename(from, to); }

int DiskCalls::RenameNew(const char* from, const char* to) {
    if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) {
        return 0;
    }
    // Some network file systems do not support this kind of rename.
    return errno == EINVAL || errno == ENOSYS ? Rename(from, to) : -1;
}

DiskCalls& DiskCalls::Current() {
    static DiskCalls system;
    return inUse != nullptr ? *inUse : system;
}

void DiskCalls::Use(DiskCalls* calls) { inUse = calls; }

}  // namespace trovik
