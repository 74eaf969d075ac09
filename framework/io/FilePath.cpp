// SPDX-License-Identifier: Apache-2.0
#include "framework/io/FilePath.h"

#include "framework/errors/HostError.h"
#include "framework/io/DiskCalls.h"
#include "framework/io/FileLock.h"

#include <atomic>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace trovik {

namespace {

namespace fs = std::filesystem;

std::function<void(const std::string&)>& Notes() {
    static std::function<void(const std::string&)> receive;
    return receive;
}

/// Names of new files: the stem of the target, ".", a process ID, "-", a number, ".part", the
/// extension of the target.
constexpr std::string_view partMark = ".part";

/// Returns the part of a new file's name before the first dot, short enough to leave room for a
/// suffix of `markBytes` bytes.
std::string StemOfNewName(const fs::path& target, std::size_t markBytes) {
    // Most file systems limit names to 255 bytes. The limit also applies to the name of the new
    // file, which is longer than that of the target.
    constexpr std::size_t maxNameBytes = 255;
    std::string stem = target.stem().string();
    const std::size_t rest = markBytes + target.extension().string().size();
    if (stem.size() + rest > maxNameBytes)
        stem.resize(rest < maxNameBytes ? maxNameBytes - rest : 0);
    return stem;
}

/// Returns a path in the folder of `target` that is unique among the new files of this process.
std::string NewNameNextTo(const fs::path& target) {
    static std::atomic<unsigned> counter{0};
    const std::string mark =
        "." + std::to_string(getpid()) + "-" + std::to_string(counter++) + std::string(partMark);
    return (target.parent_path() /
            (StemOfNewName(target, mark.size()) + mark + target.extension().string()))
        .string();
}

/// Returns whether NewNameNextTo could generate this name for `target`, in any process.
bool IsNewNameOf(const fs::path& target, const std::string& name) {
    const std::string ending = std::string(partMark) + target.extension().string();
    const std::size_t dot = name.size() <= ending.size()
                                ? std::string::npos
                                : name.rfind('.', name.size() - ending.size() - 1);
    if (dot == std::string::npos ||
        name.compare(name.size() - ending.size(), ending.size(), ending) != 0)
        return false;
    const std::string_view numbers =
        std::string_view(name).substr(dot + 1, name.size() - ending.size() - dot - 1);
    const std::size_t hyphen = numbers.find('-');
    const auto isNumber = [](std::string_view text) {
        return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
    };
    if (hyphen == std::string_view::npos || !isNumber(numbers.substr(0, hyphen)) ||
        !isNumber(numbers.substr(hyphen + 1)))
        return false;
    const std::size_t markBytes = 1 + numbers.size() + partMark.size();
    return name.compare(0, dot, StemOfNewName(target, markBytes)) == 0;
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

/// Some file systems report that they cannot sync a folder, or any file. This is not treated as a
/// failed write.
bool SyncFailed(int file) {
    return DiskCalls::Current().Sync(file) != 0 && errno != EINVAL && errno != EROFS;
}

/// Opens, syncs and closes a file.
/// \return 0 or the system's error number.
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
        // std::tolower would depend on the locale.
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
    } else if (errno != ENOENT) {
        // For example, the target's name may be too long; creating the new file, whose name is
        // shortened to fit, would not reveal this.
        ThrowFileError("write", path, errno);
    }

    RemoveAbandoned();
    while (!Create()) {
    }
    // Best effort: a file with different permissions is better than no file.
    if (presentMode && fchmod(lock, *presentMode | S_IRUSR | S_IWUSR) != 0) {
        errno = 0;
    }
}

bool FileReplacement::Create() {
    constexpr mode_t anyNewFile = 0666;
    temporaryPath = NewNameNextTo(targetPath);
    const int file = DiskCalls::Current().Open(
        temporaryPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, anyNewFile);
    if (file < 0) {
        if (errno == EEXIST) {
            return false;
        }
        const int systemError = errno;
        temporaryPath.clear();
        ThrowFileError("write", path, systemError);
    }
    // Between the creation and the lock, another process may find the file unlocked and remove it.
    // If the file system does not support locks, that process cannot lock the file either and
    // leaves it alone.
    const bool isLocked = flock(file, LOCK_EX | LOCK_NB) == 0;
    const bool isTaken = !isLocked && errno == EWOULDBLOCK;
    if (isTaken || (access(temporaryPath.c_str(), F_OK) != 0 && errno == ENOENT)) {
        DiskCalls::Current().Close(file);
        return false;
    }
    lock = file;
    return true;
}

void FileReplacement::RemoveAbandoned() const {
    const fs::path target(targetPath);
    const fs::path folder = target.parent_path();
    // The directory iterators of std::filesystem terminate the process if an allocation fails.
    const auto close = [](DIR* opened) { closedir(opened); };
    const std::unique_ptr<DIR, decltype(close)> listing(
        opendir(folder.empty() ? "." : folder.c_str()), close);
    if (listing == nullptr) return;
    while (const dirent* entry = readdir(listing.get())) {
        const std::string name = entry->d_name;
        if (!IsNewNameOf(target, name)) continue;
        const std::string abandoned = (folder / name).string();
        struct stat status {};
        if (lstat(abandoned.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) continue;
        // Checks the lock instead of the process ID in the name, because the ID may have been
        // reused by another process.
        const FileLock owned(abandoned);
        if (owned.State() != FileLock::Result::Locked || unlink(abandoned.c_str()) != 0) continue;
        if (Notes()) Notes()(abandoned + ": removed; it was left by a process that was killed");
    }
}

FileReplacement::~FileReplacement() {
    if (!temporaryPath.empty()) {
        unlink(temporaryPath.c_str());
    }
    if (lock >= 0) {
        DiskCalls::Current().Close(lock);
    }
}

int FileReplacement::TakeLock() { return std::exchange(lock, -1); }

void CheckWritable(const std::string& path) { const FileReplacement attempt(path); }

void SetFileNotes(std::function<void(const std::string&)> receive) { Notes() = std::move(receive); }

void FileReplacement::Commit(const std::function<void(const std::string&)>& beforeReplacing) {
    if (const int systemError = SyncFile(temporaryPath); systemError != 0) {
        ThrowFileError("write", path, systemError);
    }
    if (beforeReplacing) {
        beforeReplacing(temporaryPath);
    }
    // Computed before the rename, because no operation after the rename may fail, not even an
    // allocation.
    const std::filesystem::path parent = std::filesystem::path(targetPath).parent_path();
    const std::string folder = parent.empty() ? std::string(".") : parent.string();
    DiskCalls& disk = DiskCalls::Current();
    const int renamed = mayReplace ? disk.Rename(temporaryPath.c_str(), targetPath.c_str())
                                   : disk.RenameNew(temporaryPath.c_str(), targetPath.c_str());
    if (renamed != 0) {
        ThrowFileError("write", path, errno);
    }
    temporaryPath.clear();
    // The directory entry must also be synced. An unreadable folder cannot be synced.
    const int systemError = SyncFile(folder);
    if (systemError != 0 && systemError != EACCES && systemError != EPERM) {
        throw HostError(path +
                        " was written and is in place, but its folder could not be synced: " +
                        std::generic_category().message(systemError));
    }
}

}  // namespace trovik
