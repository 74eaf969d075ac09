// SPDX-License-Identifier: Apache-2.0
#include "framework/json/JsonVariables.h"

#include "framework/errors/Suggestion.h"

#include <algorithm>

namespace trovik {

namespace {

bool IsNameStart(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }

bool IsNameLetter(char c) { return IsNameStart(c) || (c >= '0' && c <= '9'); }

class Replacement {
public:
    explicit Replacement(const JsonVariables& givenVariables) : variables(givenVariables) {}

    std::vector<JsonFault> faults;

    void Visit(nlohmann::json& value, const std::string& pointer) {
        if (value.is_string()) {
            auto& text = value.get_ref<std::string&>();
            // Most strings have no variable.
            if (text.find("${") != std::string::npos) Replace(text, pointer);
        } else if (value.is_array()) {
            for (std::size_t i = 0; i < value.size(); ++i)
                if (MayContainStrings(value[i])) Visit(value[i], ItemPointer(pointer, i));
        } else if (value.is_object()) {
            for (const auto& [name, field] : value.items())
                if (name != "comment" && MayContainStrings(field))
                    Visit(field, FieldPointer(pointer, name));
        }
    }

private:
    /// Numbers, of which a script may have millions, need no pointer.
    static bool MayContainStrings(const nlohmann::json& value) {
        return value.is_string() || value.is_structured();
    }

    void Replace(std::string& text, const std::string& pointer) {
        std::string replaced;
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t next = std::min(text.find('$', at), text.size());
            replaced.append(text, at, next - at);
            at = next;
            if (text.compare(at, 3, "$${") == 0) {
                replaced += "${";
                at += 3;
            } else if (text.compare(at, 2, "${") == 0) {
                const std::size_t end = text.find('}', at);
                const std::string name =
                    end == std::string::npos ? std::string() : text.substr(at + 2, end - at - 2);
                if (!Append(name, pointer, replaced)) return;
                at = end + 1;
            } else if (at < text.size()) {
                replaced += text[at++];
            }
        }
        text = std::move(replaced);
    }

    /// Appends the value of a variable.
    /// \return false after a fault.
    bool Append(const std::string& name, const std::string& pointer, std::string& text) {
        if (!IsVariableName(name)) {
            faults.push_back({pointer,
                              "${ must be followed by the name of a variable and }; $${ stands for "
                              "the characters ${"});
            return false;
        }
        const auto found = variables.find(name);
        if (found == variables.end()) {
            std::vector<std::string> names;
            for (const auto& [known, value] : variables) names.push_back(known);
            faults.push_back(
                {pointer, "unknown variable \"" + name + "\"" + Suggestion(name, names)});
            return false;
        }
        text += found->second;
        return true;
    }

    const JsonVariables& variables;
};

}  // namespace

bool IsVariableName(const std::string& name) {
    return !name.empty() && IsNameStart(name.front()) &&
           std::all_of(name.begin(), name.end(), IsNameLetter);
}

std::vector<JsonFault> ReplaceVariables(nlohmann::json& document, const JsonVariables& variables) {
    Replacement replacement(variables);
    replacement.Visit(document, "");
    return std::move(replacement.faults);
}

}  // namespace trovik
