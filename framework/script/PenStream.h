// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/script/FieldReader.h"
#include "framework/strokes/PathSample.h"

#include <string>
#include <vector>

namespace trovik {

/// Reads recorded pen samples: [x, y, pressure, milliseconds], followed by two numbers if the pen
/// reports its tilt; see PathSample. Timestamps need not ascend.
/// \param list  checked against the schema.
/// \throw HostError that identifies the sample if a number is out of range.
TROVIK_API std::vector<PathSample> PenSamples(const FieldReader& list);

/// Parses a recorded pen stream, described by docs/pen-stream.schema.json.
/// \param name  used in messages.
/// \throw HostError with this name.
TROVIK_API std::vector<PathSample> ParsePenStream(const std::string& text, const std::string& name);

/// \throw HostError if the file cannot be read, is larger than 16 MiB, or is not a pen stream.
TROVIK_API std::vector<PathSample> ReadPenStream(const std::string& path);

}  // namespace trovik
