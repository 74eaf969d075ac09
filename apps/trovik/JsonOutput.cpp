// SPDX-License-Identifier: Apache-2.0
#include "JsonOutput.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>

namespace trovik {

using nlohmann::json;

namespace {

std::string PercentEncoded(const std::string& text) {
    constexpr std::string_view plain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    constexpr const char* digits = "0123456789ABCDEF";
    std::string encoded;
    for (const char letter : text) {
        if (plain.find(letter) != std::string_view::npos) {
            encoded += letter;
            continue;
        }
        const auto byte = static_cast<unsigned char>(letter);
        encoded += {'%', digits[byte >> 4], digits[byte & 15]};
    }
    return encoded;
}

bool IsListOfStrings(const json& value) {
    return value.is_array() &&
           std::all_of(value.begin(), value.end(), [](const json& one) { return one.is_string(); });
}

void AddBytes(json& value) {
    json added = json::object();
    if (value.is_object()) {
        for (const auto& [key, field] : value.items()) {
            if (field.is_string() && !IsUtf8(field)) {
                added[key + "Bytes"] = PercentEncoded(field.get<std::string>());
            } else if (IsListOfStrings(field) && !IsUtf8(field)) {
                json& list = added[key + "Bytes"] = json::array();
                for (const json& one : field)
                    list.push_back(PercentEncoded(one.get<std::string>()));
            }
        }
        value.update(added);
    }
    if (value.is_structured())
        for (json& part : value) AddBytes(part);
}

}  // namespace

bool IsUtf8(const json& text) {
    try {
        // The serialiser rejects text that is not UTF-8.
        return !text.dump().empty();
    } catch (const json::type_error&) {
        return false;
    }
}

void PrintJson(const json& document) {
    using Handler = json::error_handler_t;
    json printed = document;
    if (!IsUtf8(printed)) AddBytes(printed);
    std::printf("%s\n", printed.dump(2, ' ', false, Handler::replace).c_str());
}

}  // namespace trovik
