// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace trovik {

/// How an OBJ file refers to its material files.
struct PlacedMaterialFiles {
    /// For statements `mtllib`: paths relative to the folder of the OBJ file, with slashes.
    std::vector<std::string> references;
    /// Copies that were made.
    std::vector<std::string> written;
};

/// Makes material files (.mtl) reachable from an OBJ file.
///
/// A file in the folder of the OBJ file or below it is referred to where it is. Any other file is
/// copied into that folder; the paths of textures in the copy are changed so that they still lead
/// to the same images. A copy begins with a comment that names the original by its path relative to
/// the folder. It replaces an earlier copy of the same original. If its name belongs to any other
/// file or to a symbolic link, "-2", "-3" and so on is appended to the name. An equal copy is left
/// untouched. A file that is missing, unreadable, longer than 16 MiB, not named *.mtl or not text
/// is not copied but referred to by its relative path.
///
/// \param objPath  the OBJ file; it need not exist yet, its folder must.
/// \param files  paths, absolute or relative to the working directory.
/// \throw HostError naming a copy that cannot be written, and the system's reason.
PlacedMaterialFiles PlaceMaterialFiles(const std::string& objPath,
                                       const std::vector<std::string>& files);

}  // namespace trovik
