// SPDX-License-Identifier: Apache-2.0

/// \file Actions that replace the mesh.
#include "commands/RemeshDialog.h"
#include "commands/ReplacementNote.h"
#include "commands/StudioActions.h"
#include "commands/SubdivideDialog.h"
#include "commands/SurfaceSize.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QSpinBox>

#include <algorithm>
#include <cmath>

namespace trovik::studio {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(TopologyActions)
};

void RunRemesh(const ActionContext& context) {
    RemeshDialog dialog(context.engine, context.State(), context.window);
    if (dialog.exec() == QDialog::Accepted)
        context.Run("remesh", dialog.Options(), dialog.windowTitle());
}

void RunDecimate(const ActionContext& context) {
    const QString title = Text::tr("Decimate");
    FormDialog dialog(title, Text::tr("Decimate"), context.window);
    AddReplacementNote(dialog, context.State());
    QSpinBox* faces = dialog.AddWhole(Text::tr("Triangles"),
                                      Text::tr("Number of triangles to keep. A quad is two "
                                               "triangles; masked areas are kept"),
                                      4,
                                      maxReplacementFaces,
                                      InitialFaces(context.State(), 4));
    QCheckBox* borders = dialog.AddCheck(
        Text::tr("Keep borders"), Text::tr("Keeps all vertices of open borders"), true);
    if (dialog.exec() != QDialog::Accepted) return;
    context.Run(
        "decimate", {{"faces", faces->value()}, {"keepBorders", borders->isChecked()}}, title);
}

void RunRepair(const ActionContext& context) {
    const QString title = Text::tr("Repair");
    FormDialog dialog(title, Text::tr("Repair"), context.window);
    AddReplacementNote(dialog, context.State());
    QDoubleSpinBox* weld = dialog.AddNumber(
        Text::tr("Weld distance"),
        Text::tr("Merges vertices within this distance, in world units; 0 merges only vertices at "
                 "the same position"),
        0.0,
        1e6,
        0.0,
        {6, 0.0001});
    QComboBox* holes = dialog.AddChoice(Text::tr("Holes"),
                                        Text::tr("Whether and how holes are filled"),
                                        {{Text::tr("Keep"), "none"},
                                         {Text::tr("Fill flat"), "flat"},
                                         {Text::tr("Fill smoothly"), "smooth"}});
    QDoubleSpinBox* pieces =
        dialog.AddNumber(Text::tr("Remove pieces below"),
                         Text::tr("Removes connected components with less than this fraction of "
                                  "all faces"),
                         0.0,
                         100.0,
                         0.0,
                         {2, 1.0, QStringLiteral(" %")});
    QCheckBox* orient = dialog.AddCheck(
        Text::tr("Orient faces"), Text::tr("Flips faces so that all normals point outwards"), true);
    if (dialog.exec() != QDialog::Accepted) return;
    context.Run("repair",
                {{"weld", weld->value()},
                 {"fillHoles", FormDialog::ChosenText(holes)},
                 {"minPieceShare", pieces->value() / 100.0},
                 {"orient", orient->isChecked()}},
                title);
}

/// The number of faces of a closed surface with these bounds: a rough estimate, because only the
/// size of the surface is known.
uint64_t RoughFaces(const AxisAlignedBoundingBox& box, double voxel) {
    const double x = (static_cast<double>(box.maxX) - box.minX) / voxel;
    const double y = (static_cast<double>(box.maxY) - box.minY) / voxel;
    const double z = (static_cast<double>(box.maxZ) - box.minZ) / voxel;
    constexpr double ofEllipsoid = 1.5708;
    return static_cast<uint64_t>(std::min(ofEllipsoid * (x * y + y * z + z * x), 1e15));
}

