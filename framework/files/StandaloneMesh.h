// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <string>

namespace trovik {

/// Writes a copy of a mesh file that can be read in another folder, if the file refers to other
/// files:
/// - glTF text (.gltf): buffers and images become data URIs in the copy. An image that cannot be
///   read keeps its URI.
/// - OBJ: material files are referenced by paths relative to the copy; see PlaceMaterialFiles.
///
/// Files of other formats are regarded as self-contained; a GLB file with external buffers is not
/// supported.
/// \param content  the file to be copied; its extension determines the format. \param source  the
/// path that the content had originally: relative names refer to its folder. \param target  path of
/// the copy.
/// \return false if the file refers to no other files; nothing is written then.
/// \throw HostError if a file cannot be read or written, with its path and the reason.
TROVIK_API bool WriteStandaloneMesh(const std::string& content,
                                    const std::string& source,
                                    const std::string& target);

}  // namespace trovik
