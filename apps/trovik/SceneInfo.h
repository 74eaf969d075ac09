// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json_fwd.hpp>

#include <optional>
#include <string>

namespace trovik {

/// Prints the report of `trovik info` on a scene file as text on standard output, unless quiet.
/// \param minThickness  if set, walls of the current level that are thinner are reported, too.
/// \throw HostError as LoadScene does.
void PrintSceneInfo(const std::string& path, std::optional<float> minThickness, bool quiet);
/// Returns the report of `trovik info` on a scene file as JSON. \throw HostError as LoadScene does.
nlohmann::json SceneInfoJson(const std::string& path, std::optional<float> minThickness);

}  // namespace trovik
