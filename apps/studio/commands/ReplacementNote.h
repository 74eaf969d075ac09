// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/FormDialog.h"
#include "framework/document/DocumentState.h"

namespace trovik::studio {

/// Number of faces of the current level; 0 if there is no document.
uint64_t FacesOf(const DocumentState& state);

/// Shows the number of faces before the change, and what replacing the mesh loses.
void AddReplacementNote(FormDialog& dialog, const DocumentState& state);

}  // namespace trovik::studio
