// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/json/JsonFault.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace trovik {

/// A schema or a part of it, with resolved references.
struct JsonRule {
    static constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();

    /// Accepted type names, as in a schema; empty if any type is accepted.
    std::vector<std::string> types;
    /// The accepted values; empty if any value is accepted.
    std::vector<nlohmann::json> values;
    std::optional<double> minimum, maximum, above, below;
    std::size_t minLength = 0;
    const JsonRule* items = nullptr;
    std::size_t minItems = 0, maxItems = unlimited;
    std::map<std::string, const JsonRule*> fields;
    /// Maps the former name of a field to its current name.
    std::map<std::string, std::string> formerNames;
    std::vector<std::string> required;
    std::size_t maxFields = unlimited;
    bool takesOtherFields = true;
    /// The rule for fields that are not in `fields`; null if these are unrestricted.
    const JsonRule* otherFields = nullptr;
    std::string entryName = "field";
    std::vector<const JsonRule*> anyOf, oneOf;
};

/// Appends the faults in a value until the list has `maxFaults` entries.
void CheckValue(const JsonRule& rule,
                const nlohmann::json& value,
                const std::string& pointer,
                std::size_t maxFaults,
                std::vector<JsonFault>& faults);

/// Replaces former field names with the current ones in a value and in all values nested in it. If
/// an object has both the former and the current name, neither is renamed, and CheckValue reports
/// it.
void RenameFormerFields(const JsonRule& rule, nlohmann::json& value);

/// Returns whether the value has one of the rule's types.
bool FitsType(const JsonRule& rule, const nlohmann::json& value);

}  // namespace trovik
