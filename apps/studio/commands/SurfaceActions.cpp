// SPDX-License-Identifier: Apache-2.0
#include "commands/FormDialog.h"
#include "commands/StudioActions.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDoubleSpinBox>
#include <QSpinBox>

#include <algorithm>
#include <cmath>
#include <string_view>

namespace trovik::studio {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(SurfaceActions)
};

/// An action that opens a dialog for the parameters of one filter.
struct FilterAction {
    /// The kind in the step "filter". The names of the action and of its icon end with it.
    const char* kind;
    QString text, description;
    int iterations;
};

FormDialog::NumberFormat Percent() { return {1, 5.0, QStringLiteral(" %")}; }

/// A hundredth of the size of the surface, rounded down to a power of ten: a length with a visible
/// but small effect.
double SmallLength(const ActionContext& context) {
    const AxisAlignedBoundingBox box =
        context.engine.HasDocument() ? context.engine.Document().bounds : AxisAlignedBoundingBox();
    if (box.IsEmpty()) return 0.1;
    const double size = std::max({static_cast<double>(box.maxX) - box.minX,
                                  static_cast<double>(box.maxY) - box.minY,
                                  static_cast<double>(box.maxZ) - box.minZ});
    return size > 0.0 ? std::pow(10.0, std::floor(std::log10(size * 0.0101))) : 0.1;
}

/// The number format for lengths of about this size.
FormDialog::NumberFormat LengthFormat(double length) {
    const int decimals = static_cast<int>(std::ceil(-std::log10(length))) + 2;
    return {std::clamp(decimals, 2, 9), length};
}

void RunFilter(const ActionContext& context, const FilterAction& row) {
    FormDialog dialog(row.text, Text::tr("Apply"), context.window);
    const bool sharpens = std::string_view(row.kind) == "sharpen";
    QDoubleSpinBox* strength =
        dialog.AddNumber(Text::tr("Strength"),
                         sharpens ? Text::tr("How much details grow in each iteration")
                                  : Text::tr("How far each iteration moves vertices towards the "
                                             "mean of their neighbours"),
                         0.0,
                         sharpens ? 1000.0 : 100.0,
                         50.0,
                         Percent());
    QSpinBox* iterations = dialog.AddWhole(Text::tr("Iterations"),
                                           Text::tr("More iterations affect larger details"),
                                           1,
                                           1000,
                                           row.iterations);
    if (dialog.exec() != QDialog::Accepted) return;
    context.Run("filter",
                {{"kind", row.kind},
                 {"strength", strength->value() / 100.0},
                 {"iterations", iterations->value()}},
                row.text);
}

void Inflate(const ActionContext& context) {
    const QString title = Text::tr("Inflate");
    FormDialog dialog(title, Text::tr("Apply"), context.window);
    const double length = SmallLength(context);
    QDoubleSpinBox* amount =
        dialog.AddNumber(Text::tr("Distance"),
                         Text::tr("Distance in world units; negative values move inwards"),
                         -1e6,
                         1e6,
                         length,
                         LengthFormat(length));
    if (dialog.exec() != QDialog::Accepted) return;
    context.Run("filter", {{"kind", "inflate"}, {"amount", amount->value()}}, title);
}

void TransformUnmasked(const ActionContext& context) {
    const QString title = Text::tr("Transform Unmasked Part");
    FormDialog dialog(title, Text::tr("Apply"), context.window);
    QComboBox* pivot = dialog.AddChoice(Text::tr("Pivot"),
                                        Text::tr("The point that stays in place"),
                                        {{Text::tr("Border of the mask"), "maskBorder"},
                                         {Text::tr("Centre of the unmasked part"), "center"}});
    QComboBox* axis = dialog.AddChoice(Text::tr("Rotation axis"),
                                       Text::tr("A world axis through the pivot"),
                                       {{"X", 0}, {"Y", 1}, {"Z", 2}});
    QDoubleSpinBox* angle =
        dialog.AddNumber(Text::tr("Angle"),
                         Text::tr("Counterclockwise, seen from the tip of the axis"),
                         -360.0,
                         360.0,
                         0.0,
                         {1, 5.0, QStringLiteral("°")});
    QDoubleSpinBox* scale = dialog.AddNumber(Text::tr("Scale"),
                                             Text::tr("In all directions; 100 % keeps the size"),
                                             0.1,
                                             100000.0,
                                             100.0,
                                             Percent());
    QDoubleSpinBox* move[3];
    const QString names[3] = {Text::tr("Move X"), Text::tr("Move Y"), Text::tr("Move Z")};
    const FormDialog::NumberFormat lengths = LengthFormat(SmallLength(context));
    for (int i = 0; i < 3; ++i)
        move[i] = dialog.AddNumber(
            names[i], Text::tr("Distance along the axis, in world units"), -1e6, 1e6, 0.0, lengths);
    QSpinBox* blur = dialog.AddWhole(
        Text::tr("Soft border"),
        Text::tr("How often the mask is blurred for this change, for a smooth transition"),
        0,
        1000,
        4);

    if (dialog.exec() != QDialog::Accepted) return;
    nlohmann::json direction = {0, 0, 0};
    direction[static_cast<std::size_t>(axis->currentData().toInt())] = 1;
    context.Run("transformVertices",
                {{"pivot", FormDialog::ChosenText(pivot)},
                 {"axis", direction},
                 {"angle", angle->value()},
                 {"scale", scale->value() / 100.0},
                 {"translate", {move[0]->value(), move[1]->value(), move[2]->value()}},
                 {"maskBlur", blur->value()}},
                title);
}

}  // namespace

void AddSurfaceActions(const ActionContext& context) {
    ActionRegistry& actions = context.actions;
    const FilterAction filters[] = {
        {"smooth", Text::tr("Smooth Surface"), Text::tr("Smooths the whole unmasked surface."), 2},
        {"relax",
         Text::tr("Relax Surface"),
         Text::tr("Evens out the spacing of the vertices and keeps the shape."),
         5},
        {"sharpen",
         Text::tr("Sharpen Surface"),
         Text::tr("Amplifies the details of the whole unmasked surface."),
         2}};
    for (const FilterAction& row : filters) {
        const QLatin1String kind(row.kind);
        context.EnableWithDocument(
            actions.Add({.id = QStringLiteral("surface.%1").arg(kind),
                         .text = Text::tr("%1…").arg(row.text),
                         .description = row.description,
                         .icon = QStringLiteral("surface-%1").arg(kind),
                         .run = [context, row] { RunFilter(context, row); }}));
    }
    context.EnableWithDocument(
        actions.Add({.id = "surface.inflate",
                     .text = Text::tr("Inflate…"),
                     .description = Text::tr("Moves the whole unmasked surface along its normals."),
                     .icon = "surface-inflate",
                     .run = [context] { Inflate(context); }}));
    context.EnableWithDocument(actions.Add(
        {.id = "surface.transform",
         .text = Text::tr("Transform Unmasked Part…"),
         .description = Text::tr("Rotates, scales and moves the unmasked part, for example an arm "
                                 "about the border of the mask."),
         .icon = "surface-transform",
         .run = [context] { TransformUnmasked(context); }}));
}

}  // namespace trovik::studio
