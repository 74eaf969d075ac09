// SPDX-License-Identifier: Apache-2.0
#include "SceneInfo.h"

#include "ProgressLine.h"
#include "ThicknessReport.h"
#include "framework/scene/SceneFile.h"

#include <nlohmann/json.hpp>

#include <cstdio>

namespace trovik {

namespace {

nlohmann::json Triple(const Vector& v) { return {v.x, v.y, v.z}; }

nlohmann::json Describe(const std::string& path, const LoadedScene& scene) {
    const LevelGeometry& geometry = *scene.geometry;
    nlohmann::json levels = nlohmann::json::array();
    for (uint32_t i = 0; i < geometry.LevelCount(); ++i) {
        const LevelMesh& level = *geometry.Level(i);
        levels.push_back({{"type", level.meshType == 1 ? "quads" : "triangles"},
                          {"vertices", level.VertexCount()},
                          {"faces", level.faceCount},
                          {"frozen", level.FrozenVertexCount()}});
    }
    nlohmann::json layers = nlohmann::json::array();
    for (const auto& layer : scene.geometry->Layers().All()) {
        layers.push_back({{"name", layer->Name()},
                          {"level", layer->Level()->Index()},
                          {"strength", layer->Strength()},
                          {"writable", layer->Writable()},
                          {"active", layer->Level()->ActiveLayer() == layer.get()},
                          {"vertices", layer->SlotCount()}});
    }
    return {{"file", path},
            {"format", scene.format},
            {"name", scene.imported.name},
            {"levels", levels},
            {"bound", geometry.BoundIndex()},
            {"layers", layers},
            {"tools", scene.tools},
            {"activeTool", scene.tools.empty() ? "" : scene.tools.back()},
            {"mirrors", scene.settings.mirrorMaps.size()},
            {"view",
             {{"eye", Triple(scene.settings.view.eye)},
              {"target", Triple(scene.settings.view.target)},
              {"up", Triple(scene.settings.view.up)},
              {"fieldOfView", scene.settings.view.verticalFieldOfView},
              {"orthographic", scene.settings.view.isOrthographic},
              {"width", scene.settings.view.width},
              {"height", scene.settings.view.height}}},
            {"notes", scene.notes}};
}

void Print(const std::string& path, const LoadedScene& scene) {
    const LevelGeometry& geometry = *scene.geometry;
    std::printf("%s\n  scene     format %u%s%s\n",
                path.c_str(),
                scene.format,
                scene.imported.name.empty() ? "" : ", ",
                scene.imported.name.c_str());
    for (uint32_t i = 0; i < geometry.LevelCount(); ++i) {
        const LevelMesh& level = *geometry.Level(i);
        std::printf("  level %-3u %u %s, %u vertices%s",
                    i,
                    level.faceCount,
                    level.meshType == 1 ? "quads" : "triangles",
                    level.VertexCount(),
                    i == geometry.BoundIndex() ? ", current" : "");
        if (level.FrozenVertexCount() != 0) std::printf(", %u masked", level.FrozenVertexCount());
        std::printf("\n");
    }
    for (const auto& layer : scene.geometry->Layers().All()) {
        std::printf("  layer     \"%s\" of level %d, strength %g, %u vertices%s%s\n",
                    layer->Name().c_str(),
                    layer->Level()->Index(),
                    static_cast<double>(layer->Strength()),
                    layer->SlotCount(),
                    layer->Level()->ActiveLayer() == layer.get() ? ", active" : "",
                    layer->Writable() ? "" : ", locked");
    }
    if (!scene.tools.empty()) {
        std::printf("  tool      %s; settings of %zu tools\n",
                    scene.tools.back().c_str(),
                    scene.tools.size());
    }
    if (!scene.settings.mirrorMaps.empty())
        std::printf("  mirrors   %zu\n", scene.settings.mirrorMaps.size());
    for (const std::string& note : scene.notes) std::printf("  note      %s\n", note.c_str());
}

ThicknessReport Thickness(const LoadedScene& scene, float limit) {
    ProgressLine job(true);
    return {limit, FindThinWalls(*scene.geometry, limit, &job)};
}

}  // namespace

nlohmann::json SceneInfoJson(const std::string& path, std::optional<float> minThickness) {
    const LoadedScene scene = LoadScene(path, nullptr);
    nlohmann::json json = Describe(path, scene);
    json["thickness"] = nullptr;
    if (minThickness) json["thickness"] = JsonOf(Thickness(scene, *minThickness));
    return json;
}

void PrintSceneInfo(const std::string& path, std::optional<float> minThickness, bool quiet) {
    const LoadedScene scene = LoadScene(path, nullptr);
    std::optional<ThicknessReport> thickness;
    if (minThickness) thickness = Thickness(scene, *minThickness);
    if (quiet) return;
    Print(path, scene);
    if (thickness) std::printf("  thickness %s\n", TextOf(*thickness).c_str());
}

}  // namespace trovik
