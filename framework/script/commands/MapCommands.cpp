// SPDX-License-Identifier: Apache-2.0

/// \file Commands that bake maps and apply maps as displacement.
#include "framework/baking/MapDisplacement.h"
#include "framework/baking/MapFile.h"
#include "framework/script/Command.h"
#include "framework/script/commands/InitialSurface.h"

namespace trovik {

enum class MapFloat { Float };
template <>
struct EnumNames<MapFloat> {
    static constexpr std::pair<const char*, MapFloat> names[] = {{"float", MapFloat::Float}};
};

namespace {

struct BakeParameters {
    std::string file;
    std::optional<std::string> map;
    std::optional<std::string> space;
    std::optional<uint32_t> from;
    std::optional<uint32_t> to;
    std::optional<std::variant<uint32_t, std::array<uint32_t, 2>>> size;
    std::optional<std::variant<uint32_t, MapFloat>> bits;
    std::optional<float> range;
    std::optional<uint32_t> samples;
    std::optional<uint32_t> padding;
    std::optional<bool> repeat;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("file", file);
        visit("map", map);
        visit("space", space);
        visit("from", from);
        visit("to", to);
        visit("size", size);
        visit("bits", bits);
        visit("range", range);
        visit("samples", samples);
        visit("padding", padding);
        visit("repeat", repeat);
    }
};

MapFileOptions MapFileOf(const CommandContext& context, const BakeParameters& parameters) {
    MapFileOptions file;
    file.path = context.OutputPath(parameters.file, "/file");
    if (parameters.bits) {
        const bool isFloat = std::holds_alternative<MapFloat>(*parameters.bits);
        file.bits = isFloat ? MapBits::Float : MapBits::Sixteen;
    }
    if (parameters.range) file.range = *parameters.range;
    return file;
}

void Bake(CommandContext& context, const BakeParameters& parameters) {
    LevelGeometry& geometry = context.document.Geometry();
    BakeOptions options;
    options.kind = MapKindOf(parameters.map.value_or("")).value_or(options.kind);
    options.space = MapSpaceOf(parameters.space.value_or("")).value_or(options.space);
    options.from = parameters.from.value_or(geometry.BoundIndex());
    options.to = parameters.to.value_or(options.to);
    if (parameters.size) {
        if (const auto* side = std::get_if<uint32_t>(&*parameters.size)) {
            options.width = options.height = *side;
        } else {
            const auto& sides = std::get<std::array<uint32_t, 2>>(*parameters.size);
            options.width = sides[0];
            options.height = sides[1];
        }
    }
    options.samples = parameters.samples.value_or(options.samples);
    options.padding = parameters.padding.value_or(options.padding);
    options.repeat = parameters.repeat.value_or(options.repeat);
    const MapFileOptions file = MapFileOf(context, parameters);
    AtField("", [&] {
        const MapReport report = BakeToFile(geometry, options, file, context.Job());
        for (const std::string& written : report.files) context.NoteWritten(written);
        context.files.NoteWritten(file.path);
        if (!report.warning.empty() && context.progress.message)
            context.progress.message(report.warning);
    });
}

void CheckBake(CommandContext& context, const BakeParameters& parameters) {
    const MapFileOptions file = MapFileOf(context, parameters);
    AtField("", [&] { BitsFor(file); });
    context.files.NoteWritten(file.path);
}

struct DisplaceParameters {
    std::string file;
    std::optional<std::string> map;
    std::optional<std::string> space;
    std::optional<float> mid;
    std::optional<float> scale;
    std::optional<float> strength;
    std::optional<bool> repeat;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("file", file);
        visit("map", map);
        visit("space", space);
        visit("mid", mid);
        visit("scale", scale);
        visit("strength", strength);
        visit("repeat", repeat);
    }
};

void Displace(CommandContext& context, const DisplaceParameters& parameters) {
    DisplacementOptions options;
    options.path = context.InputPath(parameters.file, "/file");
    options.kind = MapKindOf(parameters.map.value_or(""));
    options.space = MapSpaceOf(parameters.space.value_or(""));
    options.mid = parameters.mid;
    options.scale = parameters.scale;
    options.strength = parameters.strength.value_or(options.strength);
    options.repeat = parameters.repeat.value_or(options.repeat);
    context.Kept<InitialSurface>().Store(context.document);
    AtField("", [&] { context.document.Displace(options, context.Job()); });
}

void CheckDisplace(CommandContext& context, const DisplaceParameters& parameters) {
    if (!context.files.IsWritten(parameters.file)) context.InputPath(parameters.file, "/file");
}

const CommandRegistration<BakeParameters> bake({.name = "bake", .writesFiles = true},
                                               Bake,
                                               CheckBake);
const CommandRegistration<DisplaceParameters> displace(
    {.name = "displace", .inputs = {{"/file", CommandInput::UnlessWritten}}},
    Displace,
    CheckDisplace);

}  // namespace

}  // namespace trovik
