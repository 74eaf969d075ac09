// SPDX-License-Identifier: Apache-2.0

/// \file Tests the dialogs of the menu Surface that change the mesh.
#include "commands/FileDialogs.h"
#include "commands/StudioActions.h"
#include "commands/StudioScene.h"
#include "framework/files/MeshFiles.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/studio/panels/StudioWindow.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>

#include <functional>

namespace trovik::studio {

namespace {

using nlohmann::json;

/// Returns the control with this accessible name.
template <typename Control>
Control* Named(QWidget& dialog, const QString& name) {
    for (Control* control : dialog.findChildren<Control*>())
        if (control->accessibleName() == name) return control;
    ADD_FAILURE() << "no control " << name.toStdString();
    return nullptr;
}

/// Calls `open`, which opens a dialog; then `fill`, and presses the default button.
void Answer(const std::function<void()>& open, const std::function<void(QDialog&)>& fill) {
    QTimer timer;
    bool isAnswered = false;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr || isAnswered) return;
        isAnswered = true;
        for (const QWidget* widget : dialog->findChildren<QWidget*>())
            if (qobject_cast<const QAbstractButton*>(widget) != nullptr) {
                EXPECT_FALSE(widget->toolTip().isEmpty());
            }
        fill(*dialog);
        for (QPushButton* button : dialog->findChildren<QPushButton*>())
            if (button->isDefault()) button->click();
    });
    timer.start(5);
    open();
    EXPECT_TRUE(isAnswered);
}

}  // namespace

TEST_F(StudioWindow, VoxelRemeshShowsTheFacesBeforeAndAfter) {
    OpenSphere(0);
    const uint32_t before = State().levels[0].faces;
    Answer([&] { Action("surface.voxelRemesh")->trigger(); },
           [&](QDialog& dialog) {
               EXPECT_TRUE(
                   Named<QLabel>(dialog, "Before")->text().contains(QLocale().toString(before)));
               Named<QSpinBox>(dialog, "Faces")->setValue(2000);
               Named<QSpinBox>(dialog, "Levels")->setValue(1);
               EXPECT_EQ(Named<QLabel>(dialog, "After")->text(),
                         "about 8,000 faces on the highest level");
               Named<QCheckBox>(dialog, "Keep sharp detail")->setChecked(true);
           });
    Finish();
    EXPECT_EQ(failures, QStringList());
    EXPECT_EQ(LastStep(),
              (json{{"voxelRemesh", {{"faces", 2000}, {"levels", 1}, {"project", true}}}}));
    ASSERT_EQ(State().levels.size(), 2u);
    EXPECT_NEAR(State().levels[0].faces, 2000, 100);
    EXPECT_EQ(State().currentLevel, 1u);
    engine.Run({{"undo", 1}});
    Finish();
    ASSERT_EQ(State().levels.size(), 1u);
    EXPECT_EQ(State().levels[0].faces, before);
}

TEST_F(StudioWindow, VoxelRemeshByVoxelSize) {
    OpenSphere(0);
    Answer([&] { Action("surface.voxelRemesh")->trigger(); },
           [&](QDialog& dialog) {
               Named<QComboBox>(dialog, "Resolution")->setCurrentIndex(1);
               auto* voxel = Named<QDoubleSpinBox>(dialog, "Voxel size");
               EXPECT_TRUE(voxel->isVisible());
               voxel->setValue(0.1);
               EXPECT_TRUE(Named<QLabel>(dialog, "After")->text().startsWith("roughly 1,8"));
           });
    Finish();
    EXPECT_EQ(failures, QStringList());
    EXPECT_NEAR(State().levels[0].faces, 1880, 100);
}

TEST_F(StudioWindow, ProjectionMovesTheSurfaceOntoAFile) {
    OpenSphere(0);
    PolygonMesh larger = trovik::test::SphereQuads(5);
    for (auto& p : larger.positions)
        for (float& c : p) c *= 1.1f;
    const QString path = folder.filePath("larger.obj");
    WriteMeshFile(path.toStdString(), larger);
    EXPECT_FALSE(Action("surface.project")->toolTip().isEmpty());
    StudioScene scene(engine);
    const ActionContext context{engine, actions, view, preferences, scene, window.get()};
    Answer([&] { AskProjection(context, path); },
           [&](QDialog& dialog) {
               EXPECT_EQ(Named<QLabel>(dialog, "File")->text(), "larger.obj");
               Named<QDoubleSpinBox>(dialog, "Distance")->setValue(0.5);
           });
    Finish();
    EXPECT_EQ(failures, QStringList());
    EXPECT_EQ(LastStep().at("project").at("distance"), 0.5);
    ASSERT_EQ(State().historyPosition, 1u);
    EXPECT_EQ(State().history.back().label, "Project");
}

