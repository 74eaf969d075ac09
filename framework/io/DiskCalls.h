// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstddef>
#include <sys/types.h>

namespace trovik {

/// The calls of the system through which files are written that must not be lost: OutputFile,
/// FileReplacement and JournalWriter make no others. Each works as the function of its name and
/// tells of an error by errno. Another implementation stands in for a disk that fails.
class TROVIK_API DiskCalls {
public:
    virtual ~DiskCalls();
    virtual int Open(const char* path, int flags, mode_t mode);
    virtual ssize_t Write(int file, const void* bytes, std::size_t size);
    virtual int Sync(int file);
    virtual int Close(int file);
    virtual int Rename(const char* from, const char* to);
    /// Rename that fails with EEXIST if `to` exists, where the file system can do that at once.
    virtual int RenameNew(const char* from, const char* to);

    /// Those in use, at first the system's own.
    static DiskCalls& Current();
    /// Has all files written through these from now on; null for the system's own. Borrowed. Not
    /// to be called while files are being written.
    static void Use(DiskCalls* calls);
};

}  // namespace trovik
