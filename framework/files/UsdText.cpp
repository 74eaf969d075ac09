// SPDX-License-Identifier: Apache-2.0
#include "framework/files/UsdText.h"

namespace trovik {

std::string UsdPrimName(const std::string& name) {
    std::string result;
    for (const char letter : name) {
        const bool isDigit = letter >= '0' && letter <= '9';
        const bool isLetter =
            (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') || letter == '_';
        if (result.empty() && isDigit) {
            result = "_";
        }
        result += isDigit || isLetter ? letter : '_';
    }
    return result.empty() ? "mesh" : result;
}

std::string UsdQuoted(const std::string& text) {
    std::string quoted = "\"";
    for (const char letter : text) {
        const bool isControl = (letter >= 0 && letter < ' ') || letter == '\x7f';
        if (letter == '"' || letter == '\\') {
            quoted += '\\';
        }
        quoted += isControl ? '_' : letter;
    }
    return quoted + "\"";
}

std::string UsdNames::Unique(const std::string& name) {
    const std::string first = UsdPrimName(name);
    std::string unique = first;
    for (int number = 1; !taken.insert(unique).second; ++number) {
        unique = first + "_" + std::to_string(number);
    }
    return unique;
}

}  // namespace trovik
