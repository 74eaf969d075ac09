// SPDX-License-Identifier: Apache-2.0
#include "framework/json/JsonSchema.h"

#include "framework/errors/HostError.h"
#include "framework/json/JsonRule.h"
#include "framework/json/JsonText.h"

#include <stdexcept>

namespace trovik {

/// Compiles the text of a schema to rules.
class JsonSchema::Compiler {
public:
    Compiler(JsonSchema& made, const nlohmann::json& text) : schema(made), document(text) {}

    const JsonRule* Rule(const nlohmann::json& part) {
        if (part.contains("$ref")) return Definition(part.at("$ref").get<std::string>());
        schema.rules.push_back(std::make_unique<JsonRule>());
        JsonRule& rule = *schema.rules.back();
        Fill(rule, part);
        return &rule;
    }

private:
    const JsonRule* Definition(const std::string& reference) {
        const auto known = definitions.find(reference);
        if (known != definitions.end()) return known->second;
        if (reference.rfind("#/definitions/", 0) != 0)
            throw std::logic_error("a schema has the reference " + reference);
        schema.rules.push_back(std::make_unique<JsonRule>());
        JsonRule& rule = *schema.rules.back();
        // Registered before it is complete, because a definition may refer to itself.
        definitions[reference] = &rule;
        Fill(rule, document.at(nlohmann::json::json_pointer(reference.substr(1))));
        return &rule;
    }

    void Fill(JsonRule& rule, const nlohmann::json& part) {
        for (const auto& [keyword, given] : part.items()) {
            if (keyword == "type") {
                if (given.is_string())
                    rule.types = {given.get<std::string>()};
                else
                    rule.types = given.get<std::vector<std::string>>();
            } else if (keyword == "enum") {
                rule.values = given.get<std::vector<nlohmann::json>>();
            } else if (!FillNumber(rule, keyword, given) && !FillObject(rule, keyword, given) &&
                       !FillArray(rule, keyword, given) && !IsAnnotation(keyword)) {
                throw std::logic_error("a schema has the keyword " + keyword);
            }
        }
    }

    static bool IsAnnotation(const std::string& keyword) {
        for (const char* known : {"$schema", "title", "description", "definitions", "formerName"})
            if (keyword == known) return true;
        return false;
    }

    static bool FillNumber(JsonRule& rule,
                           const std::string& keyword,
                           const nlohmann::json& given) {
        if (keyword == "minimum")
            rule.minimum = given.get<double>();
        else if (keyword == "maximum")
            rule.maximum = given.get<double>();
        else if (keyword == "exclusiveMinimum")
            rule.above = given.get<double>();
        else if (keyword == "exclusiveMaximum")
            rule.below = given.get<double>();
        else if (keyword == "minLength")
            rule.minLength = given.get<std::size_t>();
        else
            return false;
        return true;
    }

    bool FillArray(JsonRule& rule, const std::string& keyword, const nlohmann::json& given) {
        if (keyword == "items")
            rule.items = Rule(given);
        else if (keyword == "minItems")
            rule.minItems = given.get<std::size_t>();
        else if (keyword == "maxItems")
            rule.maxItems = given.get<std::size_t>();
        else if (keyword == "anyOf" || keyword == "oneOf")
            for (const nlohmann::json& alternative : given)
                (keyword == "anyOf" ? rule.anyOf : rule.oneOf).push_back(Rule(alternative));
        else
            return false;
        return true;
    }

    bool FillObject(JsonRule& rule, const std::string& keyword, const nlohmann::json& given) {
        if (keyword == "properties") {
            for (const auto& [name, field] : given.items()) {
                rule.fields[name] = Rule(field);
                if (field.contains("formerName"))
                    rule.formerNames[field.at("formerName").get<std::string>()] = name;
            }
        } else if (keyword == "required") {
            rule.required = given.get<std::vector<std::string>>();
        } else if (keyword == "maxProperties") {
            rule.maxFields = given.get<std::size_t>();
        } else if (keyword == "entryName") {
            rule.entryName = given.get<std::string>();
        } else if (keyword == "additionalProperties") {
            rule.takesOtherFields = !given.is_boolean() || given.get<bool>();
            if (given.is_object()) rule.otherFields = Rule(given);
        } else {
            return false;
        }
        return true;
    }

    JsonSchema& schema;
    const nlohmann::json& document;
    std::map<std::string, const JsonRule*> definitions;
};

JsonSchema::JsonSchema(const std::string& text) {
    const nlohmann::json document = nlohmann::json::parse(text);
    root = Compiler(*this, document).Rule(document);
}

JsonSchema::~JsonSchema() = default;

std::vector<JsonFault> JsonSchema::Check(const nlohmann::json& document,
                                         std::size_t maxFaults) const {
    std::vector<JsonFault> faults;
    CheckValue(*root, document, "", maxFaults, faults);
    return faults;
}

void JsonSchema::RenameFormerFields(nlohmann::json& document) const {
    trovik::RenameFormerFields(*root, document);
}

nlohmann::json ParseAgainst(const JsonSchema& schema,
                            const std::string& text,
                            const std::string& name,
                            std::vector<JsonFault>* faults,
                            const JsonVariables* variables) {
    nlohmann::json document = ParseDocument(text, name, faults);
    schema.RenameFormerFields(document);
    std::vector<JsonFault> first;
    if (variables != nullptr) first = ReplaceVariables(document, *variables);
    if (faults == nullptr) {
        if (first.empty()) first = schema.Check(document, 1);
        if (!first.empty()) throw HostError(FaultMessage(name, first.front()));
    } else {
        faults->insert(faults->end(), first.begin(), first.end());
        // Without a limit, a file that is faulty throughout would produce a list as long as the
        // file.
        constexpr std::size_t maxFaults = 1000;
        const std::vector<JsonFault> found = schema.Check(document, maxFaults);
        faults->insert(faults->end(), found.begin(), found.end());
    }
    RemoveComments(document);
    return document;
}

}  // namespace trovik
