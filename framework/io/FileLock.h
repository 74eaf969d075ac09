// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <string>

namespace trovik {

/// Tries to acquire an exclusive lock on a file (flock) without waiting. The lock is released when
/// the object is destroyed or the process ends, even if it crashes. A held lock therefore means
/// that its holder still exists.
class TROVIK_API FileLock {
public:
    enum class Result {
        Locked,
        /// Another object or process holds the lock.
        Busy,
        /// The file does not exist.
        Absent,
        /// The file system does not support locks, or the file cannot be opened.
        Unavailable
    };

    /// Locks the file at this path. If the file is replaced in the meantime, the new file is
    /// locked.
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
