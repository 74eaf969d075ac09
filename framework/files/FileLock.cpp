// SPDX-License-Identifier: Apache-2.0
#include "framework/files/FileLock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace trovik {

bool IsFileAt(const std::string& path, int file) {
    struct stat open = {};
    struct stat named = {};
    return fstat(file, &open) == 0 && stat(path.c_str(), &named) == 0 &&
           open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

FileLock::FileLock(const std::string& path) {
    do {
        if (file >= 0) close(std::exchange(file, -1));
        state = Try(path);
    } while (state == Result::Locked && !IsFileAt(path, file));
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
