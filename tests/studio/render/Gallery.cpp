// SPDX-License-Identifier: Apache-2.0

/// \file Renders meshes in every style to image files for visual inspection: studio-gallery MESH
/// LEVELS FOLDER [PIXELRATIO].
#include "tests/studio/render/OffscreenViewport.h"

#include <QGuiApplication>

#include <cstdio>
#include <cstdlib>
#include <exception>

using namespace trovik;
using namespace trovik::studio;

namespace {

int WritePictures(int argc, char** argv) {
    if (argc < 4) return std::puts("studio-gallery MESH LEVELS FOLDER [PIXELRATIO]"), 2;
    const QGuiApplication application(argc, argv);
    const float ratio = argc > 4 ? std::strtof(argv[4], nullptr) : 1.0f;
    studio::test::ShownDocument shown(std::make_unique<Document>(argv[1]));
    shown.runner.Do({{"subdivide", std::atoi(argv[2])}});
    studio::test::OffscreenViewport viewport(static_cast<int>(1000 * ratio),
                                             static_cast<int>(800 * ratio));
    viewport.frame.pixelRatio = ratio;
    viewport.Add(shown.feed);
    viewport.Draw();
    viewport.camera.LookAlong({-0.45f, -0.22f, -1.0f}, {0.0f, 1.0f, 0.0f});
    viewport.camera.Frame(viewport.Renderer().WorldBounds());
    const auto save = [&](const QString& name) {
        viewport.Draw().save(QString::fromUtf8(argv[3]) + "/" + name + ".png");
        std::printf("%s: %.1f ms, %llu calls, %llu triangles\n",
                    qPrintable(name),
                    viewport.Renderer().FrameSeconds() * 1e3,
                    static_cast<unsigned long long>(viewport.Renderer().Stats().drawCalls),
                    static_cast<unsigned long long>(viewport.Renderer().Stats().trianglesDrawn));
    };
    for (const QString& name : Matcaps::Names()) {
        viewport.frame.settings.matcap = name;
        save("matcap-" + name);
    }
    viewport.frame.settings = {};
    viewport.frame.settings.cavity = 0.0f;
    save("cavity-off");
    viewport.frame.settings.cavity = 1.0f;
    save("cavity-full");
    viewport.frame.settings = {};
    viewport.frame.settings.isFlat = true;
    save("flat");
    viewport.frame.settings = {};
    viewport.frame.settings.hasWireframe = true;
    save("wireframe");
    viewport.frame.settings.hasGround = true;
    viewport.frame.settings.hasWireframe = false;
    viewport.frame.settings.showsGroups = true;
    viewport.frame.overlays.symmetryPlanes = {0};
    save("ground-plane");
    viewport.frame.settings = {};

    const IdImage ids = viewport.Renderer().Ids(viewport.frame.view);
    const AxisAlignedBoundingBox box = viewport.Renderer().WorldBounds();
    const float size = box.maxY - box.minY;
    const auto hit = HitThrough(
        shown.document->Geometry(),
        shown.document->Tree(),
        viewport.camera.ToStrokeView(),
        {static_cast<float>(ids.width) * 0.5f, static_cast<float>(ids.height) * 0.5f, 0.0f});
    if (hit.has_value()) {
        BrushRing ring;
        shown.document->Geometry().Transform().LocalToWorld(&ring.position, &hit->position, 1.0f);
        ring.radius = size * 0.07f;
        for (int i = 0; i < 64; ++i) {
            const float t = static_cast<float>(i) / 63.0f;
            ring.falloff.push_back((1.0f - t * t) * (1.0f - t * t));
        }
        viewport.frame.overlays.ring = ring;
        BrushRing mirrored = ring;
        mirrored.position.x = -mirrored.position.x;
        viewport.frame.overlays.mirroredRings = {mirrored};
        save("ring");
        const nlohmann::json center = {ring.position.x, ring.position.y, ring.position.z};
        shown.runner.Do(
            {{"mask", {{"center", center}, {"radius", size * 0.16f}, {"softness", 0.3f}}}});
        viewport.Add(shown.feed);
        save("mask");
        viewport.camera.Dolly(ring.position, 0.22f);
        save("closeup");
        viewport.frame.overlays = {};
        viewport.frame.settings.hasWireframe = true;
        save("closeup-wireframe");
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return WritePictures(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "studio-gallery: %s\n", error.what());
        return 1;
    }
}
