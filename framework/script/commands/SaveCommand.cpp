// SPDX-License-Identifier: Apache-2.0
#include "framework/script/Command.h"

namespace trovik {

namespace {

std::string ScenePath(const CommandContext& context, const std::string& file) {
    if (!IsScenePath(file)) throw FieldFault("", "the name of a scene file must end in .trovik");
    return context.OutputPath(file, "");
}

void Save(CommandContext& context, const std::string& file) {
    const std::string target = ScenePath(context, file);
    context.document.Save(target, context.Job());
    context.NoteWritten(target);
}

void CheckSave(CommandContext& context, const std::string& file) {
    context.NoteWritten(ScenePath(context, file));
}

// The document notifies its journal of a save.
const CommandRegistration<std::string> save(
    {.name = "save", .isJournaled = false, .writesFiles = true}, Save, CheckSave);

}  // namespace

}  // namespace trovik
