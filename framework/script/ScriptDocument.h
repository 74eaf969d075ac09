// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace trovik {

/// The JSON schema of stroke scripts, as docs/stroke-script.schema.json has it.
const char* StrokeScriptSchema();

/// Reads a stroke script and checks it against the schema.
/// \throw HostError of one line: file, place (line, or JSON pointer), reason.
nlohmann::json ReadStrokeScript(const std::string& path);

/// The same for a script in memory; `name` stands for the file in messages.
nlohmann::json ParseStrokeScript(const std::string& text, const std::string& name);

}  // namespace trovik
