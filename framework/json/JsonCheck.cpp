// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/Suggestion.h"
#include "framework/json/JsonRule.h"
#include "framework/json/JsonWords.h"

#include <algorithm>

namespace trovik {

namespace {

using nlohmann::json;

bool IsOfType(const std::string& type, const json& value) {
    if (type == "number") return value.is_number();
    if (type == "integer") return value.is_number_integer();
    if (type == "string") return value.is_string();
    if (type == "boolean") return value.is_boolean();
    if (type == "array") return value.is_array();
    if (type == "object") return value.is_object();
    return value.is_null();
}

/// Returns whether an alternative specifies nothing except which fields must be present.
bool IsChoiceOfFields(const JsonRule& rule) {
    const auto all = [](const std::vector<const JsonRule*>& rules) {
        return std::all_of(
            rules.begin(), rules.end(), [](const JsonRule* one) { return IsChoiceOfFields(*one); });
    };
    const bool saysMore = !rule.types.empty() || !rule.values.empty() || !rule.fields.empty() ||
                          rule.items != nullptr;
    return !saysMore && (!rule.required.empty() || !rule.anyOf.empty()) && all(rule.anyOf) &&
           all(rule.oneOf);
}

/// Appends the fields that such alternatives require, in order.
void AddFields(const std::vector<const JsonRule*>& alternatives, std::vector<std::string>& names) {
    for (const JsonRule* rule : alternatives) {
        names.insert(names.end(), rule->required.begin(), rule->required.end());
        AddFields(rule->anyOf, names);
        AddFields(rule->oneOf, names);
    }
}

/// Checks one document.
class Walk {
public:
    Walk(std::size_t most, std::vector<JsonFault>& list) : maxFaults(most), faults(list) {}

    void Check(const JsonRule& rule, const json& value, const std::string& pointer) {
        if (IsFull()) return;
        const std::size_t before = faults.size();
        if (!FitsType(rule, value) || !FitsValues(rule, value) || !FitsSize(rule, value)) {
            Expected(rule, value, pointer);
            return;
        }
        if (value.is_object()) CheckFields(rule, value, pointer);
        if (value.is_array() && rule.items != nullptr)
            for (std::size_t i = 0; i < value.size() && !IsFull(); ++i)
                Check(*rule.items, value[i], ItemPointer(pointer, i));
        // Misspelt or missing fields would also cause faults in the following checks.
        if (faults.size() != before) return;
        if (!rule.anyOf.empty()) CheckAlternatives(rule, rule.anyOf, false, value, pointer);
        if (!rule.oneOf.empty()) CheckAlternatives(rule, rule.oneOf, true, value, pointer);
    }

private:
    bool IsFull() const { return faults.size() >= maxFaults; }

    void Add(const std::string& pointer, const std::string& reason) {
        if (!IsFull()) faults.push_back({pointer, reason});
    }

    void Expected(const JsonRule& rule, const json& value, const std::string& pointer) {
        std::string reason = "expected " + Accepted(rule) + ", got " + Shown(value);
        if (value.is_string()) {
            std::vector<std::string> words;
            for (const json& one : rule.values)
                if (one.is_string()) words.push_back(one.get<std::string>());
            const std::string closest = ClosestWord(value.get<std::string>(), words);
            if (!closest.empty() && words.size() > 1)
                reason += "; did you mean " + Quoted(closest) + "?";
        }
        Add(pointer, reason);
    }

    static bool FitsValues(const JsonRule& rule, const json& value) {
        return rule.values.empty() ||
               std::find(rule.values.begin(), rule.values.end(), value) != rule.values.end();
    }

    static bool FitsSize(const JsonRule& rule, const json& value) {
        if (value.is_number()) {
            const auto number = value.get<double>();
            return !(rule.minimum && number < *rule.minimum) &&
                   !(rule.maximum && number > *rule.maximum) &&
                   !(rule.above && number <= *rule.above) && !(rule.below && number >= *rule.below);
        }
        if (value.is_string()) return value.get_ref<const std::string&>().size() >= rule.minLength;
        if (value.is_array()) return value.size() >= rule.minItems && value.size() <= rule.maxItems;
        return !value.is_object() || value.size() <= rule.maxFields;
    }

