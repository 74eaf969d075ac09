// SPDX-License-Identifier: Apache-2.0

/// \file
/// Steps of a script about what is on both sides.
#include "framework/errors/HostError.h"
#include "framework/script/ScriptRunner.h"

#include <algorithm>

namespace trovik {

namespace {

int AxisOf(const FieldReader& name) { return name.Text()[0] - 'x'; }

std::vector<int> PlanesOf(const FieldReader& axes) {
    std::vector<int> planes;
    for (std::size_t i = 0; i < axes.Size(); ++i) {
        const int axis = AxisOf(axes.At(i));
        if (std::find(planes.begin(), planes.end(), axis) != planes.end())
            axes.At(i).Fail("the axis is named twice");
        planes.push_back(axis);
    }
    return planes;
}

}  // namespace

void ScriptRunner::RunMirror(const FieldReader& mirror) {
    if (mirror.Json().is_string()) {
        document->SetTopologicalMirror();
        return;
    }
    MirrorSetting setting;
    if (mirror.Json().is_array()) {
        setting.planes = PlanesOf(mirror);
    } else {
        if (mirror.Has("planes")) setting.planes = PlanesOf(mirror.At("planes"));
        setting.copies = mirror.IntegerOr("radial", 1);
        if (mirror.Has("axis")) setting.axis = AxisOf(mirror.At("axis"));
    }
    try {
        document->SetMirrors(setting);
    } catch (const HostError& error) {
        mirror.Fail(error.what());
    }
}

void ScriptRunner::RunSymmetrize(const FieldReader& options) {
    const bool negative = options.TextOr("from", "positive") == "negative";
    try {
        document->MakeSymmetric(AxisOf(options.At("axis")),
                                negative ? SymmetrySide::Negative : SymmetrySide::Positive);
    } catch (const HostError& error) {
        options.Fail(error.what());
    }
}

}  // namespace trovik
