// SPDX-License-Identifier: Apache-2.0

/// \file A plug-in with two tools, of which the second has the name TROVIK_TWIN_TOOL, which is
/// already in use.
#include "host/BrushOperation.h"
#include "host/Plugin.h"

namespace trovik {
namespace {

const ClassDesc twinClass(BrushOperation::StaticClass(),
                          BrushOperation::StaticClass(),
                          QStringLiteral("TwinBrush of " TROVIK_TWIN_TOOL),
                          QStringLiteral("Twin brush"),
                          nullptr,
                          0,
                          1);

void RegisterRows() {
    uint32_t id = 0;
    for (const char* name : {"Twin of " TROVIK_TWIN_TOOL, TROVIK_TWIN_TOOL})
        BrushOperation::AddConfiguration(new BrushConfiguration(&twinClass,
                                                                id++,
                                                                QString::fromLatin1(name),
                                                                QString::fromLatin1(name),
                                                                PredefinedCategory::Sculpt,
                                                                QString(),
                                                                0));
}

const Plugin twinPlugin(QStringLiteral("Twin"),
                        QStringLiteral("For the loader to refuse"),
                        QStringLiteral("Trovik"),
                        QString(),
                        QStringLiteral("today"),
                        RegisterRows);

}  // namespace
}  // namespace trovik
