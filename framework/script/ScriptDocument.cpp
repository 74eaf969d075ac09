// SPDX-License-Identifier: Apache-2.0
#include "framework/script/ScriptDocument.h"

#include "framework/errors/HostError.h"
#include "framework/json/JsonSchema.h"
#include "framework/json/JsonText.h"

namespace trovik {

namespace {

/// A script of this size has about three million samples and occupies about 1 GiB when parsed.
constexpr std::size_t maxScriptBytes = std::size_t{64} << 20;

const JsonSchema& Schema() {
    static const JsonSchema schema(StrokeScriptSchema());
    return schema;
}

}  // namespace

nlohmann::json ParseStrokeScript(const std::string& text, const std::string& name) {
    return ParseAgainst(Schema(), text, name);
}

nlohmann::json CheckedStep(const nlohmann::json& step, const std::string& name) {
    nlohmann::json script = nlohmann::json::object();
    script["steps"] = nlohmann::json::array();
    script["steps"].push_back(step);
    Schema().RenameFormerFields(script);
    const std::vector<JsonFault> faults = Schema().Check(script, 1);
    if (faults.empty()) return std::move(script["steps"][0]);
    const std::string root = "/steps/0";
    throw HostError(
        FaultMessage(name, {faults.front().pointer.substr(root.size()), faults.front().reason}));
}

nlohmann::json ReadStrokeScript(const std::string& path,
                                std::vector<JsonFault>* faults,
                                const JsonVariables* variables) {
    return ParseAgainst(
        Schema(), ReadDocument(path, maxScriptBytes), DocumentName(path), faults, variables);
}

}  // namespace trovik
