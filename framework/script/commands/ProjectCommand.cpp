// SPDX-License-Identifier: Apache-2.0

/// \file Command "project".
#include "framework/remesh/MeshProjection.h"
#include "framework/script/Command.h"
#include "framework/script/commands/InitialSurface.h"

namespace trovik {

template <>
struct EnumNames<MeshProjection::Direction> {
    static constexpr std::pair<const char*, MeshProjection::Direction> names[] = {
        {"nearest", MeshProjection::Direction::Nearest},
        {"normal", MeshProjection::Direction::Normal}};
};

namespace {

struct ProjectParameters {
    std::string file;
    float distance = 0.0f;
    MeshProjection::Direction direction = MeshProjection::Direction::Nearest;
    bool colors = false;
    bool world = false;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("file", file);
        visit("distance", distance);
        visit("direction", direction);
        visit("colors", colors);
        visit("world", world);
    }
};

void Project(CommandContext& context, const ProjectParameters& parameters) {
    const MeshProjection settings{context.InputPath(parameters.file, "/file"),
                                  parameters.distance,
                                  parameters.direction,
                                  parameters.colors,
                                  parameters.world};
    context.Kept<InitialSurface>().Store(context.document);
    AtField("", [&] {
        const ProjectionResult result = context.document.Project(settings, context.Job());
        if (result.moved == 0 && result.colored == 0)
            context.Warn(
                "no vertex has moved; no unmasked part of the level that is not yet on the "
                "surface is within the distance of " +
                settings.path);
    });
}

void CheckProject(CommandContext& context, const ProjectParameters& parameters) {
    if (!context.files.IsWritten(parameters.file)) context.InputPath(parameters.file, "/file");
}

const CommandRegistration<ProjectParameters> project(
    {.name = "project", .inputs = {{"/file", CommandInput::AsSnapshot}}}, Project, CheckProject);

}  // namespace

}  // namespace trovik
