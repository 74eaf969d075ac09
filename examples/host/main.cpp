// SPDX-License-Identifier: Apache-2.0

/// \file
/// A small host: opens a mesh, subdivides it, draws a stroke as a pen would, tracks the changes to
/// the surface, undoes and redoes the stroke, and saves the scene.
#include "framework/display/DirtyPatches.h"
#include "framework/display/PatchPacker.h"
#include "framework/document/Document.h"
#include "framework/document/DocumentStroke.h"
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/multires/LevelSource.h"
#include "framework/pluginhost/PluginLoader.h"
#include "framework/script/CommandRunner.h"

#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

namespace {

/// A copy of the surface, like the one that a viewport stores on the GPU. It is updated patch by
/// patch when the document changes.
class SurfaceCopy final : public trovik::DocumentObserver {
public:
    explicit SurfaceCopy(trovik::Document& ofDocument) : document(ofDocument) {
        PackAll();
        document.AddObserver(*this);
    }
    ~SurfaceCopy() { document.RemoveObserver(*this); }
    SurfaceCopy(const SurfaceCopy&) = delete;
    SurfaceCopy& operator=(const SurfaceCopy&) = delete;

    void SurfaceChanged(const trovik::SurfaceChange& change) override {
        // Changes to levels other than the displayed one are not visible.
        if (change.level == layout->Level() || change.all) dirty->Add(change);
    }
    void Problem(const std::string& message) override {
        std::fprintf(stderr, "%s\n", message.c_str());
    }

    /// Packs the patches that have changed since the last call; called once per frame. \return the
    /// number of patches.
    std::size_t Update() {
        if (dirty->LayoutChanged()) {
            PackAll();
            return layout->PatchCount();
        }
        trovik::PatchPacker packer(*document.Geometry().Bound(), *layout);
        const std::size_t count = dirty->Patches().size();
        for (const uint32_t patch : dirty->Patches()) {
            const std::span<trovik::DisplayVertex> patchVertices(
                vertices.data() + layout->FirstVertex(patch), layout->VertexCount(patch));
            packer.Pack(std::span(&patch, 1), patchVertices);
        }
        dirty->Clear();
        return count;
    }

    /// Returns whether the copy is identical to a newly packed copy of the whole surface.
    bool IsCurrent() const {
        std::vector<trovik::DisplayVertex> expected(vertices.size());
        trovik::PatchPacker packer(*document.Geometry().Bound(), *layout);
        packer.PackAll(expected, 1);
        return std::memcmp(expected.data(),
                           vertices.data(),
                           vertices.size() * sizeof(trovik::DisplayVertex)) == 0;
    }
    uint32_t PatchCount() const { return layout->PatchCount(); }

private:
    void PackAll() {
        const trovik::LevelMesh& level = *document.Geometry().Bound();
        layout = std::make_unique<trovik::PatchLayout>(level);
        dirty = std::make_unique<trovik::DirtyPatches>(*layout);
        vertices.resize(layout->TotalVertexCount());
        trovik::PatchPacker(level, *layout).PackAll(vertices, 2);
    }

    trovik::Document& document;
    std::unique_ptr<trovik::PatchLayout> layout;
    std::unique_ptr<trovik::DirtyPatches> dirty;
    std::vector<trovik::DisplayVertex> vertices;
};

/// Draws a stroke from press to release, with 133 samples per second, as an application does while
/// the user moves the pen. \return the number of dabs.
unsigned DrawStroke(trovik::Document& document, SurfaceCopy& copy) {
    trovik::DocumentStroke stroke(document);
    const trovik::StrokeView& view = document.View();
    constexpr int samples = 80;
    for (int i = 0; i < samples; ++i) {
        const float t = static_cast<float>(i) / (samples - 1);
        trovik::PathSample sample(trovik::Vector(static_cast<float>(view.width) * (0.4f + 0.2f * t),
                                                 static_cast<float>(view.height) * 0.5f,
                                                 0.0f),
                                  0.3f + 0.7f * t);
        sample.time = i * 0.0075;
        // Applies dabs for at most 4 ms, then updates the display; the remaining dabs follow.
        bool remain = stroke.Add({sample}, std::chrono::milliseconds(4));
        copy.Update();
        while (remain) {
            remain = stroke.Continue(std::chrono::milliseconds(4));
            copy.Update();
        }
    }
    stroke.Release();
    return stroke.Count();
}

bool Check(bool isRight, const char* what) {
    if (!isRight) std::fprintf(stderr, "failed: %s\n", what);
    return isRight;
}

bool Sculpt(const std::string& meshPath, const std::string& scenePath, const std::string& tool) {
    trovik::Document document(meshPath);
    trovik::CommandRunner commands(document);
    commands.Do({{"subdivide", 3}});
    commands.Do({{"tool", tool}, {"set", {{"radius", 0.15}, {"strength", 60}}}});
    commands.Do({{"mirror", {"x"}}});

    SurfaceCopy copy(document);
    const unsigned dabs = DrawStroke(document, copy);
    const std::size_t patches = copy.Update();
    std::printf("%u dabs, %u patches, %zu of them packed after the release\n",
                dabs,
                copy.PatchCount(),
                patches);
    bool isRight = Check(dabs > 0, "the stroke hits the surface");
    isRight &= Check(copy.IsCurrent(), "the copy is current after the stroke");

    isRight &= Check(document.Undo(), "the stroke can be undone");
    std::printf("undo packed %zu patches\n", copy.Update());
    isRight &= Check(copy.IsCurrent(), "the copy is current after undo");
    isRight &= Check(document.Redo(), "the stroke can be redone");
    copy.Update();
    isRight &= Check(copy.IsCurrent(), "the copy is current after redo");

    const auto state = document.State();
    for (const trovik::HistoryEntry& entry : state->history)
        std::printf("%-12s %8llu bytes\n",
                    entry.label.c_str(),
                    static_cast<unsigned long long>(entry.bytes));

    document.Save(scenePath);
    trovik::WriteMeshFile(scenePath + ".ply", trovik::LevelSource(document.Geometry(), {}));
    const auto again = trovik::Document::OpenScene(scenePath);
    isRight &= Check(again->State()->levels.back().vertices == state->levels.back().vertices,
                     "the scene can be reopened");
    return isRight;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: sculpt-host MESH SCENE [TOOL [PLUGIN...]]\n");
        return 2;
    }
    try {
        trovik::LoadPlugin(TROVIK_PLUGIN_DIR "/SwiftStroke.so");
        // All plug-ins must be loaded before the document is opened.
        for (int i = 4; i < argc; ++i) trovik::LoadPlugin(argv[i]);
        return Sculpt(argv[1], argv[2], argc > 3 ? argv[3] : "Sculpt") ? 0 : 1;
    } catch (const trovik::HostError& error) {
        std::fprintf(stderr, "sculpt-host: %s\n", error.what());
        return 1;
    }
}
