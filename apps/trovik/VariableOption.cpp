// SPDX-License-Identifier: Apache-2.0
#include "VariableOption.h"

#include "JsonOutput.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace trovik {

void AddVariableOption(CLI::App& verb, JsonVariables& variables) {
    verb.add_option_function<std::vector<std::string>>(
            "--set",
            [&variables](const std::vector<std::string>& settings) {
                for (const std::string& setting : settings) {
                    const std::size_t end = setting.find('=');
                    variables[setting.substr(0, end)] = setting.substr(end + 1);
                }
            },
            "NAME=VALUE: replaces ${NAME} in the strings of the script; may be given several "
            "times")
        ->allow_extra_args(false)
        ->check([](const std::string& setting) {
            const std::size_t end = setting.find('=');
            if (!IsUtf8(setting)) return "the value is not UTF-8: " + setting;
            return end != std::string::npos && IsVariableName(setting.substr(0, end))
                       ? std::string()
                       : "expected NAME=VALUE, where NAME has letters, digits and underscores, "
                         "got " +
                             setting;
        });
}

}  // namespace trovik
