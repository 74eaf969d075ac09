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

/// Whether an open file is the one that the path names now.
bool IsFileAt(const std::string& path, int file) {
    struct stat open = {};
    struct stat named = {};
    return fstat(file, &open) == 0 && stat(path.c_str(), &named) == 0 &&
           open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

}  // namespace

FileLock::FileLock(const std::string& path) {
    // Another attempt for each replacement of the file that happens just now. A file system on
    // which files change their numbers would never end.
    constexpr int maxAttempts = 100;
    for (int attempt = 0; attempt < maxAttempts; ++attempt) {
        if (file >= 0) close(std::exchange(file, -1));
        state = Try(path);
        if (state != Result::Locked || IsFileAt(path, file)) return;
    }
    state = Result::Unavailable;
}

FileLock::Result FileLock::Try(const std::string& path) {
    // Locks of network file systems need a file that is open for writing. Non-blocking, since a
    // pipe of this name could make the call wait for ever.
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
