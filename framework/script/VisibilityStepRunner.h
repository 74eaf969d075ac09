// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/script/FieldReader.h"
#include "framework/script/SculptSession.h"

#include <string>

namespace trovik {

/// Runs a script's step "hide", "show", "isolate" or "invertVisibility"; does nothing for any other
/// step. \return a warning, or an empty text. \throw HostError that names the field.
std::string RunVisibilityStep(SculptSession& session, const FieldReader& step);
/// Checks the fields of such a step that do not depend on the surface.
void CheckVisibilityStep(const FieldReader& step);

}  // namespace trovik
