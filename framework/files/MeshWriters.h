// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/files/MeshSource.h"

#include <string>

/// \file
/// One writer a format. Each writes the file as a whole or not at all (OutputFile), block by block.
/// Errors: HostError naming the file and the system's reason.
namespace trovik {

void WriteObj(const std::string& path, const MeshSource& source, const WriteProgress& listener);
void WritePly(const std::string& path,
              const MeshSource& source,
              PlyEncoding encoding,
              const WriteProgress& listener);

}  // namespace trovik
