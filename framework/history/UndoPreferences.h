// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

namespace trovik {

class UndoHistory;

/// Registers the preferences "Undo Budget" (in MiB, default 1024) and "Undo File" (off by default).
/// If "Undo File" is on, steps beyond the budget are moved into a temporary file instead of being
/// dropped.
TROVIK_API void RegisterUndoPreferences();

/// Applies the preferences to a history. The file is in the system's folder for temporary files.
/// \throw HostError if the file cannot be created there.
TROVIK_API void ApplyUndoPreferences(UndoHistory& history);

}  // namespace trovik
