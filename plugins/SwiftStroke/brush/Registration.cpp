// SPDX-License-Identifier: Apache-2.0
#include "brush/Registration.h"

#include "brush/SwiftStroke.h"
#include "brush/ToolCatalogue.h"
#include "brush/Translation.h"
#include "host/Contract.h"
#include "host/Plugin.h"
#include "kernels/PatchKernelTable.h"
#include "topology/PatchMap.h"

TROVIK_PLUGIN_CONTRACT

namespace trovik {

namespace {

QString Ascii(const char* text) { return QString::fromLatin1(text); }

Preferences::Bool MakeBoolPreference(const char* key, const char* label) {
    return {Ascii(key), Ascii("Sculpting"), Translate(label), Translate("Sculpting"), false, true};
}

}  // namespace

// All objects are in this file, because C++ guarantees the order of construction only within one
// file.

const ClassDesc swiftStrokeClass(BrushOperation::StaticClass(),
                                 BrushOperation::StaticClass(),
                                 Ascii("SwiftStroke"),
                                 Ascii("Swift Sculpt Stroke"),
                                 &SwiftStroke::Create,
                                 0,
                                 1);

static const Plugin pluginRecord(Ascii("Swift Stroke"),
                                 Ascii("Hardware accelerated simple sculptor brush"),
                                 Ascii("The Trovik developers"),
                                 Ascii("https://trovik.invalid"),
                                 Ascii(__DATE__ " " __TIME__),
                                 &RegisterTools);

const Preferences::Bool renderSwiftStroke(Ascii("Render Swift Stroke"),
                                          Ascii("Sculpting"),
                                          Translate("Render Swift Stroke"),
                                          Translate("Sculpting"),
                                          true,
                                          true);
const Preferences::Float swiftStrokeLevelFactor(Ascii("Swift Stroke Level Factor"),
                                                Ascii("Sculpting"),
                                                Translate("Swift Stroke Level Factor"),
                                                Translate("Sculpting"),
                                                1.0f,
                                                0.25f,
                                                4.0f,
                                                true);
const Preferences::Bool useOriginalDataForFlatten =
    MakeBoolPreference("Use Original Data For Flatten", "Use Original Data For Flatten");
const Preferences::Bool useVertexWeightsForFlatten =
    MakeBoolPreference("Use Vertex Weights For Flatten", "Use Vertex Weights For Flatten");
const Preferences::Bool waxFillsOnly = MakeBoolPreference("Wax Fills Only", "Wax Fills Only");
// Intentionally has the same label as waxFillsOnly, because users are familiar with it.
const Preferences::Bool waxScrapesOnly = MakeBoolPreference("Wax Scrapes Only", "Wax Fills Only");

const PatchKernelTable patchKernels;

const ClassDesc patchMapClass(TreeNode::StaticClass(),
                              TreeNode::StaticClass(),
                              Ascii("PatchMap"),
                              Ascii("Patchmap"),
                              &PatchMap::Create,
                              0,
                              0);

}  // namespace trovik
