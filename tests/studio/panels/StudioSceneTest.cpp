// SPDX-License-Identifier: Apache-2.0

/// \file
/// Tests bookmarks and reference images of the scene.
#include "commands/FileActions.h"
#include "commands/StudioActions.h"
#include "commands/StudioScene.h"
#include "panels/ReferencesPanel.h"
#include "panels/ValueSlider.h"
#include "tests/studio/panels/StudioWindow.h"
#include "window/ViewportMenu.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QDir>
#include <QLineEdit>
#include <QListWidget>
#include <QTest>

#include <filesystem>
#include <optional>

namespace trovik::studio {

namespace {

const CameraPose front{{0, 0, 5}, {0, 0, 0}, {0, 1, 0}, 35.0f, false};
const CameraPose side{{5, 0.1f, 0}, {0, 0.25f, 0}, {0, 0.6f, 0.8f}, 50.0f, true};

/// A window whose camera pose is the variable `camera` of the test.
class StudioSceneTest : public StudioWindow {
protected:
    StudioSceneTest() {
        view.pose = [this] { return camera; };
        QObject::connect(
            &view, &ViewModel::PoseRequested, &view, [this](const CameraPose& to) { camera = to; });
        QObject::connect(&window->Scene(), &StudioScene::Noted, &view, [this](const QString& note) {
            notes << note;
        });
    }

    void Save(const QString& path) {
        engine.Save(path.toStdString());
        Finish();
    }
    void Reopen(const QString& path) {
        OpenRequest request;
        request.scenePath = path.toStdString();
        Open(request);
    }
    /// Recovers the work from a copy of the newest journal, as after a crash.
    void Recover(const QString& copy) {
        namespace fs = std::filesystem;
        const fs::path to = folder.filePath(copy).toStdString();
        const fs::path journal = engine.Document().journalPath;
        fs::copy(journal.parent_path(), to);
        OpenRequest request;
        request.journalPath = (to / journal.filename()).string();
        Open(request);
    }
    void Open(const OpenRequest& request) {
        bool isOpened = false;
        const auto connection =
            QObject::connect(&engine, &Engine::Opened, &view, [&] { isOpened = true; });
        engine.Open(request);
        ASSERT_TRUE(WaitFor([&] { return isOpened || !failures.empty(); }));
        QObject::disconnect(connection);
        Finish();
    }
    QListWidget* List(const char* name) const {
        for (QListWidget* list : window->findChildren<QListWidget*>())
            if (list->accessibleName() == QLatin1String(name)) return list;
        return nullptr;
    }

