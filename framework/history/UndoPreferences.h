// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

namespace trovik {

class UndoHistory;

/// Registers the preferences "Undo Budget", in MiB, 1024 at first, and "Undo File", off at first:
/// steps beyond the budget go into a temporary file rather than being dropped.
TROVIK_API void RegisterUndoPreferences();

/// Sets up a history by the preferences. The file lies in the system's folder for temporary files.
/// \throw HostError when no file can be made there.
TROVIK_API void ApplyUndoPreferences(UndoHistory& history);

}  // namespace trovik
