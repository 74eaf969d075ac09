// SPDX-License-Identifier: Apache-2.0
#include "framework/io/FileLock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace trovik {

namespace {

/// Returns whether an open file is the one that currently has this path.
bool IsFileAt(const std::string& path, int file) {
    struct stat open = {};
    struct stat named = {};
    return fstat(file, &open) == 0 && stat(path.c_str(), &named) == 0 &&
           open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

}  // namespace

FileLock::FileLock(const std::string& path) {
    // Tries again if the file is replaced in the meantime. The limit ends the loop on file systems
    // whose inode numbers are not stable.
    constexpr int maxAttempts = 100;
    for (int attempt = 0; attempt < maxAttempts; ++attempt) {
        if (file >= 0) close(std::exchange(file, -1));
        state = Try(path);
        if (state != Result::Locked || IsFileAt(path, file)) return;
    }
    state = Result::Unavailable;
}

FileLock::Result FileLock::Try(const std::string& path) {
    // On network file systems, only a file that is open for writing can be locked. O_NONBLOCK is
    // needed because opening a pipe with this name could block forever.
    file = open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (file < 0 && errno != ENOENT) file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (file < 0) return errno == ENOENT ? Result::Absent : Result::Unavailable;
    if (flock(file, LOCK_EX | LOCK_NB) == 0) return Result::Locked;
    return errno == EWOULDBLOCK ? Result::Busy : Result::Unavailable;
}

FileLock::~FileLock() {
    if (file >= 0) close(file);
}

}  // namespace trovik
