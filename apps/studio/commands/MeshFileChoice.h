// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/ActionContext.h"

#include <QString>

namespace trovik::studio {

/// Asks for a mesh file that can be imported, starting in the folder of the last opened file.
/// \return its path; empty if the dialog is cancelled.
QString ChooseMeshFile(const ActionContext& context, const QString& title);

}  // namespace trovik::studio
