// SPDX-License-Identifier: Apache-2.0
#include "commands/FileDialogs.h"

#include "commands/SubdivideDialog.h"
#include "framework/files/MeshFormat.h"
#include "resources/Icons.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QToolButton>

namespace trovik::studio {

namespace {

/// Translates a text of MeshFormat.
QString Translated(const char* text) { return QCoreApplication::translate("MeshFormat", text); }

/// Index of the bust's button in NewDialog, after the primitives.
constexpr int bust = static_cast<int>(Primitive::Torus) + 1;

}  // namespace

FormDialog::Choices UnitChoices(const QString& none) {
    FormDialog::Choices choices{{none, QString()}};
    for (const char* unit : {"mm", "cm", "dm", "m", "km", "in", "ft", "yd"})
        choices.push_back({QString::fromLatin1(unit), QString::fromLatin1(unit)});
    return choices;
}

FormDialog::Choices UpChoices(const QString& none) {
    return {{none, QString()},
            {FormDialog::tr("Y up"), QStringLiteral("y")},
            {FormDialog::tr("Z up"), QStringLiteral("z")}};
}

NewDialog::NewDialog(QWidget* parent) : FormDialog(tr("New Sculpture"), tr("Create"), parent) {
    shapes = new QButtonGroup(this);
    auto* row = new QWidget(this);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 8);
    layout->setSpacing(6);
    const std::pair<const char*, QString> buttons[] = {{"sphere", tr("Sphere")},
                                                       {"cube", tr("Cube")},
                                                       {"plane", tr("Plane")},
                                                       {"cylinder", tr("Cylinder")},
                                                       {"cone", tr("Cone")},
                                                       {"torus", tr("Torus")},
                                                       {"bust", tr("Bust")}};
    int id = 0;
    for (const auto& [icon, text] : buttons) {
        auto* button = new QToolButton(row);
        button->setText(text);
        button->setIcon(Icon(QString::fromLatin1(icon)));
        const int line = fontMetrics().height();
        button->setIconSize({2 * line, 2 * line});
        button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
        button->setCheckable(true);
        button->setFixedSize(5 * line, 9 * line / 2);
        button->setAccessibleName(text);
        button->setToolTip(tr("Starts with this shape"));
        shapes->addButton(button, id++);
        layout->addWidget(button);
    }
    shapes->button(0)->setChecked(true);
    AddRow(row);
    segments = AddWhole(
        tr("Base segments"), tr("Number of faces along each edge of the base mesh"), 1, 512, 16);
    levels = AddWhole(tr("Levels"), tr("Number of finer levels above the base mesh"), 0, 8, 3);
    counts = AddText(tr("Faces"));
    connect(segments, &QSpinBox::valueChanged, this, &NewDialog::ShowCounts);
    connect(levels, &QSpinBox::valueChanged, this, &NewDialog::ShowCounts);
    connect(shapes, &QButtonGroup::idClicked, this, &NewDialog::ShowCounts);
    ShowCounts();
}

std::optional<Primitive> NewDialog::Shape() const {
    if (shapes->checkedId() == bust) return std::nullopt;
    return static_cast<Primitive>(shapes->checkedId());
}

std::uint32_t NewDialog::Segments() const { return static_cast<std::uint32_t>(segments->value()); }

int NewDialog::Levels() const { return levels->value(); }

void NewDialog::ShowCounts() {
    const auto shape = Shape();
    ShowRow(segments, shape.has_value());
    ShowRow(counts, shape.has_value());
    if (!shape) return;
    const std::uint64_t base = FacesOf(*shape, Segments());
    const std::uint64_t top = base << (2 * Levels());
    const QString text =
        Levels() == 0
            ? CountText(base)
            : tr("%1 in the base, %2 on the highest level").arg(CountText(base), CountText(top));
    counts->setText(text);
    GoButton()->setEnabled(top <= 100'000'000);
}

ImportDialog::ImportDialog(const QString& fileName, QWidget* parent)
    : FormDialog(tr("Import %1").arg(fileName), tr("Import"), parent) {
    units = AddChoice(tr("Units"),
                      tr("The unit of the coordinates in the file; the values are not converted"),
                      UnitChoices(tr("As in the file")));
    up = AddChoice(tr("Up axis"), tr("The axis that points up"), UpChoices(tr("As in the file")));
    levels = AddWhole(tr("Levels"), tr("Number of finer levels to add above the mesh"), 0, 8, 0);
}

std::string ImportDialog::Units() const { return ChosenText(units); }
std::string ImportDialog::Up() const { return ChosenText(up); }
int ImportDialog::Levels() const { return levels->value(); }

ExportDialog::ExportDialog(QWidget* parent) : FormDialog(tr("Export Mesh"), tr("Export…"), parent) {
    Choices formats;
    for (const MeshFormat& row : MeshFormats()) {
        if (row.write == nullptr) continue;
        const QString name = Translated(row.name);
        const QString title =
            row.encoding == nullptr ? name : tr("%1, %2").arg(name, Translated(row.encoding));
        const QString extension = QString::fromLatin1(row.extension);
        formats.push_back({title + QStringLiteral("  (") + extension + u')', extension});
    }
    format = AddChoice(tr("Format"), tr("The format of the file"), formats);
    format->setCurrentIndex(format->findData(QStringLiteral(".obj")));
    keeps = AddText(tr("Keeps"));
    keeps->setWordWrap(true);
    world = AddCheck(tr("World coordinates"), tr("Applies the transform of the mesh"), false);
    hidden = AddCheck(tr("Hidden faces"), tr("Also exports hidden faces"), true);
    units = AddChoice(tr("Units"),
                      tr("Converts the coordinates if the unit of the mesh is known"),
                      UnitChoices(tr("Unchanged")));
    up = AddChoice(tr("Up axis"),
                   tr("Rotates the mesh so that this axis points up"),
                   UpChoices(tr("Unchanged")));
    AddReduction();
    for (QComboBox* box : {format, decimate})
        connect(box, &QComboBox::currentIndexChanged, this, &ExportDialog::ShowOptions);
    connect(lods, &QSpinBox::valueChanged, this, &ExportDialog::ShowOptions);
    ShowOptions();
}

