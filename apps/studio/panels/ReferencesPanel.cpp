// SPDX-License-Identifier: Apache-2.0
#include "panels/ReferencesPanel.h"

#include "commands/StudioScene.h"
#include "commands/ViewModel.h"
#include "panels/Controls.h"
#include "panels/RowList.h"
#include "panels/ValueSlider.h"
#include "resources/Icons.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace trovik::studio {

namespace {

using Lock = ReferenceImage::Lock;

/// Directions of the two axes of the image's plane.
ReferenceDirections PlaneOf(Lock lock) {
    return DirectionsOf(lock).value_or(ReferenceDirections{{0, 0, -1}, {1, 0, 0}, {0, 1, 0}});
}

void Move(ReferenceImage& image, const Vector& direction, double to) {
    image.centre += direction * (static_cast<float>(to) - (image.centre | direction));
}

}  // namespace

ReferencesPanel::ReferencesPanel(const ActionContext& given, QWidget* parent)
    : QWidget(parent), context(given) {
    setAccessibleName(tr("References"));
    QVBoxLayout* layout = MakePanelLayout(this);
    hint = MakeHint(tr("Images to sculpt from. Add one, or drop an image file on the window. In a "
                       "view along an axis, the image is locked to that view."),
                    this);
    list = MakeRowList(tr("Reference images"), tr("Click an image to edit its placement"), this);
    layout->addWidget(hint);
    layout->addWidget(list);
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(2);
    for (const char* id : {"reference.add", "reference.replace", "view.references"})
        buttons->addWidget(MakeActionButton(context.actions.Find(id), this));
    buttons->addStretch();
    buttons->addWidget(MakeActionButton(context.actions.Find("reference.delete"), this));
    layout->addLayout(buttons);

    placement = new QWidget(this);
    auto* controls = new QVBoxLayout(placement);
    controls->setContentsMargins(0, 4, 0, 0);
    controls->setSpacing(4);
    lock = new PanelCombo(
        tr("Locked to"),
        tr("The view in which the image is shown; an image locked to the screen is always shown"),
        placement);
    const QString names[] = {tr("Screen"),
                             tr("Front view"),
                             tr("Back view"),
                             tr("Right view"),
                             tr("Left view"),
                             tr("Top view"),
                             tr("Bottom view")};
    for (const QString& name : names) lock->addItem(name);
    auto* row = new QHBoxLayout;
    row->setSpacing(4);
    row->addWidget(new RowLabel(tr("Locked to"), placement));
    row->addWidget(lock, 1);
    controls->addLayout(row);
    across = AddSlider(
        placement,
        tr("Across"),
        tr("Horizontal position of the centre"),
        [](ReferenceImage& image, double value) { Move(image, PlaneOf(image.lock).right, value); });
    upward = AddSlider(
        placement,
        tr("Up"),
        tr("Vertical position of the centre"),
        [](ReferenceImage& image, double value) { Move(image, PlaneOf(image.lock).up, value); });
    height = AddSlider(
        placement,
        tr("Height"),
        tr("Height of the image"),
        [](ReferenceImage& image, double value) { image.height = static_cast<float>(value); });
    opacity = AddSlider(placement,
                        tr("Opacity"),
                        tr("Opacity of the image; at 100 %, nothing shows through"),
                        [](ReferenceImage& image, double value) {
                            image.opacity = static_cast<float>(value / 100.0);
                        });
    ValueSlider::Range percent;
    percent.most = 100.0;
    percent.isWhole = true;
    percent.unit = QStringLiteral("%");
    opacity->SetRange(percent);
    front = new PanelCheck(tr("In front of the surface"),
                           tr("Draws the image over the surface instead of behind it"),
                           placement);
    controls->addWidget(front);
    layout->addWidget(placement);
    layout->addStretch();

    connect(front, &QToolButton::clicked, this, [this](bool on) {
        ChangeSelected([on](ReferenceImage& image) { image.isInFront = on; }, true);
    });
    connect(lock, &QComboBox::activated, this, [this](int index) {
        SetLock(static_cast<Lock>(index));
    });
    connect(list, &QListWidget::itemClicked, this, [this](const QListWidgetItem* item) {
        context.scene.SelectReference(list->row(item));
    });
    connect(list, &QListWidget::itemChanged, this, [this](const QListWidgetItem* item) {
        std::vector<ReferenceImage> images = context.scene.References();
        images.at(static_cast<std::size_t>(list->row(item))).isVisible =
            item->checkState() == Qt::Checked;
        context.scene.SetReferences(std::move(images));
    });
    connect(&context.scene, &StudioScene::Changed, this, &ReferencesPanel::Refresh);
    Refresh();
}

