// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstdint>
#include <functional>
#include <string>

namespace trovik {

/// Returns the extension including the dot, with ASCII letters in lower case; empty if the name has
/// no extension.
TROVIK_API std::string LowerExtension(const std::string& path);

/// Returns the size of a regular file in bytes.
/// \throw HostError with the path and the reason if the file does not exist or is not a regular
/// file. A folder is rejected, and so is a pipe, which could block a reader forever.
TROVIK_API std::uint64_t RegularFileSize(const std::string& path);

/// Sets a function that receives one line for each file event of interest to users, such as the
/// removal of a file that a killed process left behind. Initially, no function is set.
/// \param receive  may be empty. It is called on the thread that writes the file.
TROVIK_API void SetFileNotes(std::function<void(const std::string&)> receive);

/// Checks, before the content is computed, that a file can be written at `path`: the name is valid,
/// the folder exists and is writable, and the path is neither a folder nor a device. Creates and
/// removes a temporary file next to it; an existing file at `path` is not modified.
/// \throw HostError under the same conditions as FileReplacement.
TROVIK_API void CheckWritable(const std::string& path);

/// A new file that replaces an existing one only when the new file is complete.
///
/// The constructor creates a file next to the target, in the same folder and with the same
/// extension. It has the target's permissions if the target exists, otherwise the default ones. The
/// owner of the object writes the content to this file. Commit syncs the file to disk and renames
/// it. Without Commit, the destructor removes it and the target is unchanged. If the target is a
/// symbolic link, the file to which it points is replaced.
///
/// The new file is locked (flock) while this object owns it. An unlocked file for the same target
/// was left behind by a killed process; the constructor removes it and reports the removal through
/// SetFileNotes. On file systems without locks such files are not removed.
class TROVIK_API FileReplacement {
public:
    /// \throw HostError with `path` and the system's reason; also if `path` is a folder, a device
    /// or a pipe.
    explicit FileReplacement(const std::string& path);
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// Returns the path as passed to the constructor, for messages.
    const std::string& Path() const { return path; }
    /// Returns the path of the file to which the new content is written before Commit.
    const std::string& TemporaryPath() const { return temporaryPath; }
    /// Transfers ownership of the file descriptor that holds the lock. Closing it releases the
    /// lock.
    int TakeLock();

    /// Syncs the new file to disk, replaces the target and then syncs the folder. Call it once.
    /// \param beforeReplacing  called with TemporaryPath when that file is complete and on disk and
    /// the target is still unchanged. An exception cancels the replacement.
    /// \throw HostError with `path` and the system's reason. The target is then unchanged, unless
    /// the message says that the new file is in place and only its folder could not be synced.
    void Commit(const std::function<void(const std::string& temporaryPath)>& beforeReplacing = {});

    /// Makes Commit fail if a file with the target's name exists.
    void RequireNewTarget() { mayReplace = false; }

private:
    /// Creates and locks temporaryPath.
    /// \return false if another process removed the file before it was locked.
    bool Create();
    void RemoveAbandoned() const;

    std::string path;
    std::string targetPath;
    std::string temporaryPath;
    /// File descriptor that holds the lock on the new file.
    int lock = -1;
    bool mayReplace = true;
};

/// Always throws.
/// \throw HostError with the message "cannot <doing> <path>: <text of the system error>".
[[noreturn]] TROVIK_API void ThrowFileError(const char* doing,
                                            const std::string& path,
                                            int systemError);

}  // namespace trovik
