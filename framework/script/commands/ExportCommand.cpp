// SPDX-License-Identifier: Apache-2.0
#include "framework/files/MeshFiles.h"
#include "framework/mesh/MeshSource.h"
#include "framework/multires/VisibleSource.h"
#include "framework/remesh/ReducedFiles.h"
#include "framework/script/Command.h"
#include "framework/script/commands/DecimateParameters.h"

namespace trovik {

namespace {

struct ExportParameters {
    std::string file;
    std::optional<bool> world;
    std::optional<std::string> units;
    std::optional<std::string> up;
    /// False omits hidden faces.
    std::optional<bool> hidden;
    std::optional<DecimateParameters> decimate;
    std::optional<uint32_t> lods;
    std::optional<float> lodRatio;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("file", file);
        visit("world", world);
        visit("units", units);
        visit("up", up);
        visit("hidden", hidden);
        visit("decimate", decimate);
        visit("lods", lods);
        visit("lodRatio", lodRatio);
    }

    MeshReduction Reduction() const {
        MeshReduction reduction;
        if (decimate) reduction.decimation = decimate->Settings("/decimate");
        reduction.lods = lods.value_or(0);
        if (lodRatio && reduction.lods == 0)
            throw FieldFault("/lodRatio", "has no effect without \"lods\"");
        reduction.lodRatio = lodRatio.value_or(reduction.lodRatio);
        return reduction;
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

std::unique_ptr<const MeshSource> SourceOf(CommandContext& context,
                                           const LevelSource::Options& wanted,
                                           bool includesHidden) {
    const LevelGeometry& geometry = context.document.Geometry();
    if (includesHidden) return std::make_unique<LevelSource>(geometry, wanted);
    return std::make_unique<VisibleSource>(geometry, wanted, context.Job());
}

void WriteReducedFiles(CommandContext& context,
                       const std::string& file,
                       const MeshReduction& reduction,
                       const LevelSource::Options& wanted,
                       bool includesHidden) {
    const std::unique_ptr<LevelGeometry> copy =
        CopyForReduction(context.document.Geometry(), includesHidden, context.Job());
    const ReducedFiles written = WriteReduced(file, *copy, reduction, wanted, context.Job());
    for (const ReducedFiles::Mesh& mesh : written.meshes) {
        context.NoteWritten(mesh.file);
        context.ReportNotes(mesh.file, {std::to_string(mesh.faces) + " triangles"});
        for (const std::string& warning : mesh.warnings) context.Warn(mesh.file + ": " + warning);
    }
    for (const std::string& further : written.furtherFiles) context.NoteWritten(further);
    for (const std::string& warning : written.warnings) context.Warn(warning);
}

/// Resolves the file, and checks that those of the levels of detail may be written, too.
std::string OutputOf(const CommandContext& context,
                     const ExportParameters& parameters,
                     uint32_t lods) {
    for (uint32_t lod = 1; lod <= lods; ++lod)
        context.OutputPath(LodPath(parameters.file, lod), "/file");
    return context.OutputPath(parameters.file, "/file");
}

void Export(CommandContext& context, const ExportParameters& parameters) {
    const MeshReduction reduction = parameters.Reduction();
    const std::string file = OutputOf(context, parameters, reduction.lods);
    const MeshSpace space = SpaceOf(context, parameters, file);
    const LevelSource::Options wanted{parameters.world.value_or(false), space};
    const bool includesHidden = parameters.hidden.value_or(true);
    if (!reduction.decimation) {
        const auto source = AtField("", [&] { return SourceOf(context, wanted, includesHidden); });
        const std::vector<std::string> further = WriteMeshFile(file, *source, context.Job());
        context.NoteWritten(file);
        for (const std::string& written : further) context.NoteWritten(written);
    }
    if (reduction.IsEmpty()) return;
    AtField("", [&] { WriteReducedFiles(context, file, reduction, wanted, includesHidden); });
}

void CheckExport(CommandContext& context, const ExportParameters& parameters) {
    const MeshReduction reduction = parameters.Reduction();
    const std::string file = OutputOf(context, parameters, reduction.lods);
    SpaceOf(context, parameters, file);
    context.NoteWritten(file);
    for (uint32_t lod = 1; lod <= reduction.lods; ++lod) context.NoteWritten(LodPath(file, lod));
}

const CommandRegistration<ExportParameters> exportCommand({.name = "export",
                                                           .duringStroke = DuringStroke::Allowed,
                                                           .isJournaled = false,
                                                           .writesFiles = true},
                                                          Export,
                                                          CheckExport);

}  // namespace

}  // namespace trovik
