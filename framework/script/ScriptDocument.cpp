// SPDX-License-Identifier: Apache-2.0
#include "framework/script/ScriptDocument.h"

#include "framework/json/JsonSchema.h"
#include "framework/json/JsonText.h"

namespace trovik {

namespace {

/// A script of that many bytes has some three million samples; parsed it takes about 1 GiB.
constexpr std::size_t maxScriptBytes = std::size_t{64} << 20;

const JsonSchema& Schema() {
    static const JsonSchema schema(StrokeScriptSchema());
    return schema;
}

}  // namespace

nlohmann::json ParseStrokeScript(const std::string& text, const std::string& name) {
    return ParseAgainst(Schema(), text, name);
}

nlohmann::json ReadStrokeScript(const std::string& path, std::vector<JsonFault>* faults) {
    return ParseAgainst(Schema(), ReadDocument(path, maxScriptBytes), DocumentName(path), faults);
}

}  // namespace trovik
