// SPDX-License-Identifier: Apache-2.0
#include "framework/script/ScriptFiles.h"

#include "framework/errors/HostError.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <filesystem>
#include <memory>
#include <system_error>

namespace trovik {

namespace {

namespace fs = std::filesystem;

/// The placeholder for a tile number in a file name.
constexpr const char* tileMark = "<UDIM>";

bool StartsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

/// Whether a file name is `pattern` with its placeholder replaced by a tile number. Any text is
/// accepted as the number.
bool IsTile(const std::string& fileName, const std::string& pattern) {
    const std::size_t mark = pattern.find(tileMark);
    if (mark == std::string::npos) return false;
    const std::string end = pattern.substr(mark + std::string(tileMark).size());
    return fileName.size() >= mark + end.size() && StartsWith(fileName, pattern.substr(0, mark)) &&
           fileName.compare(fileName.size() - end.size(), end.size(), end) == 0;
}

/// The names in a folder; empty if it does not exist. \throw HostError if it cannot be listed.
std::vector<std::string> NamesIn(const fs::path& folder) {
    const auto fail = [&folder](int systemError) {
        throw HostError("cannot list the folder " + folder.string() + ": " +
                        std::generic_category().message(systemError));
    };
    // std::filesystem's directory iterators terminate the process if an allocation fails.
    const auto close = [](DIR* opened) { closedir(opened); };
    const std::unique_ptr<DIR, decltype(close)> listing(opendir(folder.c_str()), close);
    if (listing == nullptr) {
        if (errno != ENOENT && errno != ENOTDIR) fail(errno);
        return {};
    }
    std::vector<std::string> names;
    errno = 0;
    while (const dirent* entry = readdir(listing.get())) {
        names.emplace_back(entry->d_name);
        errno = 0;
    }
    if (errno != 0) fail(errno);
    return names;
}

bool Exists(const std::string& path) {
    std::error_code ignored;
    const fs::path given(path);
    const std::string name = given.filename().string();
    if (name.find(tileMark) == std::string::npos) return fs::exists(given, ignored);
    const fs::path parent = given.has_parent_path() ? given.parent_path() : fs::path(".");
    const std::vector<std::string> names = NamesIn(parent);
    return std::any_of(names.begin(), names.end(), [&name](const std::string& fileName) {
        return IsTile(fileName, name);
    });
}

/// Whether `path` is `folder` or lies within it; both must be canonical.
bool IsWithin(const fs::path& folder, const fs::path& path) {
    const auto [end, ignored] =
        std::mismatch(folder.begin(), folder.end(), path.begin(), path.end());
    return end == folder.end();
}

[[noreturn]] void RejectOutside(const std::string& name, const std::string& why) {
    throw HostError("\"" + name + "\" " + why +
                    " the output folder; use --allow-outside to permit it");
}

/// The path with all symbolic links resolved, as far as it exists.
fs::path Canonical(const fs::path& path) {
    std::error_code failed;
    fs::path resolved = fs::weakly_canonical(path, failed);
    if (failed) throw HostError("cannot resolve " + path.string() + ": " + failed.message());
    // A trailing separator would add an empty element to the path.
    return resolved.has_filename() ? resolved : resolved.parent_path();
}

}  // namespace

ScriptFiles::ScriptFiles(const std::string& script, std::string outputFolder)
    : folder(fs::path(script).parent_path().string()), output(std::move(outputFolder)) {}

std::string ScriptFiles::PathInOutput(const std::string& name) const {
    return (fs::path(output) / name).lexically_normal().string();
}

bool ScriptFiles::IsWritten(const std::string& name) const {
    return std::find(written.begin(), written.end(), PathInOutput(name)) != written.end();
}

std::vector<std::string> ScriptFiles::Candidates(const std::string& name) const {
    const std::string nextToScript = (fs::path(folder) / name).string();
    const std::string inOutput = PathInOutput(name);
    if (IsWritten(name)) return {inOutput, nextToScript};
    return {nextToScript, inOutput};
}

std::string ScriptFiles::Find(const std::string& name) const {
    const std::vector<std::string> candidates = Candidates(name);
    const auto found = std::find_if(candidates.begin(), candidates.end(), Exists);
    if (found != candidates.end()) return *found;
    if (fs::path(name).is_absolute()) throw HostError("file not found: " + name);
    throw HostError("file not found: " + name + " is neither in the script's folder (" +
                    (folder.empty() ? "." : folder) + ") nor in the output folder (" +
                    (output.empty() ? "." : output) + ")");
}

std::string ScriptFiles::Target(const std::string& name) const {
    const fs::path target = PathInOutput(name);
    if (outsideAllowed) return target.string();
    if (fs::path(name).is_absolute())
        RejectOutside(name, "is an absolute path, which can be outside");
    const fs::path normal = fs::path(name).lexically_normal();
    if (normal.begin() != normal.end() && *normal.begin() == "..")
        RejectOutside(name, "leads out of");
    const fs::path root = Canonical(fs::absolute(output.empty() ? "." : output));
    if (!IsWithin(root, Canonical(fs::absolute(target))))
        RejectOutside(name, "leads through a symbolic link out of");
    // Map tiles are written under names other than the target's, and glTF buffers under names that
    // begin with the document's stem. Copies of material files keep their own names and never
    // follow links.
    const std::string stem = target.stem().string() + ".";
    const fs::path parent = fs::absolute(target).parent_path();
    for (const std::string& other : NamesIn(parent)) {
        const bool isPart = StartsWith(other, stem) || IsTile(other, target.filename().string());
        std::error_code ignored;
        if (isPart && fs::is_symlink(parent / other, ignored) &&
            !IsWithin(root, Canonical(parent / other)))
            RejectOutside(name, "is next to " + other + ", which is a symbolic link out of");
    }
    return target.string();
}

std::string ScriptFiles::MakeTarget(const std::string& name) const {
    std::string target = Target(name);
    std::error_code failed;
    const fs::path parent = fs::path(target).parent_path();
    if (!parent.empty()) fs::create_directories(parent, failed);
    if (failed)
        throw HostError("cannot create the folder " + parent.string() + ": " + failed.message());
    return target;
}

}  // namespace trovik
