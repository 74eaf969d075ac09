// SPDX-License-Identifier: Apache-2.0

/// \file Command "decimate".
#include "framework/remesh/Decimation.h"
#include "framework/script/commands/ReplaceSurface.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

struct DecimateParameters {
    std::optional<uint32_t> faces;
    std::optional<float> ratio;
    std::optional<float> error;
    bool keepBorders = true;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("faces", faces);
        visit("ratio", ratio);
        visit("error", error);
        visit("keepBorders", keepBorders);
    }
};

void CheckDecimate(CommandContext&, const DecimateParameters& parameters) {
    if (!parameters.faces && !parameters.ratio && !parameters.error)
        throw FieldFault("", "needs \"faces\", \"ratio\" or \"error\"");
    if (parameters.faces && parameters.ratio)
        throw FieldFault("/ratio", "\"faces\" and \"ratio\" exclude each other");
}

void RunDecimate(CommandContext& context, const DecimateParameters& parameters) {
    CheckDecimate(context, parameters);
    Decimation settings{parameters.faces, parameters.error, parameters.keepBorders};
    if (parameters.ratio) {
        const LevelMesh& level = *context.document.Geometry().Bound();
        const double triangles =
            static_cast<double>(level.faceCount) * (level.CornersPerFace() - 2);
        settings.faces = static_cast<uint32_t>(
            std::max(std::lround(triangles * static_cast<double>(*parameters.ratio)), 1L));
    }
    ReplaceSurface(context, Decimate(settings));
}

const CommandRegistration<DecimateParameters> decimate({.name = "decimate"},
                                                       RunDecimate,
                                                       CheckDecimate);

}  // namespace

}  // namespace trovik
