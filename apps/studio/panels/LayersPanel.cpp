// SPDX-License-Identifier: Apache-2.0
#include "panels/LayersPanel.h"

#include "commands/ActionContext.h"
#include "commands/LayerCommands.h"
#include "panels/Controls.h"
#include "panels/LayerRow.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QScrollArea>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace trovik::studio {

namespace {

using nlohmann::json;

}  // namespace

/// Marks the position at which a dragged layer would be inserted.
class LayersPanel::DropLine : public QFrame {
public:
    explicit DropLine(QWidget* parent) : QFrame(parent) {
        setObjectName(QStringLiteral("dropLine"));
        setAttribute(Qt::WA_TransparentForMouseEvents);
        hide();
    }
};

LayersPanel::LayersPanel(const ActionContext& context, QWidget* parent)
    : QWidget(parent), engine(context.engine) {
    setAccessibleName(tr("Layers"));
    QVBoxLayout* layout = MakePanelLayout(this);
    auto* scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list = new QWidget(scroll);
    listLayout = new QVBoxLayout(list);
    listLayout->setContentsMargins(2, 2, 2, 2);
    listLayout->setSpacing(1);
    hint = MakeHint(tr("A layer stores everything that is sculpted while it is recording. Its "
                       "strength can be changed at any time."),
                    list);
    listLayout->addWidget(hint);
    listLayout->addStretch();
    scroll->setWidget(list);
    dropLine = new DropLine(list);
    layout->addWidget(scroll, 1);
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(2);
    for (const char* id : {"layer.add", "layer.duplicate", "layer.merge", "layer.erase"})
        buttons->addWidget(MakeActionButton(context.actions.Find(id), this));
    QAction* rename =
        context.actions.Add({.id = "layer.rename",
                             .text = tr("Rename Layer"),
                             .description = tr("Changes the name of the active layer."),
                             .keys = {QKeySequence("F2")},
                             .icon = "rename",
                             .run = [this] { RenameActive(); }});
    context.EnableWhen(rename, [](const DocumentState& state) {
        return std::any_of(state.layers.begin(), state.layers.end(), [](const auto& layer) {
            return layer.active;
        });
    });
    buttons->addWidget(MakeActionButton(rename, this));
    buttons->addStretch();
    buttons->addWidget(MakeActionButton(context.actions.Find("layer.delete"), this));
    layout->addLayout(buttons);
    connect(&engine, &Engine::StateChanged, this, &LayersPanel::Refresh);
    Refresh();
}

LayerRow* LayersPanel::AddRow() {
    auto* row = new LayerRow(list);
    listLayout->insertWidget(static_cast<int>(rows.size()), row);
    connect(row, &LayerRow::TargetClicked, this, [this, row] {
        const json target = row->Layer().active ? json() : json(row->Layer().name);
        engine.Run({{"layer", {{"select", target}}}});
    });
    connect(
        row, &LayerRow::VisibleClicked, this, [this, row](bool on) { Change(row, "visible", on); });
    connect(row, &LayerRow::WritableClicked, this, [this, row](bool on) {
        Change(row, "writable", on);
    });
    connect(row, &LayerRow::StrengthEdited, this, [this, row](double strength) {
        Change(row, "strength", strength);
    });
    connect(row, &LayerRow::Renamed, this, [this, row](const QString& name) {
        Change(row,
               "name",
               QString::fromStdString(FreeLayerName(*engine.State(), name.toStdString())));
    });
    connect(row, &LayerRow::GripMoved, this, [this, row](int y) {
        draggedRow = row;
        dropAt = 0;
        int lineY = 0;
        for (std::size_t i = 0; i < rows.size(); ++i) {
            if (y < rows[i]->geometry().center().y()) break;
            dropAt = i + 1;
            lineY = rows[i]->geometry().bottom() + 1;
        }
        dropLine->setGeometry(0, lineY - 1, list->width(), 2);
        dropLine->raise();
        dropLine->show();
    });
    connect(row, &LayerRow::GripReleased, this, &LayersPanel::Drop);
    rows.push_back(row);
    return row;
}

void LayersPanel::Change(const LayerRow* row, const char* field, const QVariant& value) {
    json changed = value.typeId() == QMetaType::Bool     ? json(value.toBool())
                   : value.typeId() == QMetaType::Double ? json(value.toDouble())
                   : value.typeId() == QMetaType::Int    ? json(value.toInt())
                                                         : json(value.toString().toStdString());
    engine.Run({{"layer", {{"of", row->Layer().name}, {field, changed}}}});
}

void LayersPanel::Drop() {
    dropLine->hide();
    LayerRow* row = std::exchange(draggedRow, nullptr);
    if (row == nullptr) return;
    const auto from =
        static_cast<std::size_t>(std::find(rows.begin(), rows.end(), row) - rows.begin());
    // When the dragged row is removed, the rows below it move up by one.
    const std::size_t to = dropAt > from ? dropAt - 1 : dropAt;
    if (to == from) return;
    Change(row, "order", static_cast<int>(rows.size() - 1 - to));
}

void LayersPanel::RenameActive() {
    for (LayerRow* row : rows)
        if (row->Layer().active) row->BeginRename();
}

void LayersPanel::Refresh() {
    const std::vector<DocumentState::Layer> none;
    const std::vector<DocumentState::Layer>& layers =
        engine.State() ? engine.State()->layers : none;
    setEnabled(engine.State() != nullptr);
    while (rows.size() > layers.size()) {
        rows.back()->deleteLater();
        rows.back()->hide();
        rows.pop_back();
    }
    while (rows.size() < layers.size()) AddRow()->show();
    for (std::size_t i = 0; i < rows.size(); ++i) rows[i]->Show(layers[layers.size() - 1 - i]);
    hint->setVisible(rows.empty());
}

}  // namespace trovik::studio
