// SPDX-License-Identifier: Apache-2.0
#include "framework/trace/JsonFields.h"

#include <nlohmann/json.hpp>

#include <charconv>
#include <cmath>

namespace trovik {

namespace {

constexpr int significantDigits = 9;

}  // namespace

std::string JsonFloat(float value) {
    if (std::isnan(value)) return "\"nan\"";
    if (std::isinf(value)) return value < 0.0f ? "\"-inf\"" : "\"inf\"";
    char buffer[32];
    const auto end = std::to_chars(
        buffer, buffer + sizeof buffer, value, std::chars_format::general, significantDigits);
    std::string text(buffer, end.ptr);
    if (text.find_first_of(".e") == std::string::npos) text += ".0";
    return text;
}

std::string JsonFloats(const float* values, std::size_t count) {
    std::vector<std::string> items;
    for (std::size_t i = 0; i < count; ++i) items.push_back(JsonFloat(values[i]));
    return JsonList(items);
}

std::string JsonString(const std::string& text) {
    return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string JsonList(const std::vector<std::string>& items) {
    std::string list = "[";
    for (const std::string& item : items) {
        if (list.size() > 1) list += ",";
        list += item;
    }
    return list + "]";
}

void JsonFields::Set(const std::string& name, std::string text) {
    for (auto& [key, value] : fields) {
        if (key != name) continue;
        value = std::move(text);
        return;
    }
    fields.emplace_back(name, std::move(text));
}

void JsonFields::Append(const JsonFields& other) {
    for (const auto& [name, text] : other.fields) Set(name, text);
}

const std::string* JsonFields::Find(const std::string& name) const {
    for (const auto& [key, value] : fields)
        if (key == name) return &value;
    return nullptr;
}

JsonFields JsonFields::ChangedSince(const JsonFields& earlier) const {
    JsonFields changed;
    for (const auto& [name, text] : fields) {
        const std::string* before = earlier.Find(name);
        if (before == nullptr || *before != text) changed.fields.emplace_back(name, text);
    }
    return changed;
}

std::string JsonFields::Text() const {
    std::string text = "{";
    for (const auto& [name, value] : fields) {
        if (text.size() > 1) text += ",";
        text += JsonString(name) + ":" + value;
    }
    return text + "}";
}

}  // namespace trovik
