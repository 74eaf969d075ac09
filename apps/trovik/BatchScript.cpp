// SPDX-License-Identifier: Apache-2.0
#include "BatchScript.h"

#include "framework/errors/HostError.h"
#include "framework/json/JsonText.h"
#include "framework/script/ScriptDocument.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <map>
#include <set>

namespace trovik {

namespace {

namespace fs = std::filesystem;

void AddTexts(const nlohmann::json& value, std::set<std::string>& texts) {
    if (value.is_string())
        texts.insert(value.get<std::string>());
    else if (value.is_structured())
        for (const nlohmann::json& part : value) AddTexts(part, texts);
}

/// Returns the different strings of a value as an array.
nlohmann::json TextsOf(const nlohmann::json& value) {
    std::set<std::string> texts;
    AddTexts(value, texts);
    return texts;
}

nlohmann::json Replaced(nlohmann::json texts, const JsonVariables& variables) {
    ReplaceVariables(texts, variables);
    return texts;
}

bool UsesInput(const nlohmann::json& texts, const JsonVariables& variables) {
    JsonVariables others = variables;
    others["input"] += "/other";
    return Replaced(texts, variables) != Replaced(texts, others);
}

fs::path Canonical(const fs::path& path) {
    std::error_code failed;
    const fs::path canonical = fs::weakly_canonical(fs::absolute(path), failed);
    return failed ? path : canonical;
}

/// \param texts  the strings of the steps, before replacement.
void CheckTargets(const std::string& script,
                  const nlohmann::json& texts,
                  const std::vector<BatchInput>& inputs,
                  const fs::path& outputFolder) {
    std::map<fs::path, std::string> pathsOfInputs;
    for (const BatchInput& input : inputs)
        pathsOfInputs.emplace(Canonical(input.absolutePath), input.path);
    for (const BatchInput& input : inputs) {
        for (const nlohmann::json& text : Replaced(texts, input.variables)) {
            const fs::path target(text.get<std::string>());
            // An absolute path cannot be written; it is that of a file to read, such as ${input}.
            if (target.empty() || target.is_absolute()) continue;
            const auto found = pathsOfInputs.find(Canonical(outputFolder / target));
            if (found == pathsOfInputs.end()) continue;
            throw HostError(script + ": the file " + target.string() +
                            " in the output folder is the input " + found->second +
                            "; use --output to select another folder, or another file name, such "
                            "as ${stem}-result.ply");
        }
    }
}

}  // namespace

void CheckBatchScript(const std::string& script,
                      const std::vector<BatchInput>& inputs,
                      const std::string& outputFolder) {
    if (IsStandardInput(script))
        throw HostError(
            "a batch cannot read its script from standard input, because each process reads the "
            "script");
    const JsonVariables& variables = inputs.front().variables;
    ReadStrokeScript(script, nullptr, &variables);
    // Fields that accept only certain words do not accept a variable before it is replaced.
    std::vector<JsonFault> ignored;
    const nlohmann::json source = ReadStrokeScript(script, &ignored);
    if (!UsesInput(TextsOf(source), variables))
        throw HostError(script +
                        ": the script does not use ${input}, so all inputs would give the same "
                        "result");
    if (source.contains("steps"))
        CheckTargets(script, TextsOf(source.at("steps")), inputs, outputFolder);
}

}  // namespace trovik