ValueSlider* ReferencesPanel::AddSlider(
    QWidget* parent,
    const QString& name,
    const QString& tip,
    std::function<void(ReferenceImage& image, double value)> set) {
    auto* slider = new ValueSlider(name, tip, parent);
    parent->layout()->addWidget(slider);
    const auto change = [this, set](double value, bool isFinal) {
        ChangeSelected([&](ReferenceImage& image) { set(image, value); }, isFinal);
    };
    connect(slider, &ValueSlider::Dragged, this, [change](double value) { change(value, false); });
    connect(slider, &ValueSlider::Edited, this, [change](double value) { change(value, true); });
    return slider;
}

const ReferenceImage* ReferencesPanel::Selected() const {
    const int index = context.scene.CurrentReference();
    return index < 0 ? nullptr : &context.scene.References()[static_cast<std::size_t>(index)];
}

void ReferencesPanel::ChangeSelected(const Change& change, bool isFinal) {
    if (Selected() == nullptr) return;
    std::vector<ReferenceImage> images = context.scene.References();
    change(images[static_cast<std::size_t>(context.scene.CurrentReference())]);
    if (isFinal)
        context.scene.SetReferences(std::move(images));
    else
        context.scene.PreviewReferences(std::move(images));
}

void ReferencesPanel::SetLock(Lock chosen) {
    const AxisAlignedBoundingBox box =
        context.view.bounds ? context.view.bounds() : AxisAlignedBoundingBox();
    ChangeSelected(
        [&](ReferenceImage& image) {
            // The screen and the world have different units; between world directions, the
            // placement is kept.
            const bool wasScreen = image.lock == Lock::Screen;
            image.lock = chosen;
            if (wasScreen == (chosen == Lock::Screen)) return;
            const ReferenceImage usual;
            image.centre = usual.centre;
            image.height = usual.height;
            if (chosen == Lock::Screen || box.IsEmpty()) return;
            image.centre = {(box.minX + box.maxX) * 0.5f,
                            (box.minY + box.maxY) * 0.5f,
                            (box.minZ + box.maxZ) * 0.5f};
            image.height =
                std::max({box.maxX - box.minX, box.maxY - box.minY, box.maxZ - box.minZ});
        },
        true);
}

void ReferencesPanel::RefreshList() {
    const QSignalBlocker quiet(list);
    const std::vector<ReferenceImage>& images = context.scene.References();
    const int count = static_cast<int>(images.size());
    while (list->count() > count) delete list->takeItem(list->count() - 1);
    while (list->count() < count) {
        auto* item = new QListWidgetItem(list);
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    }
    for (int i = 0; i < count; ++i) {
        const ReferenceImage& image = images[static_cast<std::size_t>(i)];
        const bool exists = QFileInfo::exists(image.path);
        const QString name = QFileInfo(image.path).fileName();
        QListWidgetItem& item = *list->item(i);
        item.setText(exists ? name : tr("Not found: %1").arg(name));
        item.setToolTip(image.path);
        item.setCheckState(image.isVisible ? Qt::Checked : Qt::Unchecked);
    }
    list->setCurrentRow(context.scene.CurrentReference());
    FitToRows(list);
    list->setVisible(count > 0);
    hint->setVisible(count == 0);
}

void ReferencesPanel::Refresh() {
    RefreshList();
    const ReferenceImage* image = Selected();
    placement->setVisible(image != nullptr);
    if (image == nullptr) return;
    const bool isScreen = image->lock == Lock::Screen;
    lock->setCurrentIndex(static_cast<int>(image->lock));
    const ReferenceDirections plane = PlaneOf(image->lock);
    double reach = 1.0;
    if (!isScreen && context.view.bounds) {
        const AxisAlignedBoundingBox box = context.view.bounds();
        if (!box.IsEmpty())
            reach = 2.0 * static_cast<double>(std::max(
                              {box.maxX - box.minX, box.maxY - box.minY, box.maxZ - box.minZ}));
    }
    ValueSlider::Range range;
    range.least = -1e6;
    range.most = 1e6;
    range.softLeast = -reach;
    range.softMost = reach;
    across->SetRange(range);
    upward->SetRange(range);
    range.least = 1e-6;
    range.softLeast = 0.01 * reach;
    range.softMost = 2.0 * reach;
    range.isLogarithmic = true;
    height->SetRange(range);
    across->SetValue(static_cast<double>(image->centre | plane.right));
    upward->SetValue(static_cast<double>(image->centre | plane.up));
    height->SetValue(static_cast<double>(image->height));
    opacity->SetValue(static_cast<double>(image->opacity) * 100.0);
    front->setChecked(image->isInFront);
}

}  // namespace trovik::studio
