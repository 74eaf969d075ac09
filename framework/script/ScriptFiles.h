// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <string>
#include <vector>

namespace trovik {

/// Finds the files that a script reads, and determines the paths of the files that it writes.
///
/// For a file to read, an absolute path is used unchanged, and a relative path is searched for in
/// this order:
/// 1. in the output folder, if this run has written the file;
/// 2. in the folder of the script, or the working folder for a script from standard input;
/// 3. in the output folder.
///
/// The path of a file to write is relative to the output folder and, by default, must stay within
/// it.
class TROVIK_API ScriptFiles {
public:
    /// \param script  path of the script; its file need not exist.
    ScriptFiles(const std::string& script, std::string outputFolder);

    const std::string& OutputFolder() const { return output; }
    /// Allows files outside of the output folder to be written.
    void AllowOutside(bool allowed) { outsideAllowed = allowed; }
    bool IsOutsideAllowed() const { return outsideAllowed; }

    /// The paths that a name can refer to, in search order.
    std::vector<std::string> Candidates(const std::string& name) const;
    /// The first candidate that exists. A name with "<UDIM>" exists if one of its tiles does.
    /// \throw HostError that contains only the reason, with a list of the searched folders.
    std::string Find(const std::string& name) const;
    /// Whether this run has written, or is about to write, the file that the name refers to.
    bool IsWritten(const std::string& name) const;

    /// Returns the path of a file to write with this name; creates nothing. Symbolic links are
    /// followed. Unless writing outside is allowed, none of the following may be a link that leads
    /// out of the output folder: the folder, the file, and any file next to it whose name begins
    /// with its stem.
    /// \throw HostError with only the reason.
    std::string Target(const std::string& name) const;
    /// Returns the same path as Target and creates its folder. \throw HostError for the same
    /// reasons as Target.
    std::string MakeTarget(const std::string& name) const;
    /// \param target  as returned by Target.
    void NoteWritten(const std::string& target) { written.push_back(target); }

private:
    std::string PathInOutput(const std::string& name) const;

    std::string folder;
    std::string output;
    bool outsideAllowed = false;
    std::vector<std::string> written;
};

}  // namespace trovik
