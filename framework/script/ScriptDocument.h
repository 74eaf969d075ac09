// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/json/JsonFault.h"
#include "host/Api.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace trovik {

/// The JSON schemas of stroke scripts and of recorded pen streams, as docs/ has them.
TROVIK_API const char* StrokeScriptSchema();
TROVIK_API const char* PenStreamSchema();

/// Reads a stroke script of at most 64 MiB and checks it against the schema; "-" is standard input.
/// Comments are removed, so a step that holds only a comment becomes an empty object.
/// \param faults  receives the faults that leave the text readable, at most 1000 of them besides
/// repeated fields; if null, the first one is an error.
/// \throw HostError of one line: file, place (line, or JSON pointer), reason.
TROVIK_API nlohmann::json ReadStrokeScript(const std::string& path,
                                           std::vector<JsonFault>* faults = nullptr);

/// The same for a script in memory; `name` stands for the file in messages.
TROVIK_API nlohmann::json ParseStrokeScript(const std::string& text, const std::string& name);

/// Checks one step without comments. \throw HostError with the pointer within the step.
TROVIK_API void CheckStep(const nlohmann::json& step, const std::string& name);

}  // namespace trovik