void RunVoxelRemesh(const ActionContext& context) {
    const QString title = Text::tr("Voxel Remesh");
    FormDialog dialog(title, Text::tr("Remesh"), context.window);
    AddReplacementNote(dialog, context.State());
    const AxisAlignedBoundingBox bounds = SurfaceBounds(context);
    const double size = LongestSide(bounds);
    QComboBox* by = dialog.AddChoice(
        Text::tr("Resolution"),
        Text::tr("Whether the number of faces or the size of the voxels is given"),
        {{Text::tr("Number of faces"), "faces"}, {Text::tr("Voxel size"), "voxelSize"}});
    QSpinBox* faces = dialog.AddWhole(Text::tr("Faces"),
                                      Text::tr("Number of faces of level 0, within 5 %"),
                                      6,
                                      maxReplacementFaces,
                                      InitialFaces(context.State(), 6));
    const double hundredth = size * 0.01;
    QDoubleSpinBox* voxel = dialog.AddNumber(
        Text::tr("Voxel size"),
        Text::tr("Edge length of the voxels in world units; details that are smaller disappear, "
                 "unless levels are added"),
        size * 1e-5,
        size,
        hundredth,
        {std::clamp(static_cast<int>(std::ceil(-std::log10(hundredth))) + 2, 2, 9),
         hundredth * 0.1});
    QCheckBox* project = dialog.AddCheck(
        Text::tr("Keep sharp detail"),
        Text::tr("Moves the vertices of level 0 onto the old surface, which restores edges"),
        false);
    QSpinBox* levels =
        dialog.AddWhole(Text::tr("Levels"),
                        Text::tr("Levels to add above level 0. Each has four times as many faces "
                                 "as the one below, and restores detail of the old surface"),
                        0,
                        6,
                        0);
    QLabel* after = dialog.AddText(Text::tr("After"));
    const auto show = [&] {
        const bool byFaces = FormDialog::ChosenText(by) == "faces";
        dialog.ShowRow(faces, byFaces);
        dialog.ShowRow(voxel, !byFaces);
        const uint64_t base =
            byFaces ? static_cast<uint64_t>(faces->value()) : RoughFaces(bounds, voxel->value());
        const uint64_t highest = base << (2 * levels->value());
        after->setText((byFaces ? Text::tr("about %1 faces on the highest level")
                                : Text::tr("roughly %1 faces on the highest level"))
                           .arg(CountText(highest)));
    };
    QObject::connect(by, &QComboBox::currentIndexChanged, &dialog, show);
    for (QSpinBox* box : {faces, levels})
        QObject::connect(box, &QSpinBox::valueChanged, &dialog, show);
    QObject::connect(voxel, &QDoubleSpinBox::valueChanged, &dialog, show);
    show();
    if (dialog.exec() != QDialog::Accepted) return;
    nlohmann::json step = {{"project", project->isChecked()}, {"levels", levels->value()}};
    if (FormDialog::ChosenText(by) == "faces")
        step["faces"] = faces->value();
    else
        step["voxelSize"] = voxel->value();
    context.Run("voxelRemesh", std::move(step), title);
}

void RunQuadrangulate(const ActionContext& context) {
    const QString title = Text::tr("Quadrangulate");
    FormDialog dialog(title, Text::tr("Quadrangulate"), context.window);
    AddReplacementNote(dialog, context.State());
    QComboBox* split = dialog.AddChoice(
        Text::tr("Split"),
        Text::tr("Whether each face is split into quads around its centre; necessary if some "
                 "triangles cannot be paired"),
        {{Text::tr("If triangles are left"), "ifNeeded"},
         {Text::tr("Always"), "always"},
         {Text::tr("Never"), "never"}});
    QDoubleSpinBox* angle =
        dialog.AddNumber(Text::tr("Largest angle"),
                         Text::tr("Between the normals of the triangles of a pair"),
                         0.0,
                         180.0,
                         40.0,
                         {1, 5.0, QStringLiteral("°")});
    QCheckBox* groups =
        dialog.AddCheck(Text::tr("Keep group borders"),
                        Text::tr("Does not pair triangles of different groups, materials or "
                                 "smoothing groups"),
                        true);
    QCheckBox* seams = dialog.AddCheck(Text::tr("Keep texture seams"),
                                       Text::tr("Does not pair triangles across texture seams"),
                                       true);
    if (dialog.exec() != QDialog::Accepted) return;
    context.Run("quadrangulate",
                {{"split", FormDialog::ChosenText(split)},
                 {"maxAngle", angle->value()},
                 {"keepGroups", groups->isChecked()},
                 {"keepUvs", seams->isChecked()}},
                title);
}

