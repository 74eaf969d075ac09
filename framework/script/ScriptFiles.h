// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <string>
#include <vector>

namespace trovik {

/// Finds the files that a script reads and decides where the files that it writes go.
///
/// A name to read is looked up in this order; an absolute path is used as it is:
/// 1. in the output folder, if this run has written the file;
/// 2. in the folder of the script, or the working folder for a script from standard input;
/// 3. in the output folder.
/// A name to write is relative to the output folder and must stay in it.
class TROVIK_API ScriptFiles {
public:
    /// \param script  path of the script; its file need not exist.
    ScriptFiles(const std::string& script, std::string outputFolder);

    const std::string& OutputFolder() const { return output; }
    /// Allows targets outside of the output folder.
    void AllowOutside(bool allowed) { outsideAllowed = allowed; }
    bool IsOutsideAllowed() const { return outsideAllowed; }

    /// The paths that a name can mean, in search order.
    std::vector<std::string> Candidates(const std::string& name) const;
    /// The first candidate that exists. A name with "<UDIM>" exists if one of its tiles does.
    /// \throw HostError with the reason alone, which names the folders searched.
    std::string Find(const std::string& name) const;
    /// Whether this run has written, or is about to write, the file that the name means.
    bool IsWritten(const std::string& name) const;

    /// Where a file of this name is written. Symbolic links are followed: neither folder nor file,
    /// nor a file next to it that begins with its stem, may be a link that leads out of the output
    /// folder, unless that is allowed. Creates nothing. \throw HostError with the reason alone.
    std::string Target(const std::string& name) const;
    /// Target, whose folder is created. \throw HostError as Target.
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
