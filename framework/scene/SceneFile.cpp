// SPDX-License-Identifier: Apache-2.0
#include "framework/scene/SceneFile.h"

#include "framework/errors/HostError.h"
#include "framework/nodes/HostKernel.h"
#include "framework/pluginhost/PluginLoader.h"
#include "framework/scene/ApplicationChunk.h"
#include "framework/scene/AttributeChunk.h"
#include "framework/scene/BrushChunk.h"
#include "framework/scene/FreezeBrushChunk.h"
#include "framework/scene/ImportChunk.h"
#include "framework/scene/LayerChunk.h"
#include "framework/scene/MeshChunk.h"
#include "framework/scene/NodeChunk.h"
#include "framework/scene/PenChunk.h"
#include "framework/scene/SceneChunks.h"
#include "framework/scene/SettingsChunk.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <new>
#include <optional>
#include <set>
#include <string_view>

namespace trovik {

namespace {

/// Assembles a scene from its chunks as they are read.
class SceneBuilder {
public:
    SceneBuilder(SceneReader& sceneReader,
                 BrushOperation* sceneBrush,
                 BrushOperation* sceneFreezeBrush,
                 std::vector<BrushOperation*> scenePluginBrushes,
                 JobControl* jobControl)
        : reader(sceneReader),
          brush(sceneBrush),
          freezeBrush(sceneFreezeBrush),
          pluginBrushes(std::move(scenePluginBrushes)),
          job(jobControl) {}

    void Take() {
        const std::string& name = reader.Name();
        const bool repeats =
            name == "LEVL" || name == "LAYR" || name == "LGND" || name == "APPL" || name == "PBRS";
        if (!repeats && !IsUnknown(name) && !seen.insert(name).second) Refuse("occurs twice");
        if (name == "GEOM") {
            reader.Read([this](SceneStream& s) { levels.emplace(ReadGeometryChunk(s), job); });
            return;
        }
        if (name == "LEVL") {
            if (!levels || scene.geometry != nullptr) Refuse("is in the wrong position");
            reader.Read([this](SceneStream& s) { levels->Read(s); });
            if (levels->IsComplete()) scene.geometry = levels->Take();
            return;
        }
        if (name == "SETT") {
            reader.Read([this](SceneStream& s) { ReadSettingsChunk(s, scene.settings); });
            return;
        }
        if (name == "PROJ") {
            reader.Read([this](SceneStream& s) { ReadProjectionChunk(s, scene.settings.view); });
            return;
        }
        if (name == "DETL") {
            reader.Read([this](SceneStream& s) { scene.settings.detail = ReadDetailChunk(s); });
            return;
        }
        if (name == "PENS") {
            reader.Read([this](SceneStream& s) { scene.settings.dynamics = ReadPenChunk(s); });
            return;
        }
        if (name == "APPL") {
            reader.Read([this](SceneStream& s) {
                ReadApplicationChunk(s, scene.settings.applicationData);
            });
            return;
        }
        if (name == "FRZB") {
            reader.Read([this](SceneStream& s) {
                scene.isFreezing = ReadFreezeBrushChunk(s, freezeBrush);
            });
            return;
        }
        if (name == "BRSH") {
            reader.Read(
                [this](SceneStream& s) { ReadBrushChunk(s, brush, scene.tools, scene.notes); });
            return;
        }
        if (name == "PBRS") {
            reader.Read([this](SceneStream& s) {
                BrushOperation* active = ReadPluginBrushChunk(
                    s, pluginBrushes, brush != nullptr, scene.tools, scene.notes);
                if (active != nullptr) scene.activePluginBrush = active;
            });
            return;
        }
        if (IsUnknown(name)) {
            scene.notes.push_back("skipped the unknown chunk " + name);
            return;
        }
        if (scene.geometry == nullptr) Refuse("occurs before the mesh to which it belongs");
        reader.Read([this, &name](SceneStream& s) { TakeOfMesh(name, s); });
    }

