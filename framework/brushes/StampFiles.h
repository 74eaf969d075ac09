// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/BrushOperation.h"

#include <optional>
#include <string>
#include <vector>

namespace trovik {

/// Returns the folders that contain stamps, in search order. They are the colon-separated folders
/// in the environment variable TROVIK_STAMP_PATH or, if it is not set, share/trovik/stamps in the
/// installed tree and stamps/ in the source tree, if these exist.
TROVIK_API std::vector<std::string> StampFolders();

/// Finds the file of a stamp name. An absolute path is used unchanged. Any other name is looked up
/// in each stamp folder: first the whole name, then the name without its folder part, then that
/// shorter name in the subfolder "Stamps". A name without an extension may refer to a TIFF, PNG,
/// EXR or JPEG file.
/// \return nothing if the file does not exist.
TROVIK_API std::optional<std::string> FindStampFile(const std::string& name);

/// Loads the image of the brush's stamp if the stamp is enabled and its file exists, and reloads it
/// if the file has changed. A stamp without a file keeps its image.
/// \throw HostError with the file name and the reason if the file cannot be read.
TROVIK_API void RefreshStamp(BrushOperation& brush);

}  // namespace trovik
