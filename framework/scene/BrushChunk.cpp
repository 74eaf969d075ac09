// SPDX-License-Identifier: Apache-2.0
#include "framework/scene/BrushChunk.h"

#include "framework/brushes/BrushSettings.h"
#include "framework/scene/NodeChunk.h"
#include "framework/scene/SceneChunks.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

namespace trovik {

namespace {

/// Saves the settings of the active tool while those of other tools are applied to the brush.
class SavedSettings {
public:
    explicit SavedSettings(BrushOperation& lentBrush)
        : brush(lentBrush),
          active(brush.ActiveConfiguration()),
          image(brush.Settings().stampImage),
          imageName(brush.Settings().stampName) {
        if (active == nullptr) return;
        // Any of these calls can run out of memory; the brush is then unchanged.
        auto& stored = brush.Settings().stored;
        const auto found = stored.find(active);
        const bool had = found != stored.end();
        std::vector<uint8_t> before = had ? found->second : std::vector<uint8_t>();
        brush.StoreConfiguration(active);
        present = std::move(stored[active]);
        if (had)
            stored[active] = std::move(before);
        else
            stored.erase(active);
    }
    ~SavedSettings() {
        // If the first attempt runs out of memory, most of the required memory has already been
        // allocated for the second.
        for (int tries = 0; tries < 2; ++tries) {
            try {
                Restore();
                return;
            } catch (const std::bad_alloc&) {
            } catch (Error* error) {
                Error::Dispose(error);
            }
        }
    }
    SavedSettings(const SavedSettings&) = delete;
    SavedSettings& operator=(const SavedSettings&) = delete;

    /// Restores the settings of the active tool.
    void Restore() {
        if (active == nullptr) return;
        auto& stored = brush.Settings().stored;
        const auto found = stored.find(active);
        const bool had = found != stored.end();
        std::vector<uint8_t> before = had ? found->second : std::vector<uint8_t>();
        std::vector<uint8_t> lent = present;
        stored[active].swap(lent);
        const auto putBack = [&] {
            if (had)
                stored.find(active)->second.swap(before);
            else
                stored.erase(active);
        };
        try {
            brush.RestoreConfiguration(active);
        } catch (...) {
            putBack();
            throw;
        }
        putBack();
        brush.Settings().stampImage = image;
        brush.Settings().stampName = imageName;
    }

private:
    BrushOperation& brush;
    BrushConfiguration* active;
    std::shared_ptr<Image> image;
    QString imageName;
    std::vector<uint8_t> present;
};

void WriteTool(SceneStream& stream, BrushOperation& brush, const BrushConfiguration& tool) {
    QString name = tool.Name();
    static_cast<Stream&>(stream).Transfer(name);
    SceneStream own = stream.Section();
    brush.Serialize(own);
    WriteList(stream, own.Data());
}

/// Settings that do not belong to a tool and are not in the brush's own data.
struct CommonSettings {
    uint8_t facing = 0;
    float facingStart = 0.0f;
    float facingRange = 0.0f;
    uint8_t screenSpace = 0;
    int32_t meshLocked = 0;

