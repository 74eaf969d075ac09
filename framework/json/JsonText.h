// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/json/JsonFault.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace trovik {

/// Returns whether the path denotes standard input.
TROVIK_API bool IsStandardInput(const std::string& path);
/// Returns the name of a file for use in messages: the path, or "standard input".
TROVIK_API std::string DocumentName(const std::string& path);

/// Reads a whole text file; "-" is standard input.
/// \throw HostError with the file and the reason, also if the file is larger than `maxBytes`; at
/// most that many bytes are read.
TROVIK_API std::string ReadDocument(const std::string& path, std::size_t maxBytes);

/// Parses a JSON text (RFC 8259, UTF-8) with at most 64 nested arrays and objects.
/// \param name  name of the file, for messages.
/// \param repeated  receives a fault for each duplicate field of an object; the first value is
/// used. If null, the first duplicate field is an error. \throw HostError with the line and column
/// of a syntax error.
TROVIK_API nlohmann::json ParseDocument(const std::string& text,
                                        const std::string& name,
                                        std::vector<JsonFault>* repeated = nullptr);

/// Removes the "comment" fields of all objects.
TROVIK_API void RemoveComments(nlohmann::json& document);

}  // namespace trovik
