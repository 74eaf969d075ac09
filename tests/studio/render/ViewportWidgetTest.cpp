// SPDX-License-Identifier: Apache-2.0

/// \file Tests the viewport widget with an engine, as in the main window. If TROVIK_SHOTS is set to
/// a folder, images for visual inspection are saved there.
#include "engine/Engine.h"
#include "tests/studio/WaitFor.h"
#include "viewport/ViewportWidget.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <gtest/gtest.h>

#include <cstdlib>

namespace trovik::studio {
namespace {

/// Software rendering takes a long time on a busy machine.
constexpr int maxWaitMilliseconds = 120'000;

void SavePicture(const QImage& image, const char* name) {
    const QString folder = qEnvironmentVariable("TROVIK_SHOTS");
    if (!folder.isEmpty()) image.save(folder + QLatin1Char('/') + QLatin1String(name));
}

class ViewportWidgetTest : public testing::Test {
protected:
    ViewportWidgetTest() {
        viewport.resize(640, 480);
        viewport.show();
        OpenRequest request;
        request.meshPath = std::string(std::getenv("TROVIK_DATA")) + "/meshes/bust.obj";
        QObject::connect(&engine, &Engine::Failed, [](const QString& message) {
            ADD_FAILURE() << message.toStdString();
        });
        engine.Open(request);
    }
    /// The surface is small enough for one update.
    bool WaitForSurface() {
        return WaitFor(
            [this] {
                return viewport.Stats().bufferBytes > 0 && viewport.Stats().bytesPending == 0;
            },
            maxWaitMilliseconds);
    }

    Engine engine{""};
    ViewportWidget viewport{engine};
};

TEST_F(ViewportWidgetTest, ShowsTheDocument) {
    ASSERT_TRUE(WaitForSurface());
    EXPECT_TRUE(viewport.Problem().isEmpty()) << viewport.Problem().toStdString();
    Camera camera = viewport.View();
    camera.LookAlong({-0.4f, -0.2f, -1.0f}, {0.0f, 1.0f, 0.0f});
    viewport.SetView(camera);
    viewport.FrameAll();
    viewport.SetHudLines({QStringLiteral("5,429 quads, level 0 of 0"), QStringLiteral("Sculpt")});
    Overlays overlays;
    overlays.selection = {{120, 90}, {420, 110}, {400, 380}, {140, 360}};
    overlays.lazyString = {{430, 200}, {470, 230}, {540, 300}};
    viewport.SetOverlays(overlays);
    const QImage picture = viewport.Grab();
    EXPECT_EQ(viewport.Stats().trianglesDrawn, 2 * 5429u);
    SavePicture(picture, "viewport.png");
    EXPECT_EQ(picture.size(), viewport.size() * viewport.devicePixelRatioF());

    bool hasUploaded = false;
    QObject::connect(&viewport, &ViewportWidget::FrameDrawn, [&] {
        hasUploaded = hasUploaded || viewport.Stats().patchesUploaded > 0;
    });
    viewport.UploadAll();
    ASSERT_TRUE(WaitFor([&] { return hasUploaded; }, maxWaitMilliseconds));
    ASSERT_TRUE(WaitForSurface());
    EXPECT_EQ(viewport.Grab(), picture);
}

TEST_F(ViewportWidgetTest, ShownFrameIsTheLastFrameAndDrawsNothing) {
    ASSERT_TRUE(WaitForSurface());
    viewport.SetHudLines({QStringLiteral("5,429 quads")});
    const QImage picture = viewport.Grab().convertToFormat(QImage::Format_RGB32);
    int frames = 0;
    QObject::connect(&viewport, &ViewportWidget::FrameDrawn, [&frames] { ++frames; });
    const QImage shown = viewport.ShownFrame();
    SavePicture(shown, "shown-frame.png");
    EXPECT_EQ(shown, picture);
    EXPECT_EQ(frames, 0);
}

TEST_F(ViewportWidgetTest, FramesANewDocumentBeforeItsSurfaceHasArrived) {
    ASSERT_TRUE(WaitForSurface());
    OpenRequest request;
    request.meshPath = std::string(std::getenv("TROVIK_DATA")) + "/meshes/spot.obj";
    bool isOpen = false;
    QObject::connect(&engine, &Engine::Opened, [&] {
        isOpen = true;
        viewport.FrameAll();
    });
    engine.Open(request);
    ASSERT_TRUE(WaitFor([&] { return isOpen; }, maxWaitMilliseconds));
    Camera expected = viewport.View();
    expected.Frame(engine.Document().bounds);
    EXPECT_EQ(viewport.View().Target(), expected.Target());
    EXPECT_EQ(viewport.View().Eye(), expected.Eye());
}

TEST(ViewCube, PartsStandForDirections) {
    const QSizeF size(800, 600);
    const QPointF centre = ViewCube::Area(size).center();
    Camera camera;
    EXPECT_EQ(ViewCube::HitTest(centre, camera, size), Vector(0, 0, -1));
    EXPECT_EQ(ViewCube::HitTest(QPointF(10, 10), camera, size), std::nullopt);
    EXPECT_EQ(ViewCube::HitTest(centre + QPointF(26, 0), camera, size),
              Vector(-1, 0, -1).Normalized());
    EXPECT_EQ(ViewCube::HitTest(centre + QPointF(-26, -26), camera, size),
              Vector(1, -1, -1).Normalized());
    // When the camera looks along the direction of a part of the cube, that part is in the middle.
    for (const Vector& direction : {Vector(1, 0, 0), Vector(0, -1, 0), Vector(0, 1, 0)}) {
        camera.LookAlong(direction, ViewCube::UpFor(direction));
        EXPECT_EQ(ViewCube::HitTest(centre, camera, size), direction);
    }
    ViewCube cube;
    EXPECT_TRUE(cube.SetHovered(Vector(0, 0, -1)));
    EXPECT_FALSE(cube.SetHovered(Vector(0, 0, -1)));
}

}  // namespace
}  // namespace trovik::studio
