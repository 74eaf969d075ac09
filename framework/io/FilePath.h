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

/// Receives one line for each event of file writing that users should read about, such as the
/// removal of a file that a killed process left. At first nobody receives them.
/// \param receive  empty: nobody. Called on the thread that writes.
TROVIK_API void SetFileNotes(std::function<void(const std::string&)> receive);

/// Makes sure that a file can be written at `path`, before the work whose result it is to hold:
/// the name is valid, the folder exists and can be written, and the path is not a folder or device.
/// Creates a file next to it and removes it; a file at `path` is not touched.
/// \throw HostError as FileReplacement.
TROVIK_API void CheckWritable(const std::string& path);

/// A new file that takes the place of another only when it is complete.
///
/// The constructor creates a file beside the target, in the same folder and with the same
/// extension; it has the target's access rights where the target exists already, and otherwise
/// those of any new file. Whoever owns the replacement fills that file. Commit brings it to disk
/// and renames it; without Commit the destructor removes it, and the target is as it was. Where
/// the target is a symbolic link, what it leads to is replaced.
///
/// The new file is locked (flock) for as long as it is this object's. A file of the same target
/// that nobody locks was left by a process that was killed; the constructor removes it and reports
/// it by SetFileNotes. On file systems without locks such files stay.
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
    /// Hands over the open descriptor that locks the file; the caller closes it, which unlocks.
    int TakeLock();

    /// Brings the new file to disk and puts it in place, and then its folder to disk. To be called
    /// once. \param beforeReplacing  called with TemporaryPath when the file there is complete and
    /// on disk, and the target is still as it was; what it throws stops the replacement.
    /// \throw HostError naming `path` and the system's reason; the target is then as it was, unless
    /// the message says that the new file is in place and only its folder could not be synced.
    void Commit(const std::function<void(const std::string& temporaryPath)>& beforeReplacing = {});

    /// From now on Commit fails if a file appeared under the target's name.
    void RequireNewTarget() { mayReplace = false; }

private:
    /// Creates and locks temporaryPath. \return whether it is this object's; otherwise another
    /// process removed the file before it was locked.
    bool Create();
    void RemoveAbandoned() const;

    std::string path;
    std::string targetPath;
    std::string temporaryPath;
    /// Descriptor that holds the lock of the new file.
    int lock = -1;
    bool mayReplace = true;
};

/// \throw HostError always: "cannot <doing> <path>: <text of the system error>".
[[noreturn]] TROVIK_API void ThrowFileError(const char* doing,
                                            const std::string& path,
                                            int systemError);

}  // namespace trovik