TEST_F(StudioWindow, AppendingAddsAFileAsANewPart) {
    OpenSphere(0);
    const uint32_t before = State().levels[0].faces;
    const QString path = folder.filePath("horn.obj");
    WriteMeshFile(path.toStdString(), trovik::test::Cube());
    EXPECT_FALSE(Action("surface.append")->toolTip().isEmpty());
    StudioScene scene(engine);
    const ActionContext context{engine, actions, view, preferences, scene, window.get()};
    Answer([&] { AskAppending(context, path); },
           [&](QDialog& dialog) {
               EXPECT_EQ(Named<QLabel>(dialog, "File")->text(), "horn.obj");
               Named<QDoubleSpinBox>(dialog, "Scale")->setValue(50.0);
               Named<QDoubleSpinBox>(dialog, "Move X")->setValue(3.0);
               Named<QComboBox>(dialog, "Unit")->setCurrentIndex(1);
           });
    Finish();
    EXPECT_EQ(failures, QStringList());
    const json step = LastStep().at("append");
    EXPECT_EQ(step.at("scale"), 0.5);
    EXPECT_EQ(step.at("translate"), (json{3.0, 0.0, 0.0}));
    EXPECT_EQ(step.at("units"), "mm");
    EXPECT_FALSE(step.contains("up"));
    EXPECT_EQ(State().levels[0].faces, before + 6);
    EXPECT_EQ(State().history.back().label, "Append mesh");
}

TEST_F(StudioWindow, ExtractingMakesANewPartFromTheMaskedPart) {
    OpenSphere(0);
    const uint32_t before = State().levels[0].faces;
    engine.Run({{"mask", {{"center", {0, 0, 1}}, {"radius", 0.7}}}});
    Finish();
    Answer([&] { Action("surface.extract")->trigger(); },
           [&](QDialog& dialog) {
               Named<QDoubleSpinBox>(dialog, "Thickness")->setValue(0.1);
               Named<QComboBox>(dialog, "Side")->setCurrentIndex(2);
               Named<QSpinBox>(dialog, "Smooth border")->setValue(2);
           });
    Finish();
    EXPECT_EQ(failures, QStringList());
    const json step = LastStep().at("extract");
    EXPECT_EQ(step.at("thickness"), 0.1);
    EXPECT_EQ(step.at("side"), "both");
    EXPECT_EQ(step.at("smoothBorder"), 2);
    EXPECT_GT(State().levels[0].faces, before);
    EXPECT_EQ(State().history.back().label, "Extract masked part");
}

TEST_F(StudioWindow, QuadrangulatingPairsTriangles) {
    OpenSphere(0);
    engine.Run({{"remesh", {{"faces", 1000}}}});
    Finish();
    const uint32_t triangles = State().levels[0].faces;
    Answer([&] { Action("surface.quadrangulate")->trigger(); },
           [&](QDialog& dialog) { Named<QComboBox>(dialog, "Split")->setCurrentIndex(2); });
    Finish();
    EXPECT_EQ(failures, QStringList());
    EXPECT_EQ(
        LastStep(),
        (json{
            {"quadrangulate",
             {{"split", "never"}, {"maxAngle", 40.0}, {"keepGroups", true}, {"keepUvs", true}}}}));
    EXPECT_EQ(State().levels[0].faces, triangles / 2);
}

TEST_F(StudioWindow, ExportOptionsContainTheReduction) {
    ExportDialog dialog(window.get());
    EXPECT_EQ(dialog.Options(), (json{{"world", false}, {"hidden", true}}));
    auto* by = Named<QComboBox>(dialog, "Decimate");
    Named<QDoubleSpinBox>(dialog, "Fraction")->setValue(20.0);
    Named<QSpinBox>(dialog, "Triangles")->setValue(300);
    Named<QDoubleSpinBox>(dialog, "Distance")->setValue(0.5);
    const json expected[] = {{{"ratio", 0.2}}, {{"faces", 300}}, {{"error", 0.5}}};
    for (int i = 0; i < 3; ++i) {
        by->setCurrentIndex(i + 1);
        EXPECT_EQ(dialog.Options().at("decimate"), expected[i]);
    }
    by->setCurrentIndex(0);
    EXPECT_FALSE(dialog.Options().contains("lodRatio"));
    Named<QSpinBox>(dialog, "Levels of detail")->setValue(2);
    Named<QDoubleSpinBox>(dialog, "Detail fraction")->setValue(25.0);
    EXPECT_EQ(dialog.Options(),
              (json{{"world", false}, {"hidden", true}, {"lods", 2}, {"lodRatio", 0.25}}));
}

}  // namespace trovik::studio