    void Transfer(SceneStream& stream) {
        stream.Transfer(facing);
        stream.Transfer(facingStart);
        stream.Transfer(facingRange);
        stream.Transfer(screenSpace);
        stream.Transfer(meshLocked);
    }
};

void CheckBrush(const BrushOperation& brush) {
    if (brush.FalloffData().fill == 0)
        SceneStream::Refuse(QStringLiteral("a falloff curve has no samples"));
}

/// Reads a brush chunk after the name of the class.
/// \param brush  of that class; null to read only the tool names.
void ReadSettings(SceneStream& stream,
                  BrushOperation* brush,
                  std::vector<std::string>& tools,
                  std::vector<std::string>& notes) {
    if (brush != nullptr) RefuseNewerClass(stream, *brush->RuntimeClass());
    uint32_t count = 0;
    stream.Transfer(count);
    for (uint32_t i = 0; i < count; ++i) {
        QString tool;
        static_cast<Stream&>(stream).Transfer(tool);
        uint32_t bytes = 0;
        stream.Transfer(bytes);
        stream.Expect(bytes, 1);
        tools.push_back(tool.toStdString());
        if (brush != nullptr && brush->SetActiveConfiguration(tool)) {
            SceneStream own = stream.Section(
                stream.Next(), bytes, stream.Offset(), QStringLiteral("tool ") + tool);
            brush->Serialize(own);
            own.ExpectEnd();
            CheckBrush(*brush);
        } else if (brush != nullptr) {
            notes.push_back("skipped the settings of the tool " + tool.toStdString() +
                            ", which the brush does not have");
        }
        stream.Skip(bytes);
    }
    CommonSettings common;
    common.Transfer(stream);
    if (!std::isfinite(common.facingStart) || !std::isfinite(common.facingRange))
        SceneStream::Refuse(QStringLiteral("an angle of the facing falloff is not finite"));
    if (brush == nullptr) return;
    brush->Settings().screenSpace = common.screenSpace != 0;
    brush->strokeMeshLocked = common.meshLocked;
    brush->facingAngleStart = common.facingStart;
    brush->facingAngleRange = common.facingRange;
    CheckableFloatArray::s_bActive = common.facing != 0;
}

}  // namespace

void WriteBrushChunk(SceneStream& stream, BrushOperation& brush) {
    QString className = brush.RuntimeClass()->Name();
    static_cast<Stream&>(stream).Transfer(className);
    const BrushConfiguration* active = brush.ActiveConfiguration();
    std::vector<const BrushConfiguration*> others;
    for (uint32_t i = 0; i < BrushOperation::ConfigurationCount(); ++i) {
        const BrushConfiguration* tool = BrushOperation::Configuration(i);
        if (tool != active && brush.IsConfigurationInited(tool)) others.push_back(tool);
    }
    uint32_t count = static_cast<uint32_t>(others.size()) + (active == nullptr ? 0u : 1u);
    stream.Transfer(count);
    if (!others.empty()) {
        SavedSettings kept(brush);
        for (const BrushConfiguration* tool : others) {
            brush.RestoreConfiguration(tool);
            WriteTool(stream, brush, *tool);
        }
    }
    if (active != nullptr) WriteTool(stream, brush, *active);
    CommonSettings common;
    common.facing = CheckableFloatArray::s_bActive ? 1 : 0;
    common.facingStart = brush.facingAngleStart;
    common.facingRange = brush.facingAngleRange;
    common.screenSpace = brush.Settings().screenSpace ? 1 : 0;
    common.meshLocked = brush.strokeMeshLocked;
    common.Transfer(stream);
}

void ReadBrushChunk(SceneStream& stream,
                    BrushOperation* brush,
                    std::vector<std::string>& tools,
                    std::vector<std::string>& notes) {
    QString className;
    static_cast<Stream&>(stream).Transfer(className);
    if (brush != nullptr && className != brush->RuntimeClass()->Name()) {
        notes.push_back("skipped the settings of the brush " + className.toStdString() +
                        ", which is not the current brush");
        brush = nullptr;
    }
    ReadSettings(stream, brush, tools, notes);
}

void WritePluginBrushChunk(SceneStream& stream, BrushOperation& brush, bool isActive) {
    uint8_t active = isActive ? 1 : 0;
    stream.Transfer(active);
    WriteBrushChunk(stream, brush);
}

BrushOperation* ReadPluginBrushChunk(SceneStream& stream,
                                     const std::vector<BrushOperation*>& brushes,
                                     bool areSettingsWanted,
                                     std::vector<std::string>& tools,
                                     std::vector<std::string>& notes) {
    uint8_t isActive = 0;
    stream.Transfer(isActive);
    QString className;
    static_cast<Stream&>(stream).Transfer(className);
    const auto found =
        std::find_if(brushes.begin(), brushes.end(), [&](const BrushOperation* brush) {
            return brush->RuntimeClass()->Name() == className;
        });
    BrushOperation* const brush = found == brushes.end() ? nullptr : *found;
    if (brush == nullptr && areSettingsWanted)
        notes.push_back("skipped the settings of the brush " + className.toStdString() +
                        ", which no plug-in provides");
    std::vector<std::string> own;
    ReadSettings(stream, brush, own, notes);
    tools.insert(isActive != 0 ? tools.end() : tools.begin(), own.begin(), own.end());
    // Without a tool, which the plug-in may no longer have, the brush cannot be used.
    const bool canBeActive = brush != nullptr && brush->ActiveConfiguration() != nullptr;
    return isActive != 0 && canBeActive ? brush : nullptr;
}

}  // namespace trovik
