// SPDX-License-Identifier: Apache-2.0
#include "engine/JournalFolder.h"

#include "framework/errors/HostError.h"
#include "framework/io/FileLock.h"
#include "framework/journal/JournalContent.h"

#include <QDateTime>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <unistd.h>
#include <vector>

namespace trovik::studio {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view journalMark = ".journal";

/// The path of the journal to which a file belongs; empty for other files.
std::string JournalOf(const fs::path& file) {
    const std::string name = file.filename().string();
    const std::size_t mark = name.find(journalMark);
    if (mark != std::string::npos) {
        const std::size_t end = mark + journalMark.size();
        if (end != name.size() && name[end] != '.') return {};
        return (file.parent_path() / name.substr(0, end)).string();
    }
    if (file.extension() != ".png") return {};
    return fs::path(file).replace_extension(journalMark).string();
}

std::vector<fs::path> FilesIn(const fs::path& folder) {
    std::vector<fs::path> files;
    std::error_code failed;
    for (fs::directory_iterator entry(folder, failed), end; !failed && entry != end;
         entry.increment(failed))
        if (std::error_code ignored; entry->is_regular_file(ignored)) files.push_back(*entry);
    return files;
}

void RemoveFilesOf(const std::string& journalPath,
                   const std::function<bool(const fs::path&)>& isKept) {
    std::error_code ignored;
    for (const fs::path& file : FilesIn(fs::path(journalPath).parent_path()))
        if (JournalOf(file) == journalPath && !isKept(file)) fs::remove(file, ignored);
}

/// Adds the names of the files that a journal needs for recovery. Files are compared by name only,
/// because names do not depend on how the folder's path is written.
void AddNeeded(const JournalContent& content, std::set<std::string>& needed) {
    const auto add = [&](const std::string& path) {
        needed.insert(fs::path(path).filename().string());
    };
    add(content.base.source);
    for (const JournalSave& save : content.saves) add(save.scene.path);
    for (const JournalFile& file : content.stamps) add(file.path);
}

/// Whether a scene belongs to a journal, and not to the user: recovered work, or a snapshot.
bool BelongsToJournal(const fs::path& file) {
    return file.filename().string().find(".journal.") != std::string::npos;
}

/// Whether a process is writing this file, or ended before it was complete.
bool IsIncomplete(const fs::path& file) {
    return file.filename().string().find(".part.") != std::string::npos;
}

}  // namespace

bool IsChange(const JournalStep& step) {
    if (!step.step.is_object()) return step.dabs > 0;
    for (const auto& [name, value] : step.step.items())
        if (name != "tool" && name != "set" && name != "camera") return true;
    return false;
}

std::optional<std::size_t> SavedSteps(const JournalContent& content) {
    if (content.saves.empty()) return std::nullopt;
    const JournalSave& newest = content.saves.back();
    try {
        if (HashFile(newest.scene.path) == newest.scene.content) return newest.stepsBefore;
    } catch (const HostError&) {
        // The scene was moved or removed, so the journal is the only record.
    }
    return std::nullopt;
}

bool HasUnsavedWork(const JournalContent& content, std::optional<std::size_t> saved) {
    if (!saved && BelongsToJournal(content.base.source)) return true;
    const auto first = content.steps.begin() + static_cast<std::ptrdiff_t>(saved.value_or(0));
    return std::any_of(first, content.steps.end(), IsChange);
}

std::string WorkFolderOf(const JournalContent& content) {
    const std::string& file =
        content.saves.empty() ? content.base.source : content.saves.back().scene.path;
    return BelongsToJournal(file) ? std::string() : fs::path(file).parent_path().string();
}

std::string NewJournalPath(const std::string& folder) {
    static unsigned count = 0;
    const std::string name =
        QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss")).toStdString() +
        "-" + std::to_string(::getpid()) + "-" + std::to_string(++count) + ".journal";
    return (fs::path(folder) / name).string();
}

std::string PicturePathOf(const std::string& journalPath) {
    return fs::path(journalPath).replace_extension(".png").string();
}

std::string RecoveredScenePathOf(const std::string& journalPath) { return journalPath + ".trovik"; }

void MarkAsRecovered(const std::string& journalPath) {
    std::error_code ignored;
    fs::rename(journalPath, journalPath + ".recovered", ignored);
}

void RemoveJournal(const std::string& journalPath) {
    RemoveFilesOf(journalPath, [](const fs::path&) { return false; });
}

void RemoveRecovered(const std::string& journalPath) {
    const fs::path scene = RecoveredScenePathOf(journalPath);
    RemoveFilesOf(journalPath, [&](const fs::path& file) { return file == scene; });
}

// Another process can recover or start a journal at the same time. Therefore, the journals that
// exist at the beginning keep their companion files even if they are renamed in the meantime, and
// journals are read only after the folder has been listed.
void RemoveLeftovers(const std::string& folder) {
    const std::vector<fs::path> files = FilesIn(folder);
    std::map<std::string, std::vector<fs::path>> companions;
    std::set<std::string> present;
    std::error_code ignored;
    for (const fs::path& file : files) {
        const std::string journal = JournalOf(file);
        if (journal.empty()) continue;
        if (IsIncomplete(file)) {
            if (FileLock(file.string()).State() == FileLock::Result::Locked)
                fs::remove(file, ignored);
            continue;
        }
        companions[journal].push_back(file);
        if (file.string() == journal) present.insert(journal);
    }
    std::set<std::string> needed;
    try {
        for (const fs::path& file : FilesIn(folder)) {
            if (JournalOf(file) != file.string() || IsIncomplete(file)) continue;
            const JournalContent content = ReadJournal(file.string(), true);
            const bool isOver = FileLock(file.string()).State() == FileLock::Result::Locked &&
                                (content.isClosed || !HasUnsavedWork(content, SavedSteps(content)));
            if (isOver)
                present.erase(file.string());
            else
                AddNeeded(content, needed);
        }
    } catch (const HostError&) {
        return;
    }
    for (const auto& [journal, owned] : companions) {
        if (present.contains(journal)) continue;
        const bool isNeeded = std::any_of(owned.begin(), owned.end(), [&](const fs::path& file) {
            return needed.contains(file.filename().string());
        });
        for (const fs::path& file : owned)
            if (!isNeeded) fs::remove(file, ignored);
    }
}

}  // namespace trovik::studio
