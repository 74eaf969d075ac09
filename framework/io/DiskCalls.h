// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstddef>
#include <sys/types.h>

namespace trovik {

/// The system calls for files that must be written reliably. OutputFile, FileReplacement and
/// JournalWriter use no others. Each function works like the system call of the same name and
/// reports errors by errno. Another implementation can simulate a failing disk.
class TROVIK_API DiskCalls {
public:
    virtual ~DiskCalls();
    virtual int Open(const char* path, int flags, mode_t mode);
    virtual ssize_t Write(int file, const void* bytes, std::size_t size);
    virtual int Sync(int file);
    virtual int Close(int file);
    virtual int Rename(const char* from, const char* to);
    /// Rename that fails with EEXIST if `to` exists; atomic if the file system supports it.
    virtual int RenameNew(const char* from, const char* to);

    /// The current implementation; initially the system's.
    static DiskCalls& Current();
    /// Sets the implementation for all files that are written from now on; null selects the
    /// system's. Borrowed. Must not be called while files are being written.
    static void Use(DiskCalls* calls);
};

}  // namespace trovik
