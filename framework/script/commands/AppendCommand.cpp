// SPDX-License-Identifier: Apache-2.0

/// \file Command "append".
#include "framework/remesh/MeshAppending.h"
#include "framework/script/commands/ReplaceSurface.h"
#include "framework/script/commands/TransformParameters.h"

namespace trovik {

namespace {

struct AppendParameters {
    std::string file;
    std::optional<std::string> units;
    std::optional<std::string> up;
    TransformParameters transform;
    bool world = false;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("file", file);
        visit("units", units);
        visit("up", up);
        transform.Fields(visit);
        visit("world", world);
    }
};

MatrixTransform PartTransformOf(const TransformParameters& transform) {
    if (transform.matrix && (transform.scale || transform.rotate || transform.translate))
        throw FieldFault("/matrix", "\"matrix\" excludes \"scale\", \"rotate\" and \"translate\"");
    return TransformOf(transform);
}

void Append(CommandContext& context, const AppendParameters& parameters) {
    const MatrixTransform transform = PartTransformOf(parameters.transform);
    // The schema has already checked the names of the unit and the axis.
    ReplaceSurface(context,
                   AppendMesh({context.InputPath(parameters.file, "/file"),
                               {MetersPerUnit(parameters.units.value_or("")),
                                UpAxisOf(parameters.up.value_or(""))},
                               transform,
                               parameters.world}));
}

void CheckAppend(CommandContext& context, const AppendParameters& parameters) {
    PartTransformOf(parameters.transform);
    if (!context.files.IsWritten(parameters.file)) context.InputPath(parameters.file, "/file");
}

const CommandRegistration<AppendParameters> append(
    {.name = "append", .inputs = {{"/file", CommandInput::AsSnapshot}}}, Append, CheckAppend);

}  // namespace

}  // namespace trovik
