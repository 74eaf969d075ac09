// SPDX-License-Identifier: Apache-2.0
#include "engine/ActionStart.h"

#include "framework/errors/HostError.h"
#include "framework/files/StandaloneMesh.h"
#include "framework/io/ContentHash.h"
#include "framework/io/FilePath.h"

#include <QTemporaryFile>

#include <filesystem>
#include <system_error>
#include <utility>

namespace trovik::studio {

namespace {

namespace fs = std::filesystem;

/// Creates a hard link, or a copy if the file system of the new path is another one. The new path
/// must not exist.
void LinkOrCopy(const fs::path& from, const fs::path& to) {
    std::error_code failed;
    fs::create_hard_link(from, to, failed);
    if (failed) fs::copy_file(from, to);
}

bool HaveSameContent(const fs::path& a, const fs::path& b) {
    return fs::is_regular_file(b) && fs::file_size(a) == fs::file_size(b) &&
           HashFile(a.string()) == HashFile(b.string());
}

}  // namespace

ActionStart::ActionStart(std::string file, std::string journalPath, bool temporary)
    : source(std::move(file)), journal(std::move(journalPath)), isTemporary(temporary) {}

void ActionStart::KeepBeforeWriting(const std::string& path) {
    std::error_code different;
    if (!kept.empty() || !problem.empty() || !fs::equivalent(path, source, different)) return;
    const std::string name = ".start" + LowerExtension(source);
    try {
        std::string copy = journal + name;
        if (journal.empty()) {
            folder = std::make_unique<QTemporaryDir>();
            copy = folder->filePath(QString::fromStdString(name)).toStdString();
        }
        fs::remove(copy);
        LinkOrCopy(fs::canonical(source), copy);
        kept = copy;
    } catch (const fs::filesystem_error& error) {
        problem = error.code().message();
    }
}

std::string ActionStart::FileFor(const std::string& scriptPath) const {
    if (!NeedsCopy()) return source;
    if (!problem.empty())
        throw HostError(source +
                        ": the saved actions must start from the original content of this file, "
                        "but it was replaced, and no copy could be kept: " +
                        problem);
    std::string original = kept.empty() ? source : kept;
    // Removed as soon as it has been linked or copied to its final name. It is in the folder of
    // the script, because references to other files are relative to that folder.
    QTemporaryFile standalone(QString::fromStdString(scriptPath) + QStringLiteral(".XXXXXX"));
    if (LowerExtension(original) != ".trovik") {
        if (!standalone.open())
            throw HostError("cannot write a file next to " + scriptPath + ": " +
                            standalone.errorString().toStdString());
        const std::string written = standalone.fileName().toStdString();
        if (WriteStandaloneMesh(original, source, written)) {
            // A temporary file can only be read by its owner.
            std::error_code ignored;
            fs::permissions(written, fs::status(original).permissions(), ignored);
            original = written;
        }
    }
    fs::path copy = scriptPath;
    try {
        for (int number = 1;; ++number) {
            const std::string suffix = number == 1 ? ".start" : ".start-" + std::to_string(number);
            copy = scriptPath;
            copy.replace_extension(suffix + LowerExtension(source));
            if (!fs::exists(copy)) {
                LinkOrCopy(original, copy);
                return copy.string();
            }
            if (HaveSameContent(original, copy)) return copy.string();
        }
    } catch (const fs::filesystem_error& error) {
        throw HostError("cannot write " + copy.string() + ": " + error.code().message());
    }
}

}  // namespace trovik::studio
