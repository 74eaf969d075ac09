// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/BrushOperation.h"

#include <optional>
#include <string>
#include <vector>

namespace trovik {

/// Folders of the stamps that came with the program, in order of search: those of the environment
/// variable TROVIK_STAMP_PATH, separated by colons, or else share/trovik/stamps of the installed
/// tree and stamps/ of the source tree, as far as they are there.
TROVIK_API std::vector<std::string> StampFolders();

/// The file that a stamp's name stands for: an absolute path stands for itself; any other name is
/// looked up in the stamp folders, as it is, then without its own folders, there and in their
/// folder "Stamps". A name without an extension may be that of a TIFF, PNG, EXR or JPEG file.
/// Nothing where there is no such file.
TROVIK_API std::optional<std::string> FindStampFile(const std::string& name);

/// Gives the brush the image of its stamp's file, where the stamp is on and the file is there, and
/// the new pixels when that file has changed. A stamp without a file keeps the image it has.
/// \throw HostError naming the file and the reason, when it cannot be read.
TROVIK_API void RefreshStamp(BrushOperation& brush);

}  // namespace trovik
