// SPDX-License-Identifier: Apache-2.0
#include "commands/BakeDialog.h"

#include "commands/SubdivideDialog.h"
#include "engine/ImageWork.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>

namespace trovik::studio {

namespace {

/// Side of the preview, logical pixels.
constexpr int previewSide = 256;

}  // namespace

BakeDialog::BakeDialog(Engine& given, const DocumentState& state, QWidget* parent)
    : FormDialog(tr("Bake Map"), tr("Bake…"), parent), engine(given) {
    picture = new QLabel(this);
    picture->setAccessibleName(tr("Preview"));
    picture->setAlignment(Qt::AlignCenter);
    picture->setWordWrap(true);
    picture->setFrameShape(QFrame::StyledPanel);
    picture->setFixedSize(previewSide + 2, previewSide + 2);
    auto* row = new QWidget(this);
    auto* centred = new QHBoxLayout(row);
    centred->setContentsMargins(0, 0, 0, 6);
    centred->addWidget(picture, 0, Qt::AlignHCenter);
    AddRow(row);
    map = AddChoice(tr("Map"),
                    tr("What the map holds"),
                    {{tr("Displacement"), "displacement"},
                     {tr("Vector displacement"), "vector"},
                     {tr("Normals"), "normal"}});
    space = AddChoice(tr("Space"),
                      tr("Whether vectors are relative to the surface or to the mesh"),
                      {{tr("Tangent"), "tangent"}, {tr("Object"), "object"}});
    Choices levels;
    for (std::size_t i = 0; i < state.levels.size(); ++i)
        levels.push_back({tr("Level %1 (%2 faces)").arg(i).arg(CountText(state.levels[i].faces)),
                          static_cast<int>(i)});
    from = AddChoice(tr("Detail from"), tr("The level whose detail is baked"), levels);
    from->setCurrentIndex(static_cast<int>(state.levels.size()) - 1);
    to = AddChoice(tr("Onto"), tr("The coarser level that the map is for"), levels);
    Choices sizes;
    for (const int side : {512, 1024, 2048, 4096, 8192})
        sizes.push_back({tr("%1 × %1 pixels").arg(side), side});
    size = AddChoice(tr("Size"), tr("Width and height of the map"), sizes);
    size->setCurrentIndex(2);
    format =
        AddChoice(tr("Format"),
                  tr("The format of the file"),
                  {{"OpenEXR (.exr)", ".exr"}, {"TIFF (.tif)", ".tif"}, {"PNG (.png)", ".png"}});
    bits = AddChoice(tr("Depth"),
                     tr("How exactly values are stored"),
                     {{tr("32-bit float"), "float"}, {tr("16-bit integer"), 16}});
    samples = AddChoice(tr("Samples"),
                        tr("Samples per pixel; more are slower and smoother"),
                        {{"1", 1}, {"4", 4}, {"16", 16}});
    samples->setCurrentIndex(1);
    padding = AddWhole(tr("Padding"), tr("Width of the border around UV islands"), 0, 256, 8);
    padding->setSuffix(tr(" pixels"));
    repeat = AddCheck(tr("Repeats"), tr("The UVs run beyond 0 to 1, so the map repeats"), false);
    connect(map, &QComboBox::currentIndexChanged, this, &BakeDialog::ShowOptions);
    connect(format, &QComboBox::currentIndexChanged, this, &BakeDialog::ShowOptions);
    connect(from, &QComboBox::currentIndexChanged, this, &BakeDialog::ShowOptions);
    connect(to, &QComboBox::currentIndexChanged, this, &BakeDialog::ShowOptions);
    connect(space, &QComboBox::currentIndexChanged, this, &BakeDialog::ShowOptions);
    connect(repeat, &QCheckBox::toggled, this, &BakeDialog::ShowOptions);
    ShowOptions();
}

BakeDialog::~BakeDialog() { *cancel = true; }

QString BakeDialog::Extension() const { return format->currentData().toString(); }

void BakeDialog::ShowOptions() {
    const QVariant kind = map->currentData();
    ShowRow(space, kind != "displacement");
    picture->setToolTip(kind == "normal" ? tr("The map at low resolution")
                                         : tr("The map at low resolution; grey: no displacement"));
    // PNG supports only integers.
    ShowRow(bits, Extension() != QLatin1String(".png"));
    ShowPreview();
}

void BakeDialog::SetProblem(const QString& problem) {
    GoButton()->setEnabled(problem.isEmpty());
    GoButton()->setToolTip(problem.isEmpty() ? tr("Asks where to save the map, then bakes it")
                                             : problem);
    if (!problem.isEmpty()) picture->setText(problem.left(1).toUpper() + problem.mid(1));
}

void BakeDialog::ShowPreview() {
    *cancel = true;
    picture->setPixmap({});
    if (from->count() < 2) {
        SetProblem(tr("A map needs a surface with at least two levels."));
        return;
    }
    if (from->currentData().toInt() <= to->currentData().toInt()) {
        SetProblem(tr("The detail has to come from a higher level."));
        return;
    }
    SetProblem({});
    BakeOptions options;
    options.kind = MapKindOf(ChosenText(map)).value_or(options.kind);
    options.space = MapSpaceOf(ChosenText(space)).value_or(options.space);
    options.from = from->currentData().toUInt();
    options.to = to->currentData().toUInt();
    const auto side = static_cast<uint32_t>(previewSide * devicePixelRatioF());
    options.width = options.height = side;
    options.samples = 1;
    options.padding = 2;
    options.repeat = repeat->isChecked();
    picture->setText(tr("Baking the preview…"));
    cancel = std::make_shared<std::atomic<bool>>(false);
    engine.Compute(
        tr("Preview"),
        BakeWork(options),
        cancel,
        [this](const QImage& image) {
            QPixmap pixmap = QPixmap::fromImage(image);
            pixmap.setDevicePixelRatio(devicePixelRatioF());
            picture->setPixmap(pixmap);
        },
        [this](const QString& error) {
            // The same error would stop the bake.
            SetProblem(error);
        });
}

nlohmann::json BakeDialog::Options() const {
    nlohmann::json options = {{"map", ChosenText(map)},
                              {"from", from->currentData().toInt()},
                              {"to", to->currentData().toInt()},
                              {"size", size->currentData().toInt()},
                              {"samples", samples->currentData().toInt()},
                              {"padding", padding->value()},
                              {"repeat", repeat->isChecked()}};
    if (map->currentData() != "displacement") options["space"] = ChosenText(space);
    if (Extension() == QLatin1String(".png") || bits->currentData() != "float")
        options["bits"] = 16;
    else
        options["bits"] = "float";
    return options;
}

}  // namespace trovik::studio
