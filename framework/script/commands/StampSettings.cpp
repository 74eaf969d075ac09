// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/BrushSettings.h"
#include "framework/brushes/StampFiles.h"
#include "framework/script/ToolSettings.h"
#include "framework/script/commands/SettingsParameters.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

namespace trovik {

namespace {

namespace fs = std::filesystem;

// Returns an absolute path, so that the stamp does not depend on the folder in which the program
// was started.
std::string StampPath(const ScriptFiles& files,
                      const std::string& name,
                      const std::string& pointer) {
    const fs::path given(name);
    for (const std::string& candidate : files.Candidates(name)) {
        std::error_code failed;
        const fs::path whole = fs::absolute(candidate, failed);
        if (failed) continue;
        if (const auto file = FindStampFile(whole.string())) return *file;
    }
    if (!given.has_parent_path()) {
        if (const auto file = FindStampFile(given.string())) return fs::absolute(*file).string();
        throw FieldFault(
            pointer,
            "stamp not found: " + given.string() +
                " is neither in the script's folder nor in the output folder nor among "
                "the installed stamps");
    }
    throw FieldFault(pointer,
                     "file not found: " + given.string() +
                         " is neither in the script's folder nor in the output folder");
}

void ReadStamp(CommandContext& context, const std::string& name, const std::string& pointer) {
    BrushOperation& brush = context.document.Brush();
    brush.SetStamp(true, QString::fromStdString(StampPath(context.files, name, pointer)));
    AtField(pointer, [&] { RefreshStamp(brush); });
}

void SetFields(CommandContext& context, const StampParameters& stamp) {
    BrushOperation& brush = context.document.Brush();
    BrushOperation::Private& host = brush.Settings();
    if (stamp.path) ReadStamp(context, *stamp.path, "/stamp/path");
    if (stamp.enabled) brush.SetStamp(*stamp.enabled, host.stamp.path);
    host.stampTiled = stamp.tiled.value_or(host.stampTiled);
    host.stampInverted = stamp.inverted.value_or(host.stampInverted);
    host.stampFactor = stamp.factor.value_or(host.stampFactor);
    host.stampOffset = stamp.offset.value_or(host.stampOffset);
    host.stampBuildUp = stamp.buildUp.value_or(host.stampBuildUp);
    if (stamp.onSurface) brush.SetOrientedToSurface(*stamp.onSurface);
    host.stamp.randomTurn = stamp.randomRotation.value_or(host.stamp.randomTurn);
    if (stamp.randomize) brush.SetStampRandomize(*stamp.randomize);
    if (stamp.positioning) {
        const auto* found =
            std::find(std::begin(positioningNames), std::end(positioningNames), *stamp.positioning);
        brush.resetOptionA.SetValue(static_cast<int>(found - positioningNames), true);
    }
    if (stamp.rotation) brush.separatorOption.SetValue(*stamp.rotation, true);
    if (stamp.spacing) brush.strokeFloatA.SetValue(*stamp.spacing, true);
    if (stamp.randomSpacing) brush.strokeFloatB.SetValue(*stamp.randomSpacing, true);
    if (stamp.bilinear)
        BrushAttribute<bool>(brush, "bilinearsample", "/stamp/bilinear")
            .SetValue(*stamp.bilinear, true);
}

}  // namespace

void SetStamp(CommandContext& context, const StampSetting& setting) {
    const auto* fields = std::get_if<StampParameters>(&setting);
    // The brush copied the pixels of the stamp when the stroke began.
    const bool other = fields == nullptr || fields->path || fields->enabled;
    if (other && context.document.Loop().IsActive())
        throw FieldFault("/stamp", "the stamp cannot change while a stroke is open");
    if (fields != nullptr) {
        SetFields(context, *fields);
    } else if (const auto* name = std::get_if<std::string>(&setting)) {
        ReadStamp(context, *name, "/stamp");
    } else {
        BrushOperation& brush = context.document.Brush();
        brush.SetStamp(std::get<bool>(setting), brush.Settings().stamp.path);
    }
}

}  // namespace trovik
