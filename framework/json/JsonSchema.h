// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/json/JsonVariables.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace trovik {

struct JsonRule;

/// A JSON schema (draft 7) whose error messages are written for the author of a document.
///
/// Supported keywords: type, enum, properties, required, additionalProperties, maxProperties, items
/// (one schema for all), minItems, maxItems, minLength (bytes), minimum, maximum, exclusiveMinimum,
/// exclusiveMaximum, anyOf, oneOf, $ref to "#/definitions/…", and the annotations $schema, title
/// and description. There are two extensions of draft 7. "entryName" is the noun, such as
/// "setting", that messages about unknown fields of an object use. "formerName", in the schema of a
/// field, is a name that RenameFormerFields replaces with the field's current name. "integer"
/// accepts only numbers that are written without a fraction or an exponent.
///
/// Messages have the form "expected ACCEPTED VALUES, got VALUE". Immutable after construction;
/// thread-safe.
class TROVIK_API JsonSchema {
public:
    /// \param text  the text of the schema.
    /// \throw std::logic_error for an unsupported keyword, and nlohmann::json::exception for text
    /// that is not a schema. Both indicate defects in the program.
    explicit JsonSchema(const std::string& text);
    ~JsonSchema();
    JsonSchema(const JsonSchema&) = delete;
    JsonSchema& operator=(const JsonSchema&) = delete;

    /// \return the faults in a document, outer values first and fields in alphabetical order; empty
    /// if it is valid. Cost: each value is visited once.
    std::vector<JsonFault> Check(
        const nlohmann::json& document,
        std::size_t maxFaults = std::numeric_limits<std::size_t>::max()) const;

    /// Replaces former field names with the current ones, at any depth. Messages about the document
    /// then use the current names.
    void RenameFormerFields(nlohmann::json& document) const;

private:
    class Compiler;

    std::vector<std::unique_ptr<JsonRule>> rules;
    const JsonRule* root = nullptr;
};

/// Parses a document, renames fields that have a former name, checks it and removes its comments.
/// \param faults  receives the faults, up to a limit; if null, the first fault is thrown. Syntax
/// errors are always thrown.
/// \param variables  replaced before the check (ReplaceVariables); null to leave strings unchanged.
/// \throw HostError with `name`.
TROVIK_API nlohmann::json ParseAgainst(const JsonSchema& schema,
                                       const std::string& text,
                                       const std::string& name,
                                       std::vector<JsonFault>* faults = nullptr,
                                       const JsonVariables* variables = nullptr);

}  // namespace trovik