    LoadedScene Finish() {
        if (scene.geometry == nullptr) {
            throw HostError(reader.Path() + ": the scene has " +
                            (levels ? "fewer levels than chunk GEOM states" : "no mesh"));
        }
        if (scene.imported.positions.empty()) {
            throw HostError(reader.Path() + ": the scene has no chunk IMPT");
        }
        // An imported mesh that is stored as differences from level 0 has the same attributes; see
        // WriteImportChunk.
        if (!importedIsOther) scene.imported.attributes = scene.geometry->Attributes();
        scene.format = reader.Header().Format();
        return std::move(scene);
    }

private:
    static bool IsUnknown(const std::string& name) {
        constexpr std::string_view known[] = {"HEAD",
                                              "GEOM",
                                              "LEVL",
                                              "IMPT",
                                              "TMIR",
                                              "SURF",
                                              "LAYR",
                                              "LGND",
                                              "NODE",
                                              "SETT",
                                              "PROJ",
                                              "DETL",
                                              "PENS",
                                              "BRSH",
                                              "FRZB",
                                              "PBRS",
                                              "APPL"};
        return std::find(std::begin(known), std::end(known), name) == std::end(known);
    }

    void TakeOfMesh(const std::string& name, SceneStream& stream) {
        if (name == "IMPT")
            scene.imported = ReadImportChunk(stream,
                                             *scene.geometry,
                                             levels->Head().base.name,
                                             reader.Path(),
                                             importedIsOther,
                                             job);
        else if (name == "TMIR")
            ReadMirrorChunk(stream, *scene.geometry);
        else if (name == "SURF")
            ReadSurface(stream);
        else if (name == "LAYR")
            scene.geometry->Layers().Insert(ReadLayerChunk(stream, *scene.geometry));
        else if (name == "LGND")
            ReadLayerBaseChunk(stream, *scene.geometry);
        else
            ReadNodeChunk(stream, *scene.geometry, scene.notes);
    }

    void ReadSurface(SceneStream& stream) {
        const LevelMesh& base = *scene.geometry->Level(0);
        const SurfaceCounts counts{base.VertexCount(), base.faceCount, base.faceVertexIndices.fill};
        scene.geometry->RestoreAttributes(ReadAttributes(stream, counts, "level 0", reader.Path()));
    }

    [[noreturn]] void Refuse(const char* what) {
        const QString text = QStringLiteral("it %1; the file is damaged").arg(QLatin1String(what));
        reader.Read([&text](SceneStream&) { SceneStream::Refuse(text); });
        throw HostError(text.toStdString());
    }

