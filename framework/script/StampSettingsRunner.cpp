// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/BrushSettings.h"
#include "framework/brushes/StampFiles.h"
#include "framework/errors/HostError.h"
#include "framework/script/ScriptRunner.h"
#include "framework/script/ToolSettings.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

namespace trovik {

namespace {

namespace fs = std::filesystem;

}  // namespace

// The whole path, so that the stamp stays the same wherever the program is started.
std::string ScriptRunner::StampPath(const FieldReader& name) const {
    const fs::path given(name.Text());
    for (const std::string& candidate : files.Candidates(name.Text())) {
        std::error_code failed;
        const fs::path whole = fs::absolute(candidate, failed);
        if (failed) continue;
        if (const auto file = FindStampFile(whole.string())) return *file;
    }
    if (!given.has_parent_path()) {
        if (const auto file = FindStampFile(given.string())) return fs::absolute(*file).string();
        name.Fail("there is no stamp \"" + given.string() +
                  "\", neither next to the script, nor in the output folder, nor among the "
                  "installed ones");
    }
    name.Fail("there is no file " + given.string() +
              " in the script's folder or the output folder");
}

void ScriptRunner::SetStamp(const FieldReader& stamp) {
    BrushOperation& brush = document->Brush();
    BrushOperation::Private& host = brush.Settings();
    // The brush has taken the stamp's pixels down when the stroke began.
    const bool other = !stamp.Json().is_object() || stamp.Has("path") || stamp.Has("enabled");
    if (other && document->Loop().IsActive())
        stamp.Fail("a stroke is open, and keeps the stamp with which it began");
    const auto readFile = [&](const FieldReader& name) {
        brush.SetStamp(true, QString::fromStdString(StampPath(name)));
        try {
            RefreshStamp(brush);
        } catch (const HostError& error) {
            name.Fail(error.what());
        }
    };
    const nlohmann::json& json = stamp.Json();
    if (json.is_boolean()) {
        brush.SetStamp(stamp.Flag(), host.stamp.path);
        return;
    }
    if (json.is_string()) {
        readFile(stamp);
        return;
    }
    if (stamp.Has("path")) readFile(stamp.At("path"));
    if (stamp.Has("enabled")) brush.SetStamp(stamp.At("enabled").Flag(), host.stamp.path);
    host.stampTiled = stamp.FlagOr("tiled", host.stampTiled);
    host.stampInverted = stamp.FlagOr("inverted", host.stampInverted);
    host.stampFactor = stamp.NumberOr("factor", host.stampFactor);
    host.stampOffset = stamp.NumberOr("offset", host.stampOffset);
    host.stampBuildUp = stamp.FlagOr("buildUp", host.stampBuildUp);
    if (stamp.Has("onSurface")) brush.SetOrientedToSurface(stamp.At("onSurface").Flag());
    host.stamp.randomTurn = stamp.NumberOr("randomTurn", host.stamp.randomTurn);
    if (stamp.Has("randomize")) brush.SetStampRandomize(stamp.At("randomize").Flag());
    if (stamp.Has("positioning")) {
        const std::string name = stamp.At("positioning").Text();
        const auto* found =
            std::find(std::begin(positioningNames), std::end(positioningNames), name);
        brush.resetOptionA.SetValue(static_cast<int>(found - positioningNames), true);
    }
    if (stamp.Has("rotation")) brush.separatorOption.SetValue(stamp.At("rotation").Integer(), true);
    if (stamp.Has("spacing")) brush.strokeFloatA.SetValue(stamp.At("spacing").Number(), true);
    if (stamp.Has("spacingRandom"))
        brush.strokeFloatB.SetValue(stamp.At("spacingRandom").Number(), true);
    if (stamp.Has("bilinear")) {
        Attribute* attribute = brush.AttributeByName(QStringLiteral("bilinearsample"));
        if (attribute == nullptr || attribute->attributeType() != AttributeValue<bool>::type)
            stamp.At("bilinear").Fail("the brush has no setting bilinearsample");
        static_cast<AttributeInstance<bool>*>(attribute)->SetValue(stamp.At("bilinear").Flag(),
                                                                   true);
    }
}

}  // namespace trovik
