// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/MeshSource.h"
#include "framework/mesh/PolygonMesh.h"

#include <optional>
#include <string>
#include <vector>

namespace trovik {

class JobControl;

/// A mesh file format: one row of the table that ReadMeshFile, WriteMeshFile and file dialogs use.
/// A format with several encodings has a row for each extension.
struct MeshFormat {
    /// \throw HostError with the file and the reason; Cancelled.
    using Reader = PolygonMesh (*)(const std::string& path, JobControl* job);
    /// Writes the file completely or not at all (OutputFile). All numbers of the source are finite.
    /// \return additional files that were written.
    /// \throw HostError with the file and the reason; Cancelled.
    using Writer = std::vector<std::string> (*)(const std::string& path,
                                                const MeshSource& source,
                                                JobControl* job);
    /// The units and up axis that all files of a format have.
    struct FixedSpace {
        MeshSpace space;
        /// Text for messages, such as "in metres with y up".
        const char* description;
    };

    /// The file name extension in lower case, including the dot.
    const char* extension;
    /// Name of the format, such as "PLY", and of the encoding that is written, such as "binary";
    /// null if there is only one. Both are shown to users, translated in the context "MeshFormat".
    const char* name;
    const char* encoding = nullptr;
    /// The data that written files contain, such as "quads, UVs, colours"; translated in the same
    /// way.
    const char* keeps = nullptr;
    /// Null if files cannot be read.
    Reader read = nullptr;
    /// Null if files cannot be written.
    Writer write = nullptr;
    /// Empty if files can have any units and up axis.
    std::optional<FixedSpace> space = {};
};

/// Returns all formats, in the order of their extensions.
TROVIK_API const std::vector<MeshFormat>& MeshFormats();
/// Returns the format that the extension of a file name selects, in upper or lower case; null if
/// there is none.
TROVIK_API const MeshFormat* FindMeshFormat(const std::string& path);

/// Registers a format. Define it as a constant in a source file in `framework/files/formats`, which
/// the build finds:
///
///     const MeshFormatRegistration usd({.extension = ".usda", .name = "USD", .write = &Write});
class MeshFormatRegistration {
public:
    explicit MeshFormatRegistration(const MeshFormat& format);
};

}  // namespace trovik