void RunExtract(const ActionContext& context) {
    const QString title = Text::tr("Extract Masked Part");
    FormDialog dialog(title, Text::tr("Extract"), context.window);
    AddReplacementNote(dialog, context.State());
    const double hundredth = LongestSide(SurfaceBounds(context)) * 0.01;
    QDoubleSpinBox* thickness =
        dialog.AddNumber(Text::tr("Thickness"),
                         Text::tr("In world units, along the normals of the surface"),
                         hundredth * 1e-4,
                         hundredth * 100.0,
                         hundredth * 2.0,
                         {std::clamp(static_cast<int>(std::ceil(-std::log10(hundredth))) + 2, 2, 9),
                          hundredth * 0.1});
    QComboBox* side = dialog.AddChoice(Text::tr("Side"),
                                       Text::tr("Where the new part is, relative to the surface"),
                                       {{Text::tr("Outside"), "outside"},
                                        {Text::tr("Inside"), "inside"},
                                        {Text::tr("Both"), "both"}});
    QDoubleSpinBox* threshold = dialog.AddNumber(
        Text::tr("Mask threshold"),
        Text::tr("Faces whose corners are all masked by at least this much are extracted"),
        1.0,
        100.0,
        50.0,
        {1, 5.0, QStringLiteral(" %")});
    QSpinBox* smooth = dialog.AddWhole(
        Text::tr("Smooth border"),
        Text::tr("Iterations that smooth the border of the part, along the surface"),
        0,
        1000,
        4);
    QCheckBox* replace =
        dialog.AddCheck(Text::tr("Replace the surface"),
                        Text::tr("Keeps only the new part; otherwise, it is added to the surface"),
                        false);
    if (dialog.exec() != QDialog::Accepted) return;
    context.Run("extract",
                {{"thickness", thickness->value()},
                 {"side", FormDialog::ChosenText(side)},
                 {"threshold", threshold->value() / 100.0},
                 {"smoothBorder", smooth->value()},
                 {"replace", replace->isChecked()}},
                title);
}

}  // namespace

void AddTopologyActions(const ActionContext& context) {
    ActionRegistry& actions = context.actions;
    context.EnableWithDocument(
        actions.Add({.id = "surface.remesh",
                     .text = Text::tr("Remesh…"),
                     .description = Text::tr("Replaces the mesh by triangles of equal size."),
                     .icon = "surface-remesh",
                     .run = [context] { RunRemesh(context); }}));
    context.EnableWithDocument(
        actions.Add({.id = "surface.decimate",
                     .text = Text::tr("Decimate…"),
                     .description = Text::tr("Replaces the mesh by a coarser triangle mesh that "
                                             "keeps the shape."),
                     .icon = "surface-decimate",
                     .run = [context] { RunDecimate(context); }}));
    context.EnableWithDocument(actions.Add(
        {.id = "surface.repair",
         .text = Text::tr("Repair…"),
         .description = Text::tr("Welds vertices, removes faulty faces and small pieces, orients "
                                 "faces and fills holes."),
         .icon = "surface-repair",
         .run = [context] { RunRepair(context); }}));
    context.EnableWithDocument(actions.Add(
        {.id = "surface.voxelRemesh",
         .text = Text::tr("Voxel Remesh…"),
         .description =
             Text::tr("Replaces the mesh with a closed mesh of evenly sized quads, which joins "
                      "parts that intersect."),
         .icon = "surface-voxel-remesh",
         .run = [context] { RunVoxelRemesh(context); }}));
    context.EnableWithDocument(
        actions.Add({.id = "surface.quadrangulate",
                     .text = Text::tr("Quadrangulate…"),
                     .description = Text::tr("Pairs triangles into quads, and keeps all vertices."),
                     .icon = "surface-quadrangulate",
                     .run = [context] { RunQuadrangulate(context); }}));
    context.EnableWithDocument(actions.Add(
        {.id = "surface.extract",
         .text = Text::tr("Extract Masked Part…"),
         .description = Text::tr("Makes a closed, thick part from the masked part, such as "
                                 "clothes from a body."),
         .icon = "surface-extract",
         .run = [context] { RunExtract(context); }}));
}

}  // namespace trovik::studio
