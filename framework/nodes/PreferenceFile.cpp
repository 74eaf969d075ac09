// SPDX-License-Identifier: Apache-2.0
#include "framework/nodes/PreferenceFile.h"

#include "framework/errors/HostError.h"
#include "framework/files/OutputFile.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <cstring>
#include <fstream>

namespace trovik {

namespace {

nlohmann::json ParseObject(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw HostError(path + ": cannot open: " + std::strerror(errno));
    nlohmann::json values;
    try {
        values = nlohmann::json::parse(file);
    } catch (const nlohmann::json::parse_error& error) {
        throw HostError(path + ": byte " + std::to_string(error.byte) + ": not valid JSON");
    }
    if (!values.is_object()) throw HostError(path + ": not a JSON object of preferences");
    return values;
}

/// Whether the preference can take the text; nothing is changed.
bool Fits(const Attribute& attribute, const QString& text) {
    if (attribute.attributeType() == AttributeValue<bool>::type) {
        bool value = false;
        return AttributeValue<bool>::FromText(text, value);
    }
    float value = 0.0f;
    return AttributeValue<float>::FromText(text, value);
}

}  // namespace

void LoadPreferences(const std::string& path) {
    std::map<std::string, std::string> texts;
    const nlohmann::json values = ParseObject(path);
    for (const auto& [key, value] : values.items()) {
        if (!value.is_string() && !value.is_number() && !value.is_boolean())
            throw HostError(path + ": " + key + ": the value is no text, number or truth value");
        std::string text = value.is_string() ? value.get<std::string>() : value.dump();
        const Attribute* attribute = FindPreference(key);
        if (attribute != nullptr && !Fits(*attribute, QString::fromStdString(text))) {
            throw HostError(path + ": " + key + ": \"" + text +
                            "\" is no value of this preference");
        }
        texts[key] = std::move(text);
    }
    for (const auto& [key, text] : texts) {
        if (Attribute* attribute = FindPreference(key))
            attribute->SetFromString(QString::fromStdString(text));
        else
            UnclaimedPreferences()[key] = text;
    }
}

void SavePreferences(const std::string& path) {
    nlohmann::json values = UnclaimedPreferences();
    if (values.is_null()) values = nlohmann::json::object();
    for (const std::string& key : PreferenceKeys())
        values[key] = FindPreference(key)->AsString().toStdString();
    OutputFile file(path);
    file.Write(values.dump(2) + "\n");
    file.Commit();
}

}  // namespace trovik
