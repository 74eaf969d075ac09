// SPDX-License-Identifier: Apache-2.0
#include "commands/RemeshDialog.h"

#include "commands/ReplacementNote.h"
#include "commands/SubdivideDialog.h"
#include "framework/document/Document.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>

#include <algorithm>

namespace trovik::studio {

RemeshDialog::RemeshDialog(Engine& given, const DocumentState& state, QWidget* parent)
    : FormDialog(tr("Remesh"), tr("Remesh"), parent), engine(given) {
    AddReplacementNote(*this, state);
    target = AddChoice(tr("Target"),
                       tr("Whether to set the number of triangles or the edge length"),
                       {{tr("Number of triangles"), "faces"}, {tr("Edge length"), "length"}});
    faces = AddWhole(tr("Triangles"),
                     tr("Number of triangles. A quad is two triangles; masked areas are kept"),
                     4,
                     maxReplacementFaces,
                     InitialFaces(state, 4));
    length = AddNumber(
        tr("Edge length"), tr("Length of the edges, in world units"), 1e-6, 1e6, 0.1, {6, 0.01});
    length->setStepType(QAbstractSpinBox::AdaptiveDecimalStepType);
    forecast = AddText(tr("Result"));
    mode = AddChoice(tr("Change"),
                     tr("Refining keeps all vertices where they are; coarsening adds none"),
                     {{tr("Refine and coarsen"), "both"},
                      {tr("Refine only"), "refine"},
                      {tr("Coarsen only"), "coarsen"}});
    borders = AddCheck(tr("Keep borders"), tr("Keeps all vertices of open borders"), true);
    groups = AddCheck(
        tr("Keep group borders"), tr("Keeps the borders of face groups and materials"), true);
    uvs = AddCheck(
        tr("Keep texture coordinates"), tr("Keeps texture coordinates and their seams"), true);
    creases = AddCheck(
        tr("Keep sharp edges"), tr("Keeps edges between faces that form a large angle"), true);
    angle =
        AddNumber(tr("Sharp above"),
                  tr("The angle between the normals of two faces from which their edge is sharp"),
                  1.0,
                  179.0,
                  60.0,
                  {0, 5.0, QStringLiteral("°")});
    connect(target, &QComboBox::currentIndexChanged, this, &RemeshDialog::ShowForecast);
    connect(mode, &QComboBox::currentIndexChanged, this, &RemeshDialog::ShowForecast);
    connect(faces, &QSpinBox::valueChanged, this, &RemeshDialog::ShowForecast);
    connect(length, &QDoubleSpinBox::valueChanged, this, [this] {
        isLengthChosen = true;
        ShowForecast();
    });
    connect(creases, &QCheckBox::toggled, this, &RemeshDialog::ShowForecast);
    ShowForecast();
    Measure();
}

RemeshDialog::~RemeshDialog() { *cancel = true; }

bool RemeshDialog::IsByLength() const { return target->currentData() == "length"; }

void RemeshDialog::Measure() {
    const auto measured = std::make_shared<RemeshEstimate>();
    engine.Compute(
        tr("Measuring the surface"),
        [measured](trovik::Document& document, const StrokeView&, JobControl&, const ShowImage&) {
            SourceSurface source(document.Geometry());
            *measured = EstimateRemesh(source);
        },
        cancel,
        [](const QImage&) {},
        [this, measured](const QString& error) {
            if (error.isEmpty())
                estimate = *measured;
            else
                problem = error;
            if (estimate && !isLengthChosen) {
                // The length that keeps the number of triangles.
                const QSignalBlocker isNotChosen(length);
                length->setValue(static_cast<double>(
                    estimate->LengthFor(static_cast<uint64_t>(faces->value()))));
            }
            ShowForecast();
        });
}

void RemeshDialog::ShowForecast() {
    ShowRow(faces, !IsByLength());
    ShowRow(length, IsByLength());
    ShowRow(angle, creases->isChecked());
    if (!estimate) {
        forecast->setText(problem.isEmpty() ? tr("Measuring the surface…") : problem);
        return;
    }
    const bool coarsens = mode->currentData() == "coarsen";
    const auto wanted = static_cast<uint64_t>(faces->value());
    const uint64_t count =
        IsByLength() ? estimate->FacesFor(static_cast<float>(length->value())) : wanted;
    if (IsByLength()) {
        const QString text = mode->currentData() == "refine" ? tr("about %1 triangles or more")
                             : coarsens                      ? tr("about %1 triangles or fewer")
                                                             : tr("about %1 triangles");
        forecast->setText(text.arg(CountText(count)));
    } else {
        const auto edges = static_cast<double>(estimate->LengthFor(wanted));
        forecast->setText(tr("edges of about %1").arg(QLocale().toString(edges, 'g', 3)));
    }
    GoButton()->setEnabled(coarsens || count <= static_cast<uint64_t>(maxReplacementFaces));
    GoButton()->setToolTip(GoButton()->isEnabled()
                               ? windowTitle()
                               : tr("At most %1 triangles").arg(CountText(maxReplacementFaces)));
}

nlohmann::json RemeshDialog::Options() const {
    nlohmann::json options = {{"mode", ChosenText(mode)},
                              {"keepBorders", borders->isChecked()},
                              {"keepGroups", groups->isChecked()},
                              {"keepUvs", uvs->isChecked()}};
    if (IsByLength())
        options["edgeLength"] = length->value();
    else
        options["faces"] = faces->value();
    options["creaseAngle"] = creases->isChecked() ? angle->value() : 180.0;
    return options;
}

QString RemeshDialog::ForecastText() const { return forecast->text(); }

}  // namespace trovik::studio
