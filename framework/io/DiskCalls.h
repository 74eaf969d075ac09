// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstddef>
#include <sys/types.h>

namespace trovik {

/// The system calls with which OutputFile, FileReplacement and JournalWriter write files reliably;
/// these classes use no other calls for this purpose. Each function behaves like the system call of
/// the same name and reports errors through errno. Tests can substitute an implementation that
/// simulates a failing disk.
class TROVIK_API DiskCalls {
public:
    virtual ~DiskCalls();
    virtual int Open(const char* path, int flags, mode_t mode);
    virtual ssize_t Write(int file, const void* bytes, std::size_t size);
    virtual int Sync(int file);
    virtual int Close(int file);
    virtual int Rename(const char* from, const char* to);
    /// Renames a file, but fails with EEXIST if `to` exists. Atomic if the file system supports it.
    virtual int RenameNew(const char* from, const char* to);

    /// Returns the current implementation. By default, it makes the system calls.
    static DiskCalls& Current();
    /// Sets the implementation for all files written after this call; null selects the default one.
    /// Borrowed. Must not be called while files are being written.
    static void Use(DiskCalls* calls);
};

}  // namespace trovik
