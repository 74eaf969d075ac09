// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/json/JsonVariables.h"
#include "host/Api.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace trovik {

/// The JSON schemas of stroke scripts and recorded pen streams; identical to the files in docs/.
TROVIK_API const char* StrokeScriptSchema();
TROVIK_API const char* PenStreamSchema();

/// Reads a stroke script of at most 64 MiB and checks it against the schema; "-" is standard input.
/// Comments are removed, so a step that contains only a comment becomes an empty object.
/// \param faults  receives the schema errors of a script that can be parsed, at most 1000, not
/// counting repeated fields and variables; if null, the first error is thrown.
/// \param variables  replaced in all strings before the check (ReplaceVariables); null to leave
/// strings unchanged.
/// \throw HostError with one line: file, position (line, or JSON pointer), reason.
TROVIK_API nlohmann::json ReadStrokeScript(const std::string& path,
                                           std::vector<JsonFault>* faults = nullptr,
                                           const JsonVariables* variables = nullptr);

/// Parses and checks a script in memory; `name` replaces the file in messages.
TROVIK_API nlohmann::json ParseStrokeScript(const std::string& text, const std::string& name);

/// Checks one step from which comments have been removed. \return the step with the current names
/// of all fields. \throw HostError with the pointer within the step.
TROVIK_API nlohmann::json CheckedStep(const nlohmann::json& step, const std::string& name);

}  // namespace trovik
