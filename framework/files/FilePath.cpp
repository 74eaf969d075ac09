// SPDX-License-Identifier: Apache-2.0
#include "framework/files/FilePath.h"

#include "framework/errors/HostError.h"
#include "framework/files/DiskCalls.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace trovik {

namespace {

/// A name of its own for each new file of this process, in the folder of `target`.
std::string NewNameBeside(const std::string& target) {
    static std::atomic<unsigned> counter{0};
    const std::filesystem::path path(target);
    const std::string extension = path.extension().string();
    const std::string mark =
        "." + std::to_string(getpid()) + "-" + std::to_string(counter++) + ".part";
    // Most file systems end names at 255 bytes; a target of such a name still gets its new file.
    constexpr std::size_t maxNameBytes = 255;
    std::string stem = path.stem().string();
    if (stem.size() + mark.size() + extension.size() > maxNameBytes) {
        const std::size_t rest = mark.size() + extension.size();
        stem.resize(rest < maxNameBytes ? maxNameBytes - rest : 0);
    }
    return (path.parent_path() / (stem + mark + extension)).string();
}

std::string FollowLinks(const std::string& path) {
    std::error_code error;
    if (std::filesystem::is_symlink(path, error)) {
        const std::filesystem::path target = std::filesystem::weakly_canonical(path, error);
        if (!error) {
            return target.string();
        }
    }
    return path;
}

/// Some file systems cannot sync a folder, or anything, and say so; that is no failed write.
bool SyncFailed(int file) {
    return DiskCalls::Current().Sync(file) != 0 && errno != EINVAL && errno != EROFS;
}

/// Opens, syncs and closes. \return 0 or the system's error.
int SyncFile(const std::string& path) {
    const int file = DiskCalls::Current().Open(path.c_str(), O_RDONLY | O_CLOEXEC, 0);
    if (file < 0) {
        return errno;
    }
    const int systemError = SyncFailed(file) ? errno : 0;
    DiskCalls::Current().Close(file);
    return systemError;
}

}  // namespace

void ThrowFileError(const char* doing, const std::string& path, int systemError) {
    throw HostError(std::string("cannot ") + doing + " " + path + ": " +
                    std::generic_category().message(systemError));
}

std::string LowerExtension(const std::string& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    for (char& letter : extension) {
        // Not tolower, which asks the locale.
        if (letter >= 'A' && letter <= 'Z') {
            letter = static_cast<char>(letter - 'A' + 'a');
        }
    }
    return extension;
}

std::uint64_t RegularFileSize(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) {
        ThrowFileError("read", path, errno);
    }
    if (S_ISDIR(status.st_mode)) {
        ThrowFileError("read", path, EISDIR);
    }
    if (!S_ISREG(status.st_mode)) {
        throw HostError("cannot read " + path + ": not a regular file");
    }
    return static_cast<std::uint64_t>(status.st_size);
}

FileReplacement::FileReplacement(const std::string& filePath)
    : path(filePath), targetPath(FollowLinks(filePath)) {
    std::optional<mode_t> presentMode;
    struct stat status = {};
    if (stat(targetPath.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) {
            ThrowFileError("write", path, EISDIR);
        }
        if (!S_ISREG(status.st_mode)) {
            throw HostError("cannot write " + path + ": not a regular file");
        }
        presentMode = status.st_mode & 07777;
    }

    constexpr mode_t anyNewFile = 0666;
    int file = -1;
    do {
        temporaryPath = NewNameBeside(targetPath);
        file = DiskCalls::Current().Open(
            temporaryPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, anyNewFile);
    } while (file < 0 && errno == EEXIST);
    if (file < 0) {
        ThrowFileError("write", path, errno);
    }
    // Best effort: a file of other rights is better than none.
    if (presentMode && fchmod(file, *presentMode | S_IRUSR | S_IWUSR) != 0) {
        errno = 0;
    }
    DiskCalls::Current().Close(file);
}

FileReplacement::~FileReplacement() {
    if (!temporaryPath.empty()) {
        unlink(temporaryPath.c_str());
    }
}

void FileReplacement::Commit(const std::function<void(const std::string&)>& beforeReplacing) {
    if (const int systemError = SyncFile(temporaryPath); systemError != 0) {
        ThrowFileError("write", path, systemError);
    }
    if (beforeReplacing) {
        beforeReplacing(temporaryPath);
    }
    // Told before the renaming: behind it nothing may fail, be it for want of memory.
    const std::filesystem::path parent = std::filesystem::path(targetPath).parent_path();
    const std::string folder = parent.empty() ? std::string(".") : parent.string();
    if (DiskCalls::Current().Rename(temporaryPath.c_str(), targetPath.c_str()) != 0) {
        ThrowFileError("write", path, errno);
    }
    temporaryPath.clear();
    // The name in the folder must last too. A folder that may not be read cannot be synced.
    const int systemError = SyncFile(folder);
    if (systemError != 0 && systemError != EACCES && systemError != EPERM) {
        throw HostError(path + " is written and in place, but its folder could not be synced: " +
                        std::generic_category().message(systemError));
    }
}

}  // namespace trovik