    void CheckFields(const JsonRule& rule, const json& object, const std::string& pointer) {
        std::vector<std::string> meant;
        for (const auto& [name, value] : object.items()) {
            if (IsFull()) return;
            const auto known = rule.fields.find(name);
            if (known != rule.fields.end()) {
                Check(*known->second, value, FieldPointer(pointer, name));
            } else if (const auto former = rule.formerNames.find(name);
                       former != rule.formerNames.end()) {
                Add(FieldPointer(pointer, name),
                    "is the former name of " + Quoted(former->second) + ", which is also given");
            } else if (!rule.takesOtherFields) {
                std::vector<std::string> names;
                for (const auto& [field, ignored] : rule.fields) names.push_back(field);
                meant.push_back(ClosestWord(name, names));
                Add(FieldPointer(pointer, name),
                    "unknown " + rule.entryName + Suggestion(name, names));
            } else if (rule.otherFields != nullptr) {
                Check(*rule.otherFields, value, FieldPointer(pointer, name));
            }
        }
        for (const std::string& name : rule.required) {
            if (object.contains(name)) continue;
            if (std::find(meant.begin(), meant.end(), name) == meant.end())
                Add(pointer, "the field \"" + name + "\" is missing");
        }
    }

    static bool Passes(const JsonRule& rule, const json& value) {
        std::vector<JsonFault> found;
        Walk(1, found).Check(rule, value, "");
        return found.empty();
    }

    void CheckAlternatives(const JsonRule& rule,
                           const std::vector<const JsonRule*>& alternatives,
                           bool onlyOne,
                           const json& value,
                           const std::string& pointer) {
        std::vector<const JsonRule*> passing;
        for (const JsonRule* alternative : alternatives)
            if (Passes(*alternative, value)) passing.push_back(alternative);
        if (passing.size() == 1 || (passing.size() > 1 && !onlyOne)) return;
        const bool areFields =
            std::all_of(alternatives.begin(), alternatives.end(), [](const JsonRule* one) {
                return IsChoiceOfFields(*one);
            });
        if (areFields) {
            ExpectedFields(passing.empty() ? alternatives : passing, value, pointer);
            return;
        }
        // The alternatives whose types match the value.
        std::vector<const JsonRule*> meant;
        for (const JsonRule* alternative : alternatives)
            if (FitsType(*alternative, value)) meant.push_back(alternative);
        if (meant.size() == 1)
            Check(*meant.front(), value, pointer);
        else
            Expected(rule, value, pointer);
    }

    /// \param alternatives  the matching alternatives if there are several, or all alternatives if
    /// none matches.
    void ExpectedFields(const std::vector<const JsonRule*>& alternatives,
                        const json& object,
                        const std::string& pointer) {
        std::vector<std::string> names;
        AddFields(alternatives, names);
        std::vector<std::string> all, present;
        for (const std::string& name : names) {
            all.push_back(Quoted(name));
            if (object.contains(name)) present.push_back(Quoted(name));
        }
        Add(pointer,
            present.size() > 1 ? "expected only one of " + Joined(present, "and")
                               : "expected one of the fields " + Joined(all, "or"));
    }

    std::size_t maxFaults;
    std::vector<JsonFault>& faults;
};

}  // namespace

bool FitsType(const JsonRule& rule, const json& value) {
    if (!rule.values.empty())
        return std::any_of(rule.values.begin(), rule.values.end(), [&value](const json& one) {
            return one.type() == value.type() || (one.is_number() && value.is_number());
        });
    return rule.types.empty() ||
           std::any_of(rule.types.begin(), rule.types.end(), [&value](const std::string& type) {
               return IsOfType(type, value);
           });
}

void RenameFormerFields(const JsonRule& rule, json& value) {
    if (!value.is_structured()) return;
    for (const auto* alternatives : {&rule.anyOf, &rule.oneOf})
        for (const JsonRule* alternative : *alternatives) RenameFormerFields(*alternative, value);
    if (value.is_array() && rule.items != nullptr)
        for (json& item : value) RenameFormerFields(*rule.items, item);
    if (!value.is_object()) return;
    for (const auto& [former, current] : rule.formerNames) {
        const auto found = value.find(former);
        if (found == value.end() || value.contains(current)) continue;
        json field = std::move(*found);
        value.erase(found);
        value[current] = std::move(field);
    }
    for (auto& [name, field] : value.items()) {
        const auto known = rule.fields.find(name);
        if (known != rule.fields.end())
            RenameFormerFields(*known->second, field);
        else if (rule.otherFields != nullptr)
            RenameFormerFields(*rule.otherFields, field);
    }
}

void CheckValue(const JsonRule& rule,
                const json& value,
                const std::string& pointer,
                std::size_t maxFaults,
                std::vector<JsonFault>& faults) {
    Walk(maxFaults, faults).Check(rule, value, pointer);
}

}  // namespace trovik
