// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/script/FieldReader.h"
#include "framework/strokes/PathSample.h"

#include <string>
#include <vector>

namespace trovik {

/// Samples of a pen as they were recorded: [x, y, pressure, milliseconds], and, where the pen tells
/// its tilt, two more numbers, see PathSample. Times need not ascend.
/// \param list  checked against the schema. \throw HostError for numbers out of range, naming the
/// sample.
TROVIK_API std::vector<PathSample> PenSamples(const FieldReader& list);

/// A recorded pen stream, as docs/pen-stream.schema.json describes it.
/// \param name  for messages. \throw HostError naming it.
TROVIK_API std::vector<PathSample> ParsePenStream(const std::string& text, const std::string& name);

/// \throw HostError when the file cannot be read, or is larger than 16 MiB, or is no stream.
TROVIK_API std::vector<PathSample> ReadPenStream(const std::string& path);

}  // namespace trovik
