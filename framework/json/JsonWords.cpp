// SPDX-License-Identifier: Apache-2.0
#include "framework/json/JsonWords.h"

#include <charconv>

namespace trovik {

namespace {

using nlohmann::json;

std::string Text(double number) {
    char digits[32];
    return {digits, std::to_chars(digits, digits + sizeof digits, number).ptr};
}

std::string Range(const JsonRule& rule) {
    if (rule.minimum && rule.maximum)
        return " from " + Text(*rule.minimum) + " to " + Text(*rule.maximum);
    std::string range;
    if (rule.above) range += " greater than " + Text(*rule.above);
    if (rule.minimum) range += " of at least " + Text(*rule.minimum);
    const char* separator = range.empty() ? "" : " and";
    if (rule.below) range += separator + (" less than " + Text(*rule.below));
    if (rule.maximum) range += separator + (" at most " + Text(*rule.maximum));
    return range;
}

std::string ItemNoun(const JsonRule* items, bool isOne) {
    std::string noun = "item";
    if (items != nullptr && items->types.size() == 1) {
        const std::string& type = items->types.front();
        noun = type == "integer" ? "whole number" : type;
    }
    return isOne ? noun : noun + "s";
}

std::string Array(const JsonRule& rule) {
    const std::string noun = ItemNoun(rule.items, false);
    const std::size_t low = rule.minItems;
    const std::size_t high = rule.maxItems;
    std::string text = "an array of ";
    if (low == high) return text + std::to_string(low) + " " + ItemNoun(rule.items, low == 1);
    if (high != JsonRule::unlimited && low == 0)
        return text + "at most " + std::to_string(high) + " " + noun;
    if (high != JsonRule::unlimited)
        return text + std::to_string(low) + " to " + std::to_string(high) + " " + noun;
    if (low > 0) return text + std::to_string(low) + " or more " + noun;
    return text + noun;
}

std::string AcceptedType(const JsonRule& rule, const std::string& type) {
    if (type == "number") return "a number" + Range(rule);
    if (type == "integer") return "a whole number" + Range(rule);
    if (type == "string") return rule.minLength > 0 ? "a non-empty string" : "a string";
    if (type == "boolean") return "true or false";
    if (type == "array") return Array(rule);
    if (type == "object") return "an object";
    return type;
}

}  // namespace

std::string Quoted(const std::string& text) {
    constexpr std::size_t maxBytes = 40;
    std::string shown = text;
    if (shown.size() > maxBytes) {
        std::size_t end = maxBytes;
        while (end > 0 && (static_cast<unsigned char>(shown[end]) & 0xc0) == 0x80) --end;
        shown.resize(end);
        shown += "...";
    }
    return json(shown).dump(-1, ' ', false, json::error_handler_t::replace);
}

std::string Joined(const std::vector<std::string>& words, const std::string& lastWord) {
    std::string text;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (i != 0)
            text += i + 1 == words.size() && !lastWord.empty() ? " " + lastWord + " " : ", ";
        text += words[i];
    }
    return text;
}

std::string Accepted(const JsonRule& rule) {
    if (!rule.values.empty()) {
        std::vector<std::string> values;
        for (const json& value : rule.values) values.push_back(value.dump());
        return values.size() == 1 ? values.front() : "one of " + Joined(values, "");
    }
    std::vector<std::string> kinds;
    for (const std::string& type : rule.types) kinds.push_back(AcceptedType(rule, type));
    if (kinds.empty())
        for (const auto* alternatives : {&rule.anyOf, &rule.oneOf})
            for (const JsonRule* one : *alternatives) kinds.push_back(Accepted(*one));
    return kinds.empty() ? "a value" : Joined(kinds, "or");
}

std::string Shown(const json& value) {
    if (value.is_string()) return Quoted(value.get_ref<const std::string&>());
    if (value.is_object()) return value.empty() ? "an empty object" : "an object";
    if (!value.is_array()) return value.dump();
    if (value.empty()) return "an empty array";
    return "an array of " + std::to_string(value.size()) + (value.size() == 1 ? " item" : " items");
}

}  // namespace trovik
