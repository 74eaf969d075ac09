// SPDX-License-Identifier: Apache-2.0

/// \file
/// Steps of a script that bake maps and turn maps into shape.
#include "framework/baking/MapDisplacement.h"
#include "framework/baking/MapFile.h"
#include "framework/errors/HostError.h"
#include "framework/script/ScriptRunner.h"

namespace trovik {

namespace {

std::uint32_t Count(const FieldReader& fields, const char* key, std::uint32_t otherwise) {
    return static_cast<std::uint32_t>(fields.IntegerOr(key, static_cast<int>(otherwise)));
}

}  // namespace

MapFileOptions ScriptRunner::MapFileOf(const FieldReader& bake) {
    MapFileOptions file;
    file.path = OutputPath(bake.At("file"));
    if (bake.Has("bits"))
        file.bits = bake.At("bits").Json().is_string() ? MapBits::Float : MapBits::Sixteen;
    if (bake.Has("range")) file.range = bake.At("range").Number();
    return file;
}

void ScriptRunner::RunBake(const FieldReader& bake) {
    LevelGeometry& geometry = session->Geometry();
    BakeOptions options;
    // The schema has settled the words.
    options.kind = MapKindOf(bake.TextOr("map", "")).value_or(options.kind);
    options.space = MapSpaceOf(bake.TextOr("space", "")).value_or(options.space);
    options.from = Count(bake, "from", geometry.BoundIndex());
    options.to = Count(bake, "to", options.to);
    if (bake.Has("size")) {
        const FieldReader size = bake.At("size");
        const bool isPair = size.Json().is_array();
        options.width =
            static_cast<std::uint32_t>(isPair ? size.At(std::size_t{0}).Integer() : size.Integer());
        options.height =
            static_cast<std::uint32_t>(isPair ? size.At(std::size_t{1}).Integer() : size.Integer());
    }
    options.samples = Count(bake, "samples", options.samples);
    options.padding = Count(bake, "padding", options.padding);
    options.repeat = bake.FlagOr("repeat", options.repeat);
    options.progress = FileProgress();
    const MapFileOptions file = MapFileOf(bake);
    try {
        const MapReport report = BakeToFile(geometry, options, file);
        for (const std::string& written : report.files) NoteWritten(written);
        files.NoteWritten(file.path);
        if (!report.warning.empty() && progress.message) progress.message(report.warning);
    } catch (const HostError& error) {
        bake.Fail(error.what());
    }
}

void ScriptRunner::RunDisplace(const FieldReader& displace) {
    DisplacementOptions options;
    options.path = InputPath(displace.At("file"));
    options.kind = MapKindOf(displace.TextOr("map", ""));
    options.space = MapSpaceOf(displace.TextOr("space", ""));
    if (displace.Has("mid")) options.mid = displace.At("mid").Number();
    if (displace.Has("scale")) options.scale = displace.At("scale").Number();
    options.strength = displace.NumberOr("strength", options.strength);
    options.repeat = displace.FlagOr("repeat", options.repeat);
    KeepBefore();
    try {
        DisplaceByMap(session->Geometry(), options);
    } catch (const HostError& error) {
        displace.Fail(error.what());
    }
}

}  // namespace trovik
