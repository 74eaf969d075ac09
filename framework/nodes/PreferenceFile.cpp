// SPDX-License-Identifier: Apache-2.0
#include "framework/nodes/PreferenceFile.h"

#include "framework/errors/HostError.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>

namespace trovik {

namespace {

/// Stored values of keys that no library has registered so far.
nlohmann::json& UnknownValues() {
    static nlohmann::json values = nlohmann::json::object();
    return values;
}

}  // namespace

void LoadPreferences(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw HostError(path + ": cannot open: " + std::strerror(errno));
    const nlohmann::json values = nlohmann::json::parse(file, nullptr, false);
    if (!values.is_object()) throw HostError(path + ": not a JSON object of preferences");
    for (const auto& [key, value] : values.items()) {
        if (!value.is_string()) throw HostError(path + ": " + key + ": the value is not a text");
        Attribute* attribute = FindPreference(key);
        const auto text = value.get<std::string>();
        if (attribute == nullptr)
            UnknownValues()[key] = text;
        else if (!attribute->SetFromString(QString::fromStdString(text)))
            throw HostError(path + ": " + key + ": \"" + text + "\" is no value of this preference");
    }
}

void SavePreferences(const std::string& path) {
    nlohmann::json values = UnknownValues();
    for (const std::string& key : PreferenceKeys())
        values[key] = FindPreference(key)->AsString().toStdString();
    const std::string beside = path + ".new";
    std::ofstream file(beside, std::ios::binary);
    file << values.dump(2) << '\n';
    file.close();
    if (!file || std::rename(beside.c_str(), path.c_str()) != 0) {
        const std::string reason = std::strerror(errno);
        std::remove(beside.c_str());
        throw HostError(path + ": cannot write: " + reason);
    }
}

}  // namespace trovik
