// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/Suggestion.h"
#include "framework/script/Command.h"

namespace trovik {

namespace {

void SelectTool(CommandContext& context, const std::string& name) {
    if (!context.document.SelectTool(name)) {
        throw FieldFault(
            "", "unknown tool \"" + name + "\"" + Suggestion(name, context.document.ToolNames()));
    }
}

const CommandRegistration<std::string> tool({.name = "tool", .callsBrush = true, .isFirst = true},
                                            SelectTool,
                                            SelectTool);

}  // namespace

}  // namespace trovik
