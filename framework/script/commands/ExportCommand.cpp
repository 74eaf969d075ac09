// SPDX-License-Identifier: Apache-2.0
#include "framework/files/MeshFiles.h"
#include "framework/mesh/MeshSource.h"
#include "framework/multires/VisibleSource.h"
#include "framework/script/Command.h"

namespace trovik {

namespace {

struct ExportParameters {
    std::string file;
    std::optional<bool> world;
    std::optional<std::string> units;
    std::optional<std::string> up;
    /// False omits hidden faces.
    std::optional<bool> hidden;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("file", file);
        visit("world", world);
        visit("units", units);
        visit("up", up);
        visit("hidden", hidden);
    }
};

MeshSpace SpaceOf(const CommandContext& context,
                  const ExportParameters& parameters,
                  const std::string& file) {
    return AtField("", [&] {
        RequireWritableMesh(file);
        return SpaceForFile(
            file,
            context.document.Geometry().Attributes().space,
            {MetersPerUnit(parameters.units.value_or("")), UpAxisOf(parameters.up.value_or(""))});
    });
}

void Export(CommandContext& context, const ExportParameters& parameters) {
    const std::string file = context.OutputPath(parameters.file, "/file");
    const MeshSpace space = SpaceOf(context, parameters, file);
    const LevelGeometry& geometry = context.document.Geometry();
    const LevelSource::Options wanted{parameters.world.value_or(false), space};
    const auto source = AtField("", [&]() -> std::unique_ptr<const MeshSource> {
        if (parameters.hidden.value_or(true))
            return std::make_unique<LevelSource>(geometry, wanted);
        return std::make_unique<VisibleSource>(geometry, wanted, context.Job());
    });
    const std::vector<std::string> further = WriteMeshFile(file, *source, context.Job());
    context.NoteWritten(file);
    for (const std::string& written : further) context.NoteWritten(written);
}

void CheckExport(CommandContext& context, const ExportParameters& parameters) {
    const std::string file = context.OutputPath(parameters.file, "/file");
    SpaceOf(context, parameters, file);
    context.NoteWritten(file);
}

const CommandRegistration<ExportParameters> exportCommand({.name = "export",
                                                           .duringStroke = DuringStroke::Allowed,
                                                           .isJournaled = false,
                                                           .writesFiles = true},
                                                          Export,
                                                          CheckExport);

}  // namespace

}  // namespace trovik
