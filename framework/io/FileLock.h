// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <string>

namespace trovik {

/// Tries to lock a file for this object alone (flock), without waiting. The system releases the
/// lock when the object or the process ends, in whatever way, so a lock says that its holder lives.
class TROVIK_API FileLock {
public:
    enum class Result {
        Locked,
        /// Another object or process holds the lock.
        Busy,
        /// There is no such file.
        Absent,
        /// The file system has no locks, or the file may not be opened.
        Unavailable
    };

    /// Locks the file that the path names when this returns, also if the file is being replaced.
    explicit FileLock(const std::string& path);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    Result State() const { return state; }

private:
    Result Try(const std::string& path);

    int file = -1;
    Result state = Result::Unavailable;
};

}  // namespace trovik
