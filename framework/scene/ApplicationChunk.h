// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/nodes/SceneStream.h"
#include "framework/scene/ApplicationData.h"

namespace trovik {

/// Chunk APPL: one entry of ApplicationData. A scene has one such chunk per entry.
void WriteApplicationChunk(SceneStream& stream, const ApplicationData::value_type& entry);
/// \throw Error* if a name is empty or occurs twice, or if the data exceeds the limit.
void ReadApplicationChunk(SceneStream& stream, ApplicationData& data);

/// \throw HostError if a name is empty or longer than 256 bytes, or if the data exceeds 64 MiB in
/// total; ReadApplicationChunk would reject such data.
void CheckApplicationData(const ApplicationData& data);

}  // namespace trovik
