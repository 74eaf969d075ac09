// SPDX-License-Identifier: Apache-2.0
#include "engine/ActionStart.h"

#include "framework/errors/HostError.h"
#include "framework/io/FilePath.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace trovik::studio {

namespace {

namespace fs = std::filesystem;

/// Creates a hard link, or a copy if the file system of the new path is another one.
void LinkOrCopy(const fs::path& from, const fs::path& to) {
    fs::remove(to);
    std::error_code failed;
    fs::create_hard_link(from, to, failed);
    if (failed) fs::copy_file(from, to);
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
                        ": the actions start from the original content of this file, which was "
                        "replaced and could not be kept: " +
                        problem);
    fs::path copy = scriptPath;
    copy.replace_extension(".start" + LowerExtension(source));
    try {
        LinkOrCopy(kept.empty() ? source : kept, copy);
    } catch (const fs::filesystem_error& error) {
        throw HostError("cannot write " + copy.string() + ": " + error.code().message());
    }
    return copy.string();
}

}  // namespace trovik::studio
