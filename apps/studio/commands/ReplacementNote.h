// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/FormDialog.h"
#include "framework/document/DocumentState.h"

namespace trovik::studio {

/// Number of faces of the current level; 0 if there is no document.
uint64_t FacesOf(const DocumentState& state);

/// The highest number of faces that the dialogs for a new mesh accept.
inline constexpr int maxReplacementFaces = 100'000'000;
/// FacesOf as the initial value of such a dialog: at least `lowest`, at most maxReplacementFaces.
int InitialFaces(const DocumentState& state, int lowest);

/// Shows the number of faces before the change, and what replacing the mesh loses.
void AddReplacementNote(FormDialog& dialog, const DocumentState& state);

}  // namespace trovik::studio
