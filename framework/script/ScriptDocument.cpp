// SPDX-License-Identifier: Apache-2.0
#include "framework/script/ScriptDocument.h"

#include "framework/errors/HostError.h"

#include <valijson/adapters/nlohmann_json_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validation_results.hpp>
#include <valijson/validator.hpp>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

namespace trovik {

namespace {

/// The validator names places as "<root>", "[steps]", "[0]"; users know JSON pointers.
std::string Pointer(const std::vector<std::string>& context) {
    std::string pointer;
    for (const std::string& part : context) {
        if (part == "<root>") continue;
        std::string name = part;
        std::erase(name, '[');
        std::erase(name, ']');
        std::erase(name, '"');
        pointer += "/" + name;
    }
    return pointer.empty() ? "/" : pointer;
}

std::string OneLine(std::string text) {
    for (char& c : text)
        if (c == '\n' || c == '\r') c = ' ';
    return text;
}

void CheckAgainstSchema(const nlohmann::json& script, const std::string& name) {
    static const valijson::Schema* schema = [] {
        auto* parsed = new valijson::Schema;
        const nlohmann::json text = nlohmann::json::parse(StrokeScriptSchema());
        valijson::SchemaParser parser;
        parser.populateSchema(valijson::adapters::NlohmannJsonAdapter(text), *parsed);
        return parsed;
    }();
    valijson::Validator validator(valijson::Validator::kStrongTypes);
    valijson::ValidationResults results;
    const valijson::adapters::NlohmannJsonAdapter target(script);
    if (validator.validate(*schema, target, &results)) return;
    // The innermost place says most.
    std::string place = "/";
    std::string reason = "not a stroke script";
    std::size_t depth = 0;
    for (valijson::ValidationResults::Error error; results.popError(error);) {
        if (error.context.size() < depth) continue;
        if (error.context.size() == depth && depth != 0) continue;
        depth = error.context.size();
        place = Pointer(error.context);
        reason = error.description;
    }
    throw HostError(name + ": " + place + ": " + OneLine(reason));
}

}  // namespace

nlohmann::json ParseStrokeScript(const std::string& text, const std::string& name) {
    nlohmann::json script;
    try {
        script = nlohmann::json::parse(text);
    } catch (const nlohmann::json::exception& error) {
        throw HostError(name + ": not valid JSON: " + OneLine(error.what()));
    }
    CheckAgainstSchema(script, name);
    return script;
}

nlohmann::json ReadStrokeScript(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    if (!file || !(text << file.rdbuf()))
        throw HostError(path + ": cannot read: " + std::strerror(errno == 0 ? EIO : errno));
    return ParseStrokeScript(text.str(), path);
}

}  // namespace trovik
