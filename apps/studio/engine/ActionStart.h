// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QTemporaryDir>

#include <memory>
#include <string>

namespace trovik::studio {

/// The mesh or scene file from which the list of actions starts. A script of the actions needs the
/// original content of this file, so the content is kept when a step is about to replace the file.
///
/// Used only on the engine thread.
class ActionStart {
public:
    /// \param source  the file, absolute path. \param journal  path of the journal next to which
    /// the content is kept; if empty, it is kept in a temporary folder. \param isTemporary  whether
    /// the file is removed when the document is closed.
    ActionStart(std::string source, std::string journal, bool isTemporary);

    /// Call before a file is written. If it is the source, keeps the content: as a hard link, or as
    /// a copy on another file system. FileFor reports errors.
    void KeepBeforeWriting(const std::string& path);
    /// Whether the script needs a copy of the file.
    bool NeedsCopy() const { return isTemporary || !kept.empty() || !problem.empty(); }
    /// The file with which a script starts: the source, or a copy next to the script, named
    /// NAME.start.EXTENSION, which this function writes. If a different file has that name, the
    /// copy is named NAME.start-2.EXTENSION and so on; no other file with such a name is changed.
    /// The copy of a glTF file contains the files to which it refers. The material files of an OBJ
    /// file are referenced or copied as for an export, and an earlier copy of the same material
    /// file is replaced; see WriteStandaloneMesh.
    /// \throw HostError if the content was not kept, or the copy cannot be written.
    std::string FileFor(const std::string& scriptPath) const;

private:
    std::string source;
    std::string journal;
    bool isTemporary = false;
    std::unique_ptr<QTemporaryDir> folder;
    /// File with the original content; empty while it is still in the source.
    std::string kept;
    /// Why the content could not be kept; empty if it was.
    std::string problem;
};

}  // namespace trovik::studio