    CameraPose camera = front;
    QStringList notes;
};

}  // namespace

TEST_F(StudioSceneTest, BookmarksStoreAndRestoreTheCamera) {
    EXPECT_FALSE(Action("view.bookmark.add")->isEnabled()) << "without a document";
    OpenSphere();
    EXPECT_FALSE(Action("view.bookmark.1")->isEnabled());
    Action("view.bookmark.add")->trigger();
    camera = side;
    Action("view.bookmark.add")->trigger();
    EXPECT_TRUE(window->Files().HasUnsavedWork());
    EXPECT_EQ(LastStep().at("applicationData").at("name"), StudioScene::entryName);
    EXPECT_TRUE(State().history.empty());

    Action("view.bookmark.1")->trigger();
    EXPECT_EQ(camera, front);
    Action("view.bookmark.next")->trigger();
    EXPECT_EQ(camera, side);
    Action("view.bookmark.next")->trigger();
    EXPECT_EQ(camera, front) << "after the last one, the first one follows";
    EXPECT_FALSE(Action("view.bookmark.3")->isEnabled());

    camera.fieldOfView = 60.0f;
    Action("view.bookmark.update")->trigger();
    camera = side;
    Action("view.bookmark.1")->trigger();
    EXPECT_EQ(camera.fieldOfView, 60.0f);

    const QString path = folder.filePath("bookmarks.trovik");
    Save(path);
    EXPECT_FALSE(window->Files().HasUnsavedWork());
    OpenSphere();
    EXPECT_TRUE(window->Scene().Bookmarks().empty());
    Reopen(path);
    ASSERT_EQ(window->Scene().Bookmarks().size(), 2u);
    EXPECT_EQ(window->Scene().Bookmarks()[1].camera, side);
    EXPECT_FALSE(window->Files().HasUnsavedWork());
    Action("view.bookmark.2")->trigger();
    Action("view.bookmark.delete")->trigger();
    ASSERT_EQ(window->Scene().Bookmarks().size(), 1u);
    EXPECT_EQ(window->Scene().Bookmarks()[0].camera.fieldOfView, 60.0f);
    EXPECT_FALSE(Action("view.bookmark.delete")->isEnabled()) << "no bookmark is selected";
}

TEST_F(StudioSceneTest, BookmarkListGoesToAndRenamesBookmarks) {
    OpenSphere();
    Action("panel.view")->trigger();
    Action("view.bookmark.add")->trigger();
    camera = side;
    Action("view.bookmark.add")->trigger();
    QListWidget* list = List("Bookmarks");
    ASSERT_NE(list, nullptr);
    ASSERT_EQ(list->count(), 2);
    EXPECT_EQ(list->item(0)->text(), "View 1");
    Q_EMIT list->itemClicked(list->item(0));
    EXPECT_EQ(camera, front);
    Action("view.bookmark.rename")->trigger();
    auto* entry = list->findChild<QLineEdit*>();
    ASSERT_NE(entry, nullptr);
    entry->setText("  Profile ");
    QTest::keyClick(entry, Qt::Key_Return);
    // The list commits the text in the event loop.
    EXPECT_TRUE(WaitFor([this] { return window->Scene().Bookmarks()[0].name == "Profile"; }, 5000));
    EXPECT_EQ(list->item(0)->text(), "Profile");
    EXPECT_TRUE(WaitFor([this] { return QApplication::focusWidget() == viewport; }));
    Action("view.bookmark.add")->trigger();
    EXPECT_EQ(window->Scene().Bookmarks()[2].name, "View 3");
}

TEST_F(StudioSceneTest, StepsOfScriptsChangeTheScene) {
    OpenSphere();
    Action("view.bookmark.add")->trigger();
    const nlohmann::json step = LastStep();
    OpenSphere();
    ASSERT_TRUE(window->Scene().Bookmarks().empty());
    engine.Run(step);
    ASSERT_EQ(window->Scene().Bookmarks().size(), 1u);
    EXPECT_EQ(window->Scene().Bookmarks()[0].camera, front);
    engine.Run({{"applicationData", {{"name", StudioScene::entryName}, {"text", "{"}}}});
    EXPECT_EQ(window->Scene().Bookmarks().size(), 1u) << "unreadable data is ignored";
    EXPECT_EQ(notes.size(), 1);
    engine.Run({{"applicationData", {{"name", StudioScene::entryName}}}});
    EXPECT_TRUE(window->Scene().Bookmarks().empty());
}

TEST_F(StudioSceneTest, ReferencePathsAreRelativeToTheScene) {
    OpenSphere();
    const QDir root(folder.path());
    root.mkpath("scenes/images");
    QImage picture(8, 4, QImage::Format_RGB32);
    picture.fill(Qt::red);
    const QString file = root.filePath("scenes/images/front.png");
    ASSERT_TRUE(picture.save(file));
    ReferenceImage image;
    image.path = file;
    image.lock = ReferenceImage::Lock::Left;
    image.centre = {0.1f, 0.2f, 0.3f};
    image.height = 2.5f;
    image.opacity = 0.25f;
    image.isInFront = true;
    window->Scene().SetReferences({image});
    EXPECT_NE(
        LastStep().at("applicationData").at("text").get<std::string>().find(file.toStdString()),
        std::string::npos)
        << "absolute before the first save";
    const QString scene = root.filePath("scenes/head.trovik");
    Save(scene);
    const nlohmann::json steps = Steps();
    bool isRelative = false;
    for (const nlohmann::json& step : steps)
        if (step.contains("applicationData"))
            isRelative = nlohmann::json::parse(step["applicationData"]["text"].get<std::string>())
                             .at("references")[0]
                             .at("file") == "images/front.png";
    EXPECT_TRUE(isRelative);

    ASSERT_TRUE(QFile::rename(root.filePath("scenes"), root.filePath("moved")));
    Reopen(root.filePath("moved/head.trovik"));
    ASSERT_EQ(window->Scene().References().size(), 1u);
    image.path = root.filePath("moved/images/front.png");
    EXPECT_EQ(window->Scene().References()[0], image);
    EXPECT_TRUE(notes.isEmpty()) << notes.join("\n").toStdString();

    ASSERT_TRUE(QFile::remove(image.path));
    Reopen(root.filePath("moved/head.trovik"));
    ASSERT_EQ(notes.size(), 1);
    EXPECT_TRUE(notes[0].contains(image.path)) << notes[0].toStdString();
}

TEST_F(StudioSceneTest, RecoveredWorkFindsItsReferenceImages) {
    OpenSphere();
    const QDir root(folder.path());
    root.mkpath("scenes/images");
    QImage picture(8, 4, QImage::Format_RGB32);
    picture.fill(Qt::red);
    ReferenceImage image;
    image.path = root.filePath("scenes/images/front.png");
    ASSERT_TRUE(picture.save(image.path));
    window->Scene().SetReferences({image});
    Save(root.filePath("scenes/head.trovik"));
    engine.Run({{"mask", "invert"}});
    Finish();
    // The second time, the journal starts from the scene that was recovered the first time.
    for (const char* copy : {"crashed", "crashed again"}) {
        Recover(copy);
        ASSERT_TRUE(engine.Document().isRecovered);
        ASSERT_EQ(window->Scene().References().size(), 1u) << copy;
        EXPECT_EQ(window->Scene().References()[0].path, image.path) << copy;
    }
    EXPECT_TRUE(notes.isEmpty()) << notes.join("\n").toStdString();

    // The scene was moved before it was opened, and was never saved at its new location.
    ASSERT_TRUE(QFile::rename(root.filePath("scenes"), root.filePath("moved")));
    Reopen(root.filePath("moved/head.trovik"));
    engine.Run({{"mask", "invert"}});
    Finish();
    Recover("crashed after moving");
    ASSERT_EQ(window->Scene().References().size(), 1u);
    EXPECT_EQ(window->Scene().References()[0].path, root.filePath("moved/images/front.png"));
}

TEST_F(StudioSceneTest, ACopyInAnotherFolderFindsItsReferenceImages) {
    OpenSphere();
    const QDir root(folder.path());
    root.mkpath("scenes");
    root.mkpath("copies");
    QImage picture(8, 4, QImage::Format_RGB32);
    picture.fill(Qt::red);
    ReferenceImage image;
    image.path = root.filePath("scenes/front.png");
    ASSERT_TRUE(picture.save(image.path));
    window->Scene().SetReferences({image});
    Save(root.filePath("scenes/head.trovik"));
    engine.SaveCopy(root.filePath("copies/copy.trovik").toStdString());
    Finish();
    Reopen(root.filePath("copies/copy.trovik"));
    ASSERT_EQ(window->Scene().References().size(), 1u);
    EXPECT_EQ(window->Scene().References()[0].path, image.path);
}

TEST_F(StudioSceneTest, ReferencesPanelPlacesTheSelectedImage) {
    OpenSphere();
    Action("panel.references")->trigger();
    QImage picture(8, 4, QImage::Format_RGB32);
    picture.fill(Qt::red);
    const QString file = folder.filePath("model.png");
    ASSERT_TRUE(picture.save(file));
    view.bounds = [] { return AxisAlignedBoundingBox{-1.0f, -2.0f, -1.0f, 1.0f, 3.0f, 1.0f}; };
    const ActionContext context{engine, actions, view, preferences, window->Scene(), window.get()};
    EXPECT_TRUE(IsReferenceFile(file));
    EXPECT_FALSE(IsReferenceFile("mesh.obj"));
    AddReference(context, file);
    AddReference(context, folder.filePath("missing.png"));
    EXPECT_EQ(notes.size(), 1) << "the missing file is reported";
    ASSERT_EQ(window->Scene().References().size(), 1u);
    const auto image = [this] { return window->Scene().References().at(0); };
    EXPECT_EQ(image().lock, ReferenceImage::Lock::Front) << "the camera looks along -z";
    EXPECT_EQ(image().height, 5.0f);
    EXPECT_EQ(image().centre, Vector(0.0f, 0.5f, 0.0f));

    auto* panel = window->findChild<ReferencesPanel*>();
    ASSERT_NE(panel, nullptr);
    const auto slider = [&](const char* name) {
        for (ValueSlider* one : panel->findChildren<ValueSlider*>())
            if (one->Name() == QLatin1String(name)) return one;
        return static_cast<ValueSlider*>(nullptr);
    };
    EXPECT_EQ(slider("Up")->Value(), 0.5);
    slider("Up")->Enter(0.75);
    slider("Across")->Enter(-0.25);
    slider("Opacity")->Enter(80);
    EXPECT_EQ(image().centre, Vector(-0.25f, 0.75f, 0.0f));
    EXPECT_EQ(image().opacity, 0.8f);
    const std::size_t steps = Steps().size();
    Q_EMIT slider("Height")->Dragged(2.0);
    EXPECT_EQ(image().height, 2.0f);
    EXPECT_EQ(Steps().size(), steps) << "nothing is stored during a drag";
    Q_EMIT slider("Height")->Edited(2.0);
    EXPECT_EQ(Steps().size(), steps + 1);
    Action("reference.delete")->trigger();
    EXPECT_TRUE(window->Scene().References().empty());
    EXPECT_FALSE(Action("reference.delete")->isEnabled());
    EXPECT_TRUE(QFile::exists(file));
}

TEST(ReferenceImage, IsShownFromItsDirection) {
    Camera shown;
    shown.SetSize(800, 400);
    shown.LookAlong({-1.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f});
    const RenderView view = shown.ToRenderView({-1, -1, -1, 1, 1, 1});
    const QImage picture(20, 10, QImage::Format_RGBA8888);
    ReferenceImage image;
    image.height = 0.5f;
    const auto onScreen = QuadOf(image, picture, view);
    ASSERT_TRUE(onScreen.has_value());
    EXPECT_EQ(onScreen->corners[0], (std::array{-0.5f, -0.5f, 1.0f}));
    EXPECT_EQ(onScreen->corners[3], (std::array{0.5f, 0.5f, 1.0f}));

    EXPECT_EQ(LockFor(view.forward), ReferenceImage::Lock::Right);
    image.lock = ReferenceImage::Lock::Right;
    image.centre = {0.3f, 0.1f, -0.2f};
    const auto inWorld = QuadOf(image, picture, view);
    ASSERT_TRUE(inWorld.has_value());
    // Seen from +x, the right side of the image is towards -z.
    const Vector corner = shown.ToPixel({0.3f, 0.35f, -0.7f});
    const auto& [x, y, w] = inWorld->corners[3];
    EXPECT_NEAR((x / w * 0.5f + 0.5f) * 800.0f, corner.x, 0.01f);
    EXPECT_NEAR((0.5f - y / w * 0.5f) * 400.0f, corner.y, 0.01f);

    image.lock = ReferenceImage::Lock::Front;
    EXPECT_FALSE(QuadOf(image, picture, view).has_value());
    image.lock = ReferenceImage::Lock::Screen;
    image.isVisible = false;
    EXPECT_FALSE(QuadOf(image, picture, view).has_value());
}

TEST_F(StudioSceneTest, GroupsAreListedMaskedAndHidden) {
    const QString path = folder.filePath("groups.obj");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(
        "v 0 0 0\nv 1 0 0\nv 2 0 0\nv 3 0 0\nv 0 1 0\nv 1 1 0\nv 2 1 0\nv 3 1 0\n"
        "g left\nf 1 2 6 5\ng right\nf 2 3 7 6\ng\nf 3 4 8 7\n");
    file.close();
    OpenRequest request;
    request.meshPath = path.toStdString();
    request.levels = 2;
    bool isOpened = false;
    QObject::connect(&engine, &Engine::Opened, &view, [&] { isOpened = true; });
    engine.Open(request);
    ASSERT_TRUE(WaitFor([&] { return isOpened || !failures.empty(); }));
    Finish();
    const std::vector<FaceGroup>& groups = window->Scene().Groups();
    ASSERT_GE(groups.size(), 2u);
    EXPECT_EQ(groups[0].title, "left");
    EXPECT_EQ(groups[1].title, "right");
    QListWidget* list = List("Face groups");
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->count(), static_cast<int>(groups.size()));
    EXPECT_FALSE(Action("group.mask")->isEnabled());
    Q_EMIT list->itemClicked(list->item(1));
    Action("group.mask")->trigger();
    EXPECT_EQ(LastStep(), nlohmann::json::parse(R"({"mask": {"group": "right"}})"));
    Action("group.hide")->trigger();
    EXPECT_EQ(LastStep(), nlohmann::json::parse(R"({"hide": {"group": "right"}})"));
    Action("group.show")->trigger();
    Action("group.maskOnly")->trigger();
    Action("group.unmask")->trigger();
    EXPECT_EQ(LastStep(),
              nlohmann::json::parse(R"({"mask": {"group": "right", "mode": "subtract"}})"));
    Finish();
    EXPECT_EQ(State().history.size(), 4u) << "masking only what is masked changes nothing";

