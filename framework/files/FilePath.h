// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstdint>
#include <functional>
#include <string>

namespace trovik {

/// The extension with its dot, ASCII letters in lower case; empty where the name has none.
TROVIK_API std::string LowerExtension(const std::string& path);

/// The size in bytes of a regular file.
/// \throw HostError naming the path and the reason where there is none, or it is a folder or
/// another kind of thing (a pipe could make a reader wait for ever).
TROVIK_API std::uint64_t RegularFileSize(const std::string& path);

/// A new file that takes the place of another only when it is complete.
///
/// The constructor creates a file beside the target, in the same folder and with the same
/// extension; it has the target's access rights where the target exists already, and otherwise
/// those of any new file. Whoever owns the replacement fills that file. Commit brings it to disk
/// and renames it; without Commit the destructor removes it, and the target is as it was. Where
/// the target is a symbolic link, what it leads to is replaced.
class TROVIK_API FileReplacement {
public:
    /// \throw HostError naming `path` and the system's reason; also where `path` is a folder, a
    /// device or a pipe.
    explicit FileReplacement(const std::string& path);
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// The path as given to the constructor, for messages.
    const std::string& Path() const { return path; }
    /// Where the new content belongs until Commit.
    const std::string& TemporaryPath() const { return temporaryPath; }

    /// Brings the new file to disk and puts it in place, and then its folder to disk. To be called
    /// once. \param beforeReplacing  called with TemporaryPath when the file there is complete and
    /// on disk, and the target is still as it was; what it throws stops the replacement.
    /// \throw HostError naming `path` and the system's reason; the target is then as it was, unless
    /// the message says that the new file is in place and only its folder could not be synced.
    void Commit(const std::function<void(const std::string& temporaryPath)>& beforeReplacing = {});

private:
    std::string path;
    std::string targetPath;
    std::string temporaryPath;
};

/// \throw HostError always: "cannot <doing> <path>: <text of the system error>".
[[noreturn]] TROVIK_API void ThrowFileError(const char* doing,
                                            const std::string& path,
                                            int systemError);

}  // namespace trovik
