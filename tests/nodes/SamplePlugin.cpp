// SPDX-License-Identifier: Apache-2.0
#include "host/BrushOperation.h"
#include "host/Plugin.h"
#include "host/Preferences.h"

namespace trovik {
namespace {

const ClassDesc sampleClass(BrushOperation::StaticClass(),
                            BrushOperation::StaticClass(),
                            QStringLiteral("SampleBrush"),
                            QStringLiteral("Sample brush"),
                            nullptr,
                            0,
                            3);

void RegisterRow() {
    BrushOperation::AddConfiguration(new BrushConfiguration(&sampleClass,
                                                            77,
                                                            QStringLiteral("Sample"),
                                                            QStringLiteral("Sample"),
                                                            PredefinedCategory::Sculpt,
                                                            QString(),
                                                            0));
}

const Plugin samplePlugin(QStringLiteral("Sample"),
                          QStringLiteral("For the loader to open"),
                          QStringLiteral("Trovik"),
                          QString(),
                          QStringLiteral("today"),
                          RegisterRow);

const Preferences::Bool samplePreference(QStringLiteral("Sample Preference"),
                                         QStringLiteral("Samples"),
                                         QStringLiteral("Label"),
                                         QStringLiteral("Samples"),
                                         true,
                                         false);

}  // namespace
}  // namespace trovik
