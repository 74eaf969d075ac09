// SPDX-License-Identifier: Apache-2.0

/// \file
/// The "undo" and "redo" commands, whose parameter is the number of steps.
#include "framework/script/Command.h"

namespace trovik {

namespace {

void Undo(CommandContext& context, const int& count) {
    for (int i = 0; i < count; ++i)
        if (!context.document.Undo()) throw FieldFault("", "there is nothing more to undo");
}

void Redo(CommandContext& context, const int& count) {
    for (int i = 0; i < count; ++i)
        if (!context.document.Redo()) throw FieldFault("", "there is nothing more to redo");
}

const CommandRegistration<int> undo({.name = "undo", .history = HistoryUse::Undo}, Undo);
const CommandRegistration<int> redo({.name = "redo", .history = HistoryUse::Redo}, Redo);

}  // namespace

}  // namespace trovik
