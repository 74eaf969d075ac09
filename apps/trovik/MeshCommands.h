// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/MeshSource.h"
#include "framework/scene/SceneFile.h"

#include <cstdint>
#include <functional>
#include <string>

namespace trovik {

/// Opens a mesh file, or a scene without its tools, and subdivides it.
/// \param levels  subdivision levels to add.
/// \param given  units and up axis of a mesh file; they override those that the file states.
/// \param additionalBytes  memory that the caller needs in addition to the levels of a forecast. If
/// both do not fit together, the levels are refused before any is allocated.
/// \throw HostError; Cancelled.
LoadedScene OpenRefined(const std::string& path,
                        unsigned levels,
                        const MeshSpace& given,
                        const std::function<uint64_t(const LevelForecast&)>& additionalBytes,
                        JobControl* job);

}  // namespace trovik
