// SPDX-License-Identifier: Apache-2.0
#include "framework/nodes/PreferenceFile.h"

#include "framework/errors/HostError.h"
#include "framework/io/OutputFile.h"
#include "framework/json/JsonSchema.h"
#include "framework/json/JsonText.h"

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <filesystem>

namespace trovik {

namespace {

constexpr std::size_t maxFileBytes = std::size_t{1} << 20;

constexpr const char* schemaText = R"({
  "type": "object",
  "entryName": "preference",
  "additionalProperties": {"type": ["string", "number", "boolean"]}
})";

nlohmann::json ReadValues(const std::string& path) {
    static const JsonSchema schema(schemaText);
    return ParseAgainst(schema, ReadDocument(path, maxFileBytes), path);
}

/// Returns whether the preference accepts the text, without changing it.
bool Fits(const Attribute& attribute, const QString& text) {
    if (attribute.attributeType() == AttributeValue<bool>::type) {
        bool value = false;
        return AttributeValue<bool>::FromText(text, value);
    }
    float value = 0.0f;
    return AttributeValue<float>::FromText(text, value);
}

}  // namespace

std::string WrongPreference(const Attribute& attribute, const std::string& given) {
    const bool isFlag = attribute.attributeType() == AttributeValue<bool>::type;
    return std::string("expected ") + (isFlag ? "true or false" : "a number") + ", got " + given;
}

std::string UserPreferencesPath() {
    const char* config = std::getenv("XDG_CONFIG_HOME");
    const char* home = std::getenv("HOME");
    std::filesystem::path folder;
    // The XDG base directory specification requires that a relative path be ignored.
    if (config != nullptr && *config == '/')
        folder = config;
    else if (home != nullptr && *home == '/')
        folder = std::filesystem::path(home) / ".config";
    else
        return "";
    return (folder / "trovik" / "preferences.json").string();
}

void LoadPreferences(const std::string& path) {
    std::map<std::string, std::string> texts;
    const nlohmann::json values = ReadValues(path);
    for (const auto& [key, value] : values.items()) {
        std::string text = value.is_string() ? value.get<std::string>() : value.dump();
        const Attribute* attribute = FindPreference(key);
        if (attribute != nullptr && !Fits(*attribute, QString::fromStdString(text))) {
            throw HostError(FaultMessage(
                path, {FieldPointer("", key), WrongPreference(*attribute, value.dump())}));
        }
        texts[key] = std::move(text);
    }
    for (const auto& [key, text] : texts) {
        if (Attribute* attribute = FindPreference(key))
            attribute->SetFromString(QString::fromStdString(text));
        else
            PendingPreferences()[key] = text;
    }
}

void SavePreferences(const std::string& path) {
    nlohmann::json values = PendingPreferences();
    if (values.is_null()) values = nlohmann::json::object();
    for (const std::string& key : PreferenceKeys())
        values[key] = FindPreference(key)->AsString().toStdString();
    OutputFile file(path);
    file.Write(values.dump(2) + "\n");
    file.Commit();
}

}  // namespace trovik
