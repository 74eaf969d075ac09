// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

#include <vector>

class QLabel;
class QVBoxLayout;

namespace trovik::studio {

struct ActionContext;
class Engine;
class LayerRow;

/// The layers of the current level, the highest first. It adds the action "layer.rename".
class LayersPanel : public QWidget {
    Q_OBJECT
public:
    explicit LayersPanel(const ActionContext& context, QWidget* parent = nullptr);

    /// Opens the line edit for the name of the active layer.
    void RenameActive();
    const std::vector<LayerRow*>& Rows() const { return rows; }

private:
    void Refresh();
    LayerRow* AddRow();
    void Change(const LayerRow* row, const char* field, const QVariant& value);
    void Drop();
    class DropLine;

    Engine& engine;
    QWidget* list;
    QVBoxLayout* listLayout;
    QLabel* hint;
    DropLine* dropLine;
    /// The highest layer first.
    std::vector<LayerRow*> rows;
    LayerRow* draggedRow = nullptr;
    /// The row before which the dragged layer would be inserted; the number of rows means the end.
    std::size_t dropAt = 0;
};

}  // namespace trovik::studio
