// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/mesh/MeshSource.h"
#include "framework/multires/VisibleSource.h"
#include "framework/script/ScriptRunner.h"

namespace trovik {

namespace {

/// The fields "units" and "up"; the schema has settled what may stand in them.
MeshSpace SpaceOf(const FieldReader& fields) {
    return {MetersPerUnit(fields.TextOr("units", "")), UpAxisOf(fields.TextOr("up", ""))};
}

}  // namespace

MeshSpace ScriptRunner::ImportSpace(const FieldReader& script) const { return SpaceOf(script); }

MeshSpace ScriptRunner::ExportSpace(const FieldReader& options, const std::string& file) const {
    try {
        RequireWritableMesh(file);
        return SpaceForFile(file, session->Geometry().Attributes().space, SpaceOf(options));
    } catch (const HostError& refused) {
        options.Fail(refused.what());
    }
}

void ScriptRunner::RunExport(const FieldReader& options) {
    const LevelGeometry& geometry = session->Geometry();
    const std::string file = OutputPath(options.At("file"));
    const MeshSpace space = ExportSpace(options, file);
    const LevelSource::Options wanted{options.FlagOr("world", false), space};
    std::unique_ptr<const MeshSource> source;
    try {
        if (options.FlagOr("hidden", true))
            source = std::make_unique<LevelSource>(geometry, wanted);
        else
            source = std::make_unique<VisibleSource>(geometry, wanted);
    } catch (const HostError& refused) {
        options.Fail(refused.what());
    }
    const std::vector<std::string> further = WriteMeshFile(file, *source, FileProgress());
    NoteWritten(file);
    for (const std::string& written : further) NoteWritten(written);
}

}  // namespace trovik