    SceneReader& reader;
    BrushOperation* brush;
    BrushOperation* freezeBrush;
    std::vector<BrushOperation*> pluginBrushes;
    JobControl* job;
    /// Chunks that may occur only once and have been read, including HEAD.
    std::set<std::string> seen = {"HEAD"};
    std::optional<LevelChunkReader> levels;
    LoadedScene scene;
    bool importedIsOther = false;
};

}  // namespace

namespace {

void WriteScene(const std::string& path,
                const SceneParts& parts,
                const SceneStream& header,
                const std::function<void(const std::string&)>& beforeReplacing,
                JobControl* job) {
    SceneWriter writer(path, header, job);
    const auto write = [&writer](const char* name, const auto& fill) {
        SceneStream content = writer.Section();
        fill(content);
        writer.Write(name, content);
    };
    try {
        write("GEOM",
              [&](SceneStream& s) { WriteGeometryChunk(s, parts.geometry, parts.imported.name); });
        for (uint32_t level = 0; level < parts.geometry.LevelCount(); ++level)
            write("LEVL", [&](SceneStream& s) { WriteLevelChunk(s, parts.geometry, level, job); });
        write("IMPT", [&](SceneStream& s) {
            WriteImportChunk(s, parts.geometry, parts.imported, path, job);
        });
        if (parts.geometry.Mirror() != nullptr)
            write("TMIR", [&](SceneStream& s) { WriteMirrorChunk(s, parts.geometry); });
        const SurfaceAttributes& attributes = parts.geometry.Attributes();
        if (HasAttributes(attributes))
            write("SURF", [&](SceneStream& s) { WriteAttributes(s, attributes, path); });
        const LayerStack& layers = parts.geometry.Layers();
        for (uint32_t level = 0; level < parts.geometry.LevelCount(); ++level) {
            const LevelMesh& mesh = *parts.geometry.Level(level);
            const LayerStack::Layers ofLevel = layers.OfLevel(mesh);
            for (const auto& layer : ofLevel)
                write("LAYR", [&](SceneStream& s) { WriteLayerChunk(s, *layer); });
            const LayerBase* ground = layers.FindLayerBase(mesh);
            if (ground == nullptr || ofLevel.empty()) continue;
            write("LGND", [&](SceneStream& s) { WriteLayerBaseChunk(s, level, *ground); });
        }
        write("NODE", [&](SceneStream& s) { WriteNodeChunk(s, parts.geometry); });
        write("SETT", [&](SceneStream& s) { WriteSettingsChunk(s, parts.settings); });
        if (parts.settings.view.isOrthographic)
            write("PROJ", [&](SceneStream& s) { WriteProjectionChunk(s, parts.settings.view); });
        if (parts.settings.detail != DetailSettings())
            write("DETL", [&](SceneStream& s) { WriteDetailChunk(s, parts.settings.detail); });
        if (header.IsFormatAtLeast(332))
            write("PENS", [&](SceneStream& s) { WritePenChunk(s, parts.settings.dynamics); });
        write("BRSH", [&](SceneStream& s) { WriteBrushChunk(s, parts.brush); });
        if (header.IsFormatAtLeast(334)) {
            CheckApplicationData(parts.settings.applicationData);
            for (const auto& entry : parts.settings.applicationData)
                write("APPL", [&](SceneStream& s) { WriteApplicationChunk(s, entry); });
        }
        if (header.IsFormatAtLeast(332) && parts.freezeBrush != nullptr) {
            write("FRZB", [&](SceneStream& s) {
                WriteFreezeBrushChunk(s, *parts.freezeBrush, parts.isFreezing);
            });
        }
        for (BrushOperation* brush : parts.pluginBrushes) {
            // A brush that was never used has only default settings.
            if (brush->ActiveConfiguration() == nullptr) continue;
            write("PBRS", [&](SceneStream& s) {
                WritePluginBrushChunk(s, *brush, brush == parts.activePluginBrush);
            });
        }
    } catch (const HostError& error) {
        const std::string reason = error.what();
        if (reason.rfind(path, 0) == 0) throw;
        throw HostError(path + ": " + reason);
    } catch (Error* error) {
        const std::string reason = error->Message().toStdString();
        Error::Dispose(error);
        throw HostError("cannot write " + path + ": " + reason);
    }
    writer.Commit(beforeReplacing);
}

}  // namespace

void SaveScene(const std::string& path,
               const SceneParts& parts,
               const SceneStream& header,
               const std::function<void(const std::string&)>& beforeReplacing,
               JobControl* job) {
    try {
        WriteScene(path, parts, header, beforeReplacing, job);
    } catch (const std::bad_alloc&) {
        throw HostError("cannot write " + path + ": not enough memory");
    }
}

LoadedScene LoadScene(const std::string& path,
                      BrushOperation* brush,
                      BrushOperation* freezeBrush,
                      JobControl* job,
                      std::vector<BrushOperation*> pluginBrushes) {
    HostKernel::Instance();
    LoadPlugins();
    SceneReader reader(path, job);
    SceneBuilder builder(reader, brush, freezeBrush, std::move(pluginBrushes), job);
    // This is the only process-wide setting that a scene contains.
    const bool facing = CheckableFloatArray::s_bActive;
    try {
        while (reader.Next()) builder.Take();
        return builder.Finish();
    } catch (...) {
        CheckableFloatArray::s_bActive = facing;
        throw;
    }
}

bool IsScenePath(const std::string& path) {
    constexpr std::string_view ending = ".trovik";
    if (path.size() < ending.size()) return false;
    return std::equal(
        ending.begin(),
        ending.end(),
        path.end() - static_cast<std::ptrdiff_t>(ending.size()),
        [](char a, char b) { return a == std::tolower(static_cast<unsigned char>(b)); });
}

}  // namespace trovik