    StrokeView above;
    above.eye = {1.5f, 0.5f, 5.0f};
    above.target = {1.5f, 0.5f, 0.0f};
    engine.SetView(above);
    std::optional<HoverHit> hit;
    QObject::connect(
        &engine, &Engine::HoverPicked, &view, [&](const HoverHit& picked) { hit = picked; });
    engine.Pick(480.0f, 360.0f);
    ASSERT_TRUE(WaitFor([&] { return hit.has_value(); }));
    ASSERT_TRUE(hit->isHit);
    EXPECT_EQ(hit->group, 1);
    // The menu selects the group under the pointer.
    Q_EMIT list->itemClicked(list->item(0));
    const ActionContext context{engine, actions, view, preferences, window->Scene(), window.get()};
    const ViewportMenu menu(context, *hit, window.get());
    EXPECT_EQ(window->Scene().CurrentGroup(), 1);
    QAction* hidePart = nullptr;
    for (const QMenu* sub : menu.findChildren<QMenu*>())
        for (QAction* action : sub->actions())
            if (action->text() == "Hide Part") hidePart = action;
    ASSERT_NE(hidePart, nullptr);
    hidePart->trigger();
    EXPECT_EQ(LastStep(),
              nlohmann::json::parse(R"({"hide": {"component": {"pointer": [480.0, 360.0]}}})"));
    auto* strength = [&] {
        for (ValueSlider* one : menu.findChildren<ValueSlider*>())
            if (one->Name() == "Strength") return one;
        return static_cast<ValueSlider*>(nullptr);
    }();
    ASSERT_NE(strength, nullptr);
    strength->Enter(33.0);
    Finish();
    EXPECT_EQ(State().tool.strength, 33.0f);
}

}  // namespace trovik::studio