void ExportDialog::AddReduction() {
    decimate = AddChoice(tr("Decimate"),
                         tr("Whether the file has fewer triangles. The sculpture does not change"),
                         {{tr("Off"), QString()},
                          {tr("To a fraction"), "ratio"},
                          {tr("To a number"), "faces"},
                          {tr("Up to a distance"), "error"}});
    const FormDialog::NumberFormat percent = {2, 5.0, tr(" %")};
    ratio = AddNumber(
        tr("Fraction"), tr("Fraction of the triangles to keep"), 0.01, 100.0, 50.0, percent);
    faces = AddWhole(tr("Triangles"), tr("Number of triangles to keep"), 4, 100'000'000, 50'000);
    error = AddNumber(tr("Distance"),
                      tr("Largest distance between the old and the new surface, in world units"),
                      1e-6,
                      1e6,
                      0.01,
                      {6, 0.001});
    lods = AddWhole(tr("Levels of detail"),
                    tr("Number of further files with fewer triangles: NAME.lod1.EXT and so on"),
                    0,
                    16,
                    0);
    lodRatio = AddNumber(tr("Detail fraction"),
                         tr("Triangles of such a file, as a fraction of the previous one"),
                         1.0,
                         99.0,
                         50.0,
                         percent);
}

QString ExportDialog::Extension() const { return format->currentData().toString(); }

const MeshFormat& ExportDialog::Format() const {
    return *FindMeshFormat("mesh" + Extension().toStdString());
}

void ExportDialog::ShowOptions() {
    const MeshFormat& chosen = Format();
    ShowRow(units, !chosen.space);
    ShowRow(up, !chosen.space);
    const std::string by = ChosenText(decimate);
    ShowRow(ratio, by == "ratio");
    ShowRow(faces, by == "faces");
    ShowRow(error, by == "error");
    ShowRow(lodRatio, lods->value() > 0);
    keeps->setText(chosen.keeps == nullptr ? QString() : Translated(chosen.keeps));
}

nlohmann::json ExportDialog::Options() const {
    nlohmann::json options = {{"world", world->isChecked()}, {"hidden", hidden->isChecked()}};
    AddReductionTo(options);
    if (Format().space) return options;
    if (!ChosenText(units).empty()) options["units"] = ChosenText(units);
    if (!ChosenText(up).empty()) options["up"] = ChosenText(up);
    return options;
}

void ExportDialog::AddReductionTo(nlohmann::json& options) const {
    const std::string by = ChosenText(decimate);
    if (by == "ratio") options["decimate"] = {{"ratio", ratio->value() / 100.0}};
    if (by == "faces") options["decimate"] = {{"faces", faces->value()}};
    if (by == "error") options["decimate"] = {{"error", error->value()}};
    if (lods->value() == 0) return;
    options["lods"] = lods->value();
    options["lodRatio"] = lodRatio->value() / 100.0;
}

DisplacementDialog::DisplacementDialog(const QString& fileName, QWidget* parent)
    : FormDialog(tr("Displace by %1").arg(fileName), tr("Displace"), parent) {
    map = AddChoice(tr("Map"),
                    tr("The content of the map"),
                    {{tr("As in the file"), QString()},
                     {tr("Displacement"), "displacement"},
                     {tr("Vector displacement"), "vector"}});
    space = AddChoice(
        tr("Space"),
        tr("Whether vectors are relative to the surface or to the mesh"),
        {{tr("As in the file"), QString()}, {tr("Tangent"), "tangent"}, {tr("Object"), "object"}});
    strength = AddNumber(tr("Strength"),
                         tr("Multiplies the displacement; negative values invert it"),
                         -100000,
                         100000,
                         100,
                         {1, 10.0, tr(" %")});
    hasScale = AddCheck(tr("Custom range"),
                        tr("Sets the mid value and the scale, for maps that do not specify them"),
                        false);
    mid = AddNumber(
        tr("Middle"), tr("The value that leaves the surface unchanged"), -1e6, 1e6, 0.5, {4, 0.1});
    scale = AddNumber(tr("Scale"),
                      tr("Length that the value 1 represents, in world units"),
                      -1e6,
                      1e6,
                      1,
                      {4, 0.1});
    repeat = AddCheck(tr("Repeats"), tr("Repeats the map beyond its borders"), false);
    ShowRow(mid, false);
    ShowRow(scale, false);
    connect(hasScale, &QCheckBox::toggled, this, [this](bool on) {
        ShowRow(mid, on);
        ShowRow(scale, on);
    });
}

nlohmann::json DisplacementDialog::Options() const {
    nlohmann::json options = {{"strength", strength->value() / 100.0},
                              {"repeat", repeat->isChecked()}};
    if (!ChosenText(map).empty()) options["map"] = ChosenText(map);
    if (!ChosenText(space).empty()) options["space"] = ChosenText(space);
    if (hasScale->isChecked()) {
        options["mid"] = mid->value();
        options["scale"] = scale->value();
    }
    return options;
}

}  // namespace trovik::studio
