// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace trovik {

/// The references of an OBJ file to its material files.
struct PlacedMaterialFiles {
    /// For `mtllib` statements: paths relative to the OBJ file's folder, with forward slashes.
    std::vector<std::string> references;
    /// The copies that were written.
    std::vector<std::string> written;
};

/// Copies material files (.mtl) where necessary so that an OBJ file can refer to them by relative
/// paths.
///
/// A file in the OBJ file's folder or a subfolder is referenced directly. Any other file is copied
/// into the OBJ file's folder, and the texture paths in the copy are adjusted so that they refer to
/// the same images. A copy starts with a comment that contains the path of the original, relative
/// to the OBJ file's folder. A copy replaces an earlier copy of the same original. If the name is
/// taken by any other file or by a symbolic link, "-2", "-3" or a higher number is appended to it.
/// An identical copy is not rewritten. A file is not copied, only referenced by its relative path,
/// if it is missing or unreadable, is longer than 16 MiB, is not named *.mtl, or is not text.
///
/// \param objPath  the OBJ file; it need not exist yet, but its folder must.
/// \param files  paths, absolute or relative to the working directory.
/// \throw HostError with the path of the copy that cannot be written and the system's reason.
PlacedMaterialFiles PlaceMaterialFiles(const std::string& objPath,
                                       const std::vector<std::string>& files);

}  // namespace trovik
