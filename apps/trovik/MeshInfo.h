// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json_fwd.hpp>

#include <optional>
#include <string>

namespace trovik {

/// Prints the report of `trovik info` on a mesh file as text on standard output, unless quiet.
/// \param minThickness  if set, walls that are thinner are reported, too.
/// \throw HostError if the file cannot be read.
void PrintMeshInfo(const std::string& path, std::optional<float> minThickness, bool quiet);
/// Returns the report of `trovik info` on a mesh file as JSON. \throw HostError if it cannot be
/// read.
nlohmann::json MeshInfoJson(const std::string& path, std::optional<float> minThickness);

}  // namespace trovik
