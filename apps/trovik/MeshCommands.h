// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/MeshSource.h"
#include "framework/scene/SceneFile.h"

#include <cstdint>
#include <functional>
#include <string>

namespace trovik {

/// Opens a mesh file, or a scene without its tools, and refines it.
/// \param levels  subdivision levels to add.
/// \param given  units and axis of a mesh file; what it specifies itself comes second.
/// \param furtherBytes  memory that the caller needs besides the levels of a forecast. Levels that
/// do not fit into memory together with it are refused before any is made.
/// \throw HostError; Cancelled.
LoadedScene OpenRefined(const std::string& path,
                        unsigned levels,
                        const MeshSpace& given,
                        const std::function<uint64_t(const LevelForecast&)>& furtherBytes,
                        JobControl* job);

}  // namespace trovik
