// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/nodes/SceneStream.h"
#include "framework/scene/ApplicationData.h"

namespace trovik {

/// Chunk APPL: the data of one application. A scene has one per entry of ApplicationData.
void WriteApplicationChunk(SceneStream& stream, const ApplicationData::value_type& entry);
/// \throw Error* for a name that is empty or occurs twice, or data beyond the limit.
void ReadApplicationChunk(SceneStream& stream, ApplicationData& data);

/// \throw HostError for a name that is empty or longer than 256 bytes, and for data of more than 64
/// MiB in total, which ReadApplicationChunk would reject.
void CheckApplicationData(const ApplicationData& data);

}  // namespace trovik
