// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/remesh/SurfaceReplacement.h"
#include "framework/script/Command.h"

namespace trovik {

/// Runs an operation that replaces the mesh, and reports its notes and warnings.
inline void ReplaceSurface(CommandContext& context, const SurfaceOperation& operation) {
    AtField("", [&] {
        const ReplacementReport report = context.document.ReplaceSurface(operation, context.Job());
        context.ReportNotes(operation.label, report.notes);
        for (const std::string& warning : report.warnings) context.Warn(warning);
    });
}

}  // namespace trovik
