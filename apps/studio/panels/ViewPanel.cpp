// SPDX-License-Identifier: Apache-2.0
#include "panels/ViewPanel.h"

#include "commands/ActionContext.h"
#include "commands/ViewModel.h"
#include "panels/BookmarkList.h"
#include "panels/Controls.h"
#include "panels/ValueSlider.h"

#include <QColorDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPixmap>
#include <QVBoxLayout>

namespace trovik::studio {

ViewPanel::ViewPanel(const ActionContext& context, QWidget* parent)
    : QWidget(parent), view(context.view) {
    ActionRegistry& actions = context.actions;
    setAccessibleName(tr("View"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1);
    auto* surface = new Section(tr("Surface"), this);
    matcap =
        new PanelCombo(tr("Matcap"), tr("The material with which the surface is shown"), surface);
    for (const MatcapName& name : MatcapTitles()) matcap->addItem(name.title, name.name);
    auto* row = new QHBoxLayout;
    row->setSpacing(4);
    auto* label = new RowLabel(tr("Matcap"), surface);
    row->addWidget(label);
    row->addWidget(matcap, 1);
    surface->Body()->addLayout(row);
    cavity =
        new ValueSlider(tr("Cavity"), tr("Darkens hollows and brightens ridges; 0: off"), surface);
    surface->Body()->addWidget(cavity);
    AddActionButtons(surface, actions, {"view.wireframe", "view.flat", "view.mask", "view.groups"});
    layout->addWidget(surface);
    auto* scene = new Section(tr("Scene"), this);
    AddActionButtons(
        scene, actions, {"view.grid", "view.ground", "view.orthographic", "view.frame"});
    fieldOfView = new ValueSlider(tr("Field of view"), tr("The camera's vertical angle"), scene);
    ValueSlider::Range range;
    range.least = 5;
    range.most = 120;
    range.softLeast = 10;
    range.softMost = 90;
    range.decimals = 1;
    range.unit = QStringLiteral("°");
    fieldOfView->SetRange(range);
    scene->Body()->addWidget(fieldOfView);
    auto* background = new QHBoxLayout;
    background->setSpacing(4);
    auto* backgroundLabel = new RowLabel(tr("Background"), scene);
    background->addWidget(backgroundLabel);
    const QString names[] = {tr("Bottom"), tr("Top")};
    for (std::size_t i = 0; i < 2; ++i) {
        auto* button = new QToolButton(scene);
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setText(names[i]);
        button->setFocusPolicy(Qt::NoFocus);
        button->setAccessibleName(tr("Background, %1").arg(names[i]));
        button->setToolTip(tr("Chooses the background colour"));
        button->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
        connect(button, &QToolButton::clicked, this, [this, i] { ChooseColor(i); });
        background->addWidget(button, 1);
        colors.push_back(button);
    }
    scene->Body()->addLayout(background);
    layout->addWidget(scene);
    auto* bookmarks = new Section(tr("Bookmarks"), this);
    bookmarks->Body()->addWidget(new BookmarkList(context, bookmarks));
    layout->addWidget(bookmarks);
    layout->addStretch();
    connect(matcap, &QComboBox::activated, this, [this](int index) {
        RenderSettings settings = view.Settings();
        settings.matcap = matcap->itemData(index).toString();
        view.SetSettings(settings);
    });
    const auto setCavity = [this](double value) {
        RenderSettings settings = view.Settings();
        settings.cavity = static_cast<float>(value);
        view.SetSettings(settings);
    };
    connect(cavity, &ValueSlider::Dragged, this, setCavity);
    connect(cavity, &ValueSlider::Edited, this, setCavity);
    const auto setField = [this](double value) { view.SetFieldOfView(static_cast<float>(value)); };
    connect(fieldOfView, &ValueSlider::Dragged, this, setField);
    connect(fieldOfView, &ValueSlider::Edited, this, setField);
    connect(&view, &ViewModel::SettingsChanged, this, &ViewPanel::Refresh);
    connect(&view, &ViewModel::FieldOfViewChanged, this, &ViewPanel::Refresh);
    Refresh();
}

void ViewPanel::ChooseColor(std::size_t index) {
    RenderSettings settings = view.Settings();
    const QColor color =
        QColorDialog::getColor(settings.background.at(index), window(), tr("Background Colour"));
    if (!color.isValid()) return;
    settings.background.at(index) = color;
    view.SetSettings(settings);
}

void ViewPanel::Refresh() {
    const RenderSettings& settings = view.Settings();
    matcap->setCurrentIndex(matcap->findData(settings.matcap));
    cavity->SetValue(static_cast<double>(settings.cavity));
    fieldOfView->SetValue(static_cast<double>(view.FieldOfView()));
    for (std::size_t i = 0; i < colors.size(); ++i) {
        QPixmap swatch(32, 32);
        swatch.fill(settings.background.at(i));
        colors[i]->setIcon(swatch);
    }
}

}  // namespace trovik::studio
