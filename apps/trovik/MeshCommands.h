// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/MeshSource.h"
#include "framework/scene/SceneFile.h"

#include <cstdint>
#include <functional>
#include <string>

namespace trovik {

/// The camera of renders without camera options: slightly above and to the right of the front.
inline const Vector defaultDirection(0.35f, 0.2f, 1.0f);
inline constexpr float defaultFieldOfView = 35.0f;

/// Opens a mesh file, or a scene without its tools, and subdivides it.
/// \param levels  subdivision levels to add.
/// \param given  units and up axis of a mesh file; they override those specified in the file.
/// \param additionalBytes  returns the memory that the caller needs in addition to the forecast
/// memory of the levels. If the sum exceeds the available memory, the levels are refused before any
/// memory is allocated.
/// \throw HostError; Cancelled.
LoadedScene OpenRefined(const std::string& path,
                        unsigned levels,
                        const MeshSpace& given,
                        const std::function<uint64_t(const LevelForecast&)>& additionalBytes,
                        JobControl* job);

}  // namespace trovik
